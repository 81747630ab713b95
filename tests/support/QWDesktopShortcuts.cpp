#include "support/QWDesktopShortcuts.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

#include <algorithm>

namespace QWDesktopShortcuts {

namespace {

const QString service = QStringLiteral("org.kde.kglobalaccel");

template <typename T> T call(const QString &path, const QString &interface, const QString &method)
{
    const QDBusReply<T> reply = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(service, path, interface, method));
    if (!reply.isValid()) {
        qFatal("kglobalaccel did not answer %s on %s: %s", qUtf8Printable(method),
            qUtf8Printable(path), qUtf8Printable(reply.error().message()));
    }
    return reply.value();
}

} // namespace

uint portalVersion(QString *error)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
            QStringLiteral("/org/freedesktop/portal/desktop"),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"))
        << QStringLiteral("org.freedesktop.portal.GlobalShortcuts") << QStringLiteral("version"));
    if (error)
        *error = reply.errorName();
    return reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
}

QStringList components()
{
    QStringList paths;
    const auto all = call<QList<QDBusObjectPath>>(QStringLiteral("/kglobalaccel"),
        QStringLiteral("org.kde.KGlobalAccel"), QStringLiteral("allComponents"));
    for (const QDBusObjectPath &path : all)
        paths.append(path.path());
    return paths;
}

QStringList shortcutNames(const QString &component)
{
    return call<QStringList>(component, QStringLiteral("org.kde.kglobalaccel.Component"),
        QStringLiteral("shortcutNames"));
}

QString componentHolding(const QStringList &names)
{
    for (const QString &component : components()) {
        const QStringList held = shortcutNames(component);
        if (std::all_of(names.cbegin(), names.cend(),
                [&](const QString &name) { return held.contains(name); }))
            return component;
    }
    return {};
}

} // namespace QWDesktopShortcuts
