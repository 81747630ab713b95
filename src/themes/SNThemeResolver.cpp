#include "themes/SNThemeResolver.h"

#include "settings/SNUserDefaults.h"
#include "themes/SNThemeKindRegistry.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"
#include "themes/SNYellowPadTheme.h"

QString SNThemeResolver::defaultSaveName()
{
    const QString name = SNUserDefaults::standardUserDefaults().defaultThemeName();
    return name.isEmpty() ? SNYellowPadTheme::staticClassName() : name;
}

QString SNThemeResolver::saveNameOrDefault(const QString &storedName)
{
    return storedName.isEmpty() ? defaultSaveName() : storedName;
}

std::shared_ptr<SNTheme> SNThemeResolver::themeWithSaveName(const QString &saveName)
{
    return themeWithSaveName(saveName, SNThemeManager::sharedManager());
}

std::shared_ptr<SNTheme> SNThemeResolver::themeWithSaveName(
    const QString &saveName, const SNThemeManager &manager)
{
    std::shared_ptr<SNTheme> theme;
    if (saveName.startsWith(SNUserTheme::staticClassName())) {
        QString name = saveName;
        name.remove(QStringLiteral("%1-").arg(SNUserTheme::staticClassName()));
        theme = manager.userThemeWithName(name);
    } else {
        theme = SNThemeKindRegistry::themeWithClassName(saveName);
    }
    return theme ? theme : SNYellowPadTheme::theme();
}
