#include "import/SNImportEnvironment.h"

#include <QDir>

using namespace Qt::Literals::StringLiterals;

namespace {

QString folderOfVariable(const char *name, const QString &fallback)
{
    const QString value = qEnvironmentVariable(name);
    // XDG base directories are absolute; a relative one is ignored, as other programs do.
    return QDir::isAbsolutePath(value) ? QDir::cleanPath(value) : fallback;
}

} // namespace

SNImportEnvironment SNImportEnvironment::current()
{
    SNImportEnvironment environment = underHome(QDir::homePath());
    environment.configHome = folderOfVariable("XDG_CONFIG_HOME", environment.configHome);
    environment.dataHome = folderOfVariable("XDG_DATA_HOME", environment.dataHome);
    return environment;
}

SNImportEnvironment SNImportEnvironment::underHome(const QString &home)
{
    const QString clean = QDir::cleanPath(home);
    return { clean, clean + u"/.config"_s, clean + u"/.local/share"_s };
}
