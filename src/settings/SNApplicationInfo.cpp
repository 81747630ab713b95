#include "settings/SNApplicationInfo.h"

namespace SNApplicationInfo {

QString applicationIdentifier()
{
    return QStringLiteral("org.vellumo.Vellumo");
}

QString applicationName()
{
    return QStringLiteral("Vellumo");
}

QString applicationVersion()
{
    return QStringLiteral(VELLUMO_VERSION);
}

QString loginHelperIdentifier()
{
    return applicationIdentifier() + QStringLiteral("helper");
}

QString loginLaunchURL()
{
    return QStringLiteral("vellumo://lal");
}

} // namespace SNApplicationInfo
