#include "support/QWKGlobalAccel.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QString service = u"org.kde.kglobalaccel"_s;
const QString componentInterface = u"org.kde.kglobalaccel.Component"_s;
const QString daemonInterface = u"org.kde.KGlobalAccel"_s;

QDBusMessage call(const QString &path, const QString &interface, const QString &method,
    const QVariantList &arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return QDBusConnection::sessionBus().call(message);
}

// What an action is known by: the component's and the action's names, twice over (unique and
// friendly); the daemon matches by the unique ones.
QStringList actionId(const QString &component, const QString &name)
{
    const QDBusMessage reply = call(component, u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
        { componentInterface, u"uniqueName"_s });
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    const QString unique
        = reply.arguments().constFirst().value<QDBusVariant>().variant().toString();
    return { unique, name, unique, name };
}

} // namespace

namespace QWKGlobalAccel {

QStringList components()
{
    const QDBusReply<QList<QDBusObjectPath>> components
        = call(u"/kglobalaccel"_s, daemonInterface, u"allComponents"_s);
    QStringList paths;
    for (const QDBusObjectPath &component : components.value())
        paths.append(component.path());
    return paths;
}

QString componentWith(const QStringList &names)
{
    for (const QString &component : components()) {
        const QDBusReply<QStringList> held
            = call(component, componentInterface, u"shortcutNames"_s);
        if (!held.isValid())
            continue;
        if (std::all_of(names.cbegin(), names.cend(),
                [&](const QString &name) { return held.value().contains(name); }))
            return component;
    }
    return {};
}

QString description(const QString &component, const QString &name)
{
    const QDBusMessage reply = call(component, componentInterface, u"allShortcutInfos"_s);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    // Each is (name, description, component, component's name, context, context's name,
    // keys, default keys).
    const QDBusArgument infos = reply.arguments().constFirst().value<QDBusArgument>();
    QString found;
    infos.beginArray();
    while (!infos.atEnd()) {
        QString shortcut, description, unused;
        QList<int> keys, defaultKeys;
        infos.beginStructure();
        infos >> shortcut >> description >> unused >> unused >> unused >> unused >> keys
            >> defaultKeys;
        infos.endStructure();
        if (shortcut == name)
            found = description;
    }
    infos.endArray();
    return found;
}

bool invoke(const QString &component, const QString &name)
{
    // Without the context the daemon looks in none and fires nothing.
    return call(component, componentInterface, u"invokeShortcut"_s, { name, u"default"_s }).type()
        == QDBusMessage::ReplyMessage;
}

QList<int> keys(const QString &component, const QString &name)
{
    const QDBusReply<QList<int>> reply
        = call(u"/kglobalaccel"_s, daemonInterface, u"shortcut"_s, { actionId(component, name) });
    return reply.isValid() ? reply.value() : QList<int> {};
}

bool setKeys(const QString &component, const QString &name, int keys)
{
    // Only the older call: the one taking key sequences crashes KWin 5.27.
    return call(u"/kglobalaccel"_s, daemonInterface, u"setForeignShortcut"_s,
               { actionId(component, name), QVariant::fromValue(QList<int> { keys }) })
               .type()
        == QDBusMessage::ReplyMessage;
}

} // namespace QWKGlobalAccel
