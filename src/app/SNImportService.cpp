#include "app/SNImportService.h"

#include "app/SNHistoryService.h"

QString SNImportService::methodName(SNImportCommand::Kind kind)
{
    switch (kind) {
    case SNImportCommand::Kind::ListPrograms:
        return QStringLiteral("ListPrograms");
    case SNImportCommand::Kind::Import:
        return QStringLiteral("Import");
    case SNImportCommand::Kind::ExportMarkdown:
        return QStringLiteral("ExportMarkdown");
    }
    return {};
}

SNImportService::SNImportService(QObject *exported) : QDBusAbstractAdaptor(exported) { }

SNImportService::~SNImportService() = default;

QString SNImportService::ListPrograms(const QDBusMessage &message)
{
    return handle({ SNImportCommand::Kind::ListPrograms, QString(), QString() }, message);
}

QString SNImportService::Import(
    const QString &program, const QString &path, const QDBusMessage &message)
{
    return handle({ SNImportCommand::Kind::Import, program, path }, message);
}

QString SNImportService::ExportMarkdown(const QString &folder, const QDBusMessage &message)
{
    return handle({ SNImportCommand::Kind::ExportMarkdown, QString(), folder }, message);
}

QString SNImportService::handle(const SNImportCommand &command, const QDBusMessage &message)
{
    return SNHistoryService::answer(
        m_handler ? m_handler(command) : SNHistoryService::notReady(), message);
}
