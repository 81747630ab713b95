#include "app/QWGlobalShortcutsPortal.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QtDebug>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString portalService = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString shortcutsInterface = u"org.freedesktop.portal.GlobalShortcuts"_s;
const QString requestInterface = u"org.freedesktop.portal.Request"_s;
const QString sessionInterface = u"org.freedesktop.portal.Session"_s;
const QString registryInterface = u"org.freedesktop.host.portal.Registry"_s;
const QString sessionToken = u"vellumo"_s;

} // namespace

// A shortcut as the portal passes it: its name and a dictionary of what goes with it.
struct QWPortalShortcutEntry
{
    QString name;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(QWPortalShortcutEntry)

QDBusArgument &operator<<(QDBusArgument &argument, const QWPortalShortcutEntry &entry)
{
    argument.beginStructure();
    argument << entry.name << entry.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, QWPortalShortcutEntry &entry)
{
    argument.beginStructure();
    argument >> entry.name >> entry.properties;
    argument.endStructure();
    return argument;
}

namespace {

QList<QWPortalShortcutEntry> entriesFor(const QList<QWGlobalShortcutsPortal::Shortcut> &shortcuts)
{
    QList<QWPortalShortcutEntry> entries;
    for (const QWGlobalShortcutsPortal::Shortcut &shortcut : shortcuts) {
        QVariantMap properties { { u"description"_s, shortcut.description } };
        if (!shortcut.preferredTrigger.isEmpty())
            properties.insert(u"preferred_trigger"_s, shortcut.preferredTrigger);
        entries.append({ shortcut.name, properties });
    }
    return entries;
}

// A handle the portal sends as an object path or, in older versions, as a string.
QString handleText(const QVariant &value)
{
    if (value.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    return value.toString();
}

QVariantMap dictionary(const QVariant &value)
{
    if (value.canConvert<QDBusArgument>())
        return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    return value.toMap();
}

} // namespace

QWGlobalShortcutsPortal::QWGlobalShortcutsPortal(const QString &applicationId, QObject *parent)
    : QObject(parent), m_applicationId(applicationId)
{
    qDBusRegisterMetaType<QWPortalShortcutEntry>();
    qDBusRegisterMetaType<QList<QWPortalShortcutEntry>>();
    connectToBus();
}

QWGlobalShortcutsPortal::~QWGlobalShortcutsPortal()
{
    closeSession();
    m_portalWatcher.reset();
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void QWGlobalShortcutsPortal::connectToBus()
{
    // A portal that starts again may find its back end still holding the sessions of the one
    // before, under the paths made of our connection's name: a new connection has a new name.
    ++m_generation;
    m_portalWatcher.reset();
    if (!m_connectionName.isEmpty())
        QDBusConnection::disconnectFromBus(m_connectionName);
    m_connectionName = u"vellumo-shortcuts-%1-%2"_s.arg(quintptr(this), 0, 16).arg(m_generation);
    m_connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_connectionName);
    m_session.clear();
    m_requests.clear();
    m_binding = false;
    m_bindAgain = false;
    if (!m_connection.isConnected()) {
        setState(State::Missing);
        return;
    }
    m_connection.connect(portalService, portalPath, shortcutsInterface, u"Activated"_s, this,
        SLOT(activationDidArrive(QDBusMessage)));
    m_connection.connect(portalService, portalPath, shortcutsInterface, u"Deactivated"_s, this,
        SLOT(deactivationDidArrive(QDBusMessage)));
    m_connection.connect(portalService, portalPath, shortcutsInterface, u"ShortcutsChanged"_s, this,
        SLOT(shortcutsDidChange(QDBusMessage)));
    m_portalWatcher = std::make_unique<QDBusServiceWatcher>(
        portalService, m_connection, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_portalWatcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
        &QWGlobalShortcutsPortal::portalOwnerDidChange);
    ask();
}

void QWGlobalShortcutsPortal::portalOwnerDidChange(
    const QString &, const QString &, const QString &newOwner)
{
    // A portal that ends takes the session with it; until one answers again, nobody binds
    // the keys.
    m_session.clear();
    if (!m_triggers.isEmpty()) {
        m_triggers.clear();
        Q_EMIT triggersDidChange();
    }
    setState(State::Asking);
    // Not from inside the signal of the watcher that the new connection replaces.
    if (!newOwner.isEmpty())
        QMetaObject::invokeMethod(
            this, &QWGlobalShortcutsPortal::connectToBus, Qt::QueuedConnection);
}

void QWGlobalShortcutsPortal::ask()
{
    // Portals that keep a registry name a program not run from a sandbox by what it registers
    // here, before its first call; older ones know no registry and answer with an error.
    QDBusMessage registration = QDBusMessage::createMethodCall(
        portalService, portalPath, registryInterface, u"Register"_s);
    registration.setArguments({ m_applicationId, QVariantMap {} });
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(registration), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, generation = m_generation](QDBusPendingCallWatcher *call) {
            call->deleteLater();
            if (generation == m_generation)
                askForVersion();
        });
}

void QWGlobalShortcutsPortal::askForVersion()
{
    QDBusMessage get = QDBusMessage::createMethodCall(
        portalService, portalPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    get.setArguments({ shortcutsInterface, u"version"_s });
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, generation = m_generation](QDBusPendingCallWatcher *call) {
            call->deleteLater();
            if (generation != m_generation)
                return;
            const QDBusPendingReply<QDBusVariant> reply = *call;
            if (reply.isError() || reply.value().variant().toUInt() < 1) {
                setState(State::Missing);
                return;
            }
            setState(State::Ready);
            if (!m_wanted.isEmpty())
                startSession();
        });
}

void QWGlobalShortcutsPortal::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT stateDidChange();
}

void QWGlobalShortcutsPortal::bindShortcuts(const QList<Shortcut> &shortcuts)
{
    if (shortcuts == m_wanted && (m_binding || !m_session.isEmpty()))
        return;
    m_wanted = shortcuts;
    if (m_state != State::Ready)
        return;
    if (m_binding) {
        m_bindAgain = true;
        return;
    }
    startSession();
}

void QWGlobalShortcutsPortal::startSession()
{
    closeSession();
    if (m_wanted.isEmpty())
        return;
    m_binding = true;
    // KDE Plasma 5.27 takes the shortcuts only from the session's options and ignores those
    // bound later; other desktops take them when they are bound.
    callWithRequest(Step::CreateSession, u"CreateSession"_s, {},
        { { u"session_handle_token"_s, sessionToken },
            { u"shortcuts"_s, QVariant::fromValue(entriesFor(m_wanted)) } });
}

void QWGlobalShortcutsPortal::closeSession()
{
    if (m_session.isEmpty())
        return;
    m_connection.send(
        QDBusMessage::createMethodCall(portalService, m_session, sessionInterface, u"Close"_s));
    m_session.clear();
    if (!m_triggers.isEmpty()) {
        m_triggers.clear();
        Q_EMIT triggersDidChange();
    }
}

void QWGlobalShortcutsPortal::bind()
{
    callWithRequest(Step::BindShortcuts, u"BindShortcuts"_s,
        { QVariant::fromValue(QDBusObjectPath(m_session)),
            QVariant::fromValue(entriesFor(m_wanted)), QString() },
        {});
}

void QWGlobalShortcutsPortal::finishBinding()
{
    m_binding = false;
    if (m_bindAgain) {
        m_bindAgain = false;
        startSession();
    }
}

void QWGlobalShortcutsPortal::callWithRequest(
    Step step, const QString &method, QVariantList arguments, QVariantMap options)
{
    // The answer may come before the call returns, so the request's path is listened to
    // first; it is made of the connection's name and a token of ours.
    const QString token = u"vellumo%1"_s.arg(++m_requestCount);
    QString sender = m_connection.baseService().mid(1);
    sender.replace(u'.', u'_');
    const QString path = u"%1/request/%2/%3"_s.arg(portalPath, sender, token);
    m_requests.insert(path, step);
    m_connection.connect(portalService, path, requestInterface, u"Response"_s, this,
        SLOT(requestDidRespond(QDBusMessage)));
    options.insert(u"handle_token"_s, token);
    arguments.append(options);

    QDBusMessage call
        = QDBusMessage::createMethodCall(portalService, portalPath, shortcutsInterface, method);
    call.setArguments(arguments);
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, path, method, generation = m_generation](QDBusPendingCallWatcher *pending) {
            pending->deleteLater();
            if (generation != m_generation || !pending->isError() || !m_requests.contains(path))
                return;
            qWarning("The desktop's global shortcuts refused %s: %s", qPrintable(method),
                qPrintable(pending->error().message()));
            forgetRequest(path);
            finishBinding();
        });
}

void QWGlobalShortcutsPortal::forgetRequest(const QString &path)
{
    m_requests.remove(path);
    m_connection.disconnect(portalService, path, requestInterface, u"Response"_s, this,
        SLOT(requestDidRespond(QDBusMessage)));
}

void QWGlobalShortcutsPortal::requestDidRespond(const QDBusMessage &message)
{
    const auto found = m_requests.constFind(message.path());
    if (found == m_requests.cend() || message.arguments().size() < 2)
        return;
    const Step step = *found;
    forgetRequest(message.path());
    const uint response = message.arguments().at(0).toUInt();
    const QVariantMap results = dictionary(message.arguments().at(1));
    // 1 is the user's cancel, 2 anything else; either way nothing is bound.
    if (response != 0) {
        qWarning("The desktop's global shortcuts answered %u to binding Vellumo's keys", response);
        finishBinding();
        return;
    }
    if (step == Step::CreateSession) {
        m_session = handleText(results.value(u"session_handle"_s));
        if (m_session.isEmpty()) {
            finishBinding();
            return;
        }
        setTriggers(results.value(u"shortcuts"_s), true);
        // A desktop that bound them all with the session (KDE Plasma 5.27) is not asked again:
        // Plasma would open its shortcut settings each time.
        const bool allBound = std::all_of(m_wanted.cbegin(), m_wanted.cend(),
            [this](const Shortcut &shortcut) { return m_triggers.contains(shortcut.name); });
        if (allBound)
            finishBinding();
        else
            bind();
        return;
    }
    setTriggers(results.value(u"shortcuts"_s), true);
    finishBinding();
}

void QWGlobalShortcutsPortal::setTriggers(const QVariant &shortcuts, bool replaceAll)
{
    if (!shortcuts.canConvert<QDBusArgument>())
        return;
    const auto entries = qdbus_cast<QList<QWPortalShortcutEntry>>(shortcuts.value<QDBusArgument>());
    QHash<QString, QString> triggers = replaceAll ? QHash<QString, QString> {} : m_triggers;
    for (const QWPortalShortcutEntry &entry : entries)
        triggers.insert(entry.name, entry.properties.value(u"trigger_description"_s).toString());
    if (triggers == m_triggers)
        return;
    m_triggers = triggers;
    Q_EMIT triggersDidChange();
}

void QWGlobalShortcutsPortal::activationDidArrive(const QDBusMessage &message)
{
    // The portal tells every program of every session's activations.
    const QVariantList arguments = message.arguments();
    if (arguments.size() >= 2 && !m_session.isEmpty() && handleText(arguments.at(0)) == m_session)
        Q_EMIT shortcutActivated(arguments.at(1).toString());
}

void QWGlobalShortcutsPortal::deactivationDidArrive(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.size() >= 2 && !m_session.isEmpty() && handleText(arguments.at(0)) == m_session)
        Q_EMIT shortcutDeactivated(arguments.at(1).toString());
}

void QWGlobalShortcutsPortal::shortcutsDidChange(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (arguments.size() >= 2 && !m_session.isEmpty() && handleText(arguments.at(0)) == m_session)
        setTriggers(arguments.at(1), false);
}
