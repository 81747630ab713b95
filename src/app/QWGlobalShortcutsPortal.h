#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QDBusMessage;
class QDBusServiceWatcher;

// The desktop's global shortcuts (the portal's org.freedesktop.portal.GlobalShortcuts), over a
// connection to the session bus of its own: a portal knows a program by the connection that
// calls it, and the program's id can be registered only before that connection's first call.
// It binds one list of shortcuts at a time, in one session, and reports their activations and
// the keys the desktop gives them. Which shortcuts the program has is not its business (the
// hot-key grabber decides), and it falls back to nothing where there is no portal: it says so.
class QWGlobalShortcutsPortal final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWGlobalShortcutsPortal)

public:
    struct Shortcut
    {
        QString name;
        QString description;
        // As the freedesktop shortcuts format writes keys ("CTRL+SHIFT+n"); may be empty.
        QString preferredTrigger;

        friend bool operator==(const Shortcut &, const Shortcut &) = default;
    };

    enum class State {
        // Waiting for the bus to say whether a portal offers global shortcuts.
        Asking,
        Missing,
        Ready,
    };

    // Asks at once; the answer comes as stateDidChange. The session handle's last part is
    // always the same, so that a desktop which files shortcuts by it (KDE Plasma) finds the
    // keys the user gave them last time.
    explicit QWGlobalShortcutsPortal(const QString &applicationId, QObject *parent = nullptr);
    ~QWGlobalShortcutsPortal() override;

    State state() const { return m_state; }
    // Binds exactly these in a new session (a portal binds a session's shortcuts once); an empty
    // list ends the session. Until the portal has answered, the last list asked for waits.
    void bindShortcuts(const QList<Shortcut> &shortcuts);
    // The keys the desktop reports for each bound shortcut, as it writes them ("Ctrl+Alt+N").
    const QHash<QString, QString> &triggers() const { return m_triggers; }
    // Empty while no session is open.
    QString sessionHandle() const { return m_session; }

Q_SIGNALS:
    void stateDidChange();
    void triggersDidChange();
    void shortcutActivated(const QString &name);
    void shortcutDeactivated(const QString &name);

private Q_SLOTS:
    void requestDidRespond(const QDBusMessage &message);
    void activationDidArrive(const QDBusMessage &message);
    void deactivationDidArrive(const QDBusMessage &message);
    void shortcutsDidChange(const QDBusMessage &message);

private:
    enum class Step { CreateSession, BindShortcuts };

    void connectToBus();
    void portalOwnerDidChange(
        const QString &name, const QString &oldOwner, const QString &newOwner);
    void ask();
    void askForVersion();
    void setState(State state);
    void startSession();
    void closeSession();
    void bind();
    void finishBinding();
    // Calls a method whose answer comes later as a Response signal at the request's path.
    void callWithRequest(
        Step step, const QString &method, QVariantList arguments, QVariantMap options);
    void forgetRequest(const QString &path);
    void setTriggers(const QVariant &shortcuts, bool replaceAll);

    const QString m_applicationId;
    // Each connection to the bus is a new one, with a name of its own.
    int m_generation = 0;
    QString m_connectionName;
    QDBusConnection m_connection { QString() };
    std::unique_ptr<QDBusServiceWatcher> m_portalWatcher;
    State m_state = State::Asking;
    QList<Shortcut> m_wanted;
    QString m_session;
    QHash<QString, QString> m_triggers;
    QHash<QString, Step> m_requests;
    int m_requestCount = 0;
    bool m_binding = false;
    bool m_bindAgain = false;
};
