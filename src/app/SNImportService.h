#pragma once

#include "app/SNImportCommand.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QString>

#include <functional>

// The running program's interface on the session bus for other notes programs and Markdown:
// notes imported there open at once, and the export writes what is on screen. A command's error
// goes back to the caller as a D-Bus error.
class SNImportService final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.vellumo.Vellumo.Import")
    Q_DISABLE_COPY_MOVE(SNImportService)

public:
    static QString interfaceName() { return QStringLiteral("org.vellumo.Vellumo.Import"); }
    // The method that carries each kind of command.
    static QString methodName(SNImportCommand::Kind kind);

    using Handler = std::function<SNImportCommand::Result(const SNImportCommand &command)>;

    // Adapts `exported`, the object registered on the bus.
    explicit SNImportService(QObject *exported);
    ~SNImportService() override;

    void setHandler(Handler handler) { m_handler = std::move(handler); }

public Q_SLOTS:
    QString ListPrograms(const QDBusMessage &message);
    QString Import(const QString &program, const QString &path, const QDBusMessage &message);
    QString ExportMarkdown(const QString &folder, const QDBusMessage &message);

private:
    QString handle(const SNImportCommand &command, const QDBusMessage &message);

    Handler m_handler;
};
