#include "themes/SNThemeKindRegistry.h"

#include "themes/SNDarkTheme.h"
#include "themes/SNEnglishTheme.h"
#include "themes/SNFlatGreenTheme.h"
#include "themes/SNFlatYellowTheme.h"
#include "themes/SNGreenTheme.h"
#include "themes/SNHackerTheme.h"
#include "themes/SNOrangeTheme.h"
#include "themes/SNPlainTextDarkTheme.h"
#include "themes/SNPlainTextTheme.h"
#include "themes/SNPresentationTheme.h"
#include "themes/SNRedTheme.h"
#include "themes/SNTheme.h"
#include "themes/SNTimeOfDayTheme.h"
#include "themes/SNUserTheme.h"
#include "themes/SNYellowPadTheme.h"

#include <QHash>

namespace {

using Factory = std::shared_ptr<SNTheme> (*)();

template <class Theme> std::pair<QString, Factory> kind()
{
    return { Theme::staticClassName(),
        []() -> std::shared_ptr<SNTheme> { return Theme::theme(); } };
}

const QHash<QString, Factory> &kinds()
{
    static const QHash<QString, Factory> registry {
        kind<SNTheme>(),
        kind<SNYellowPadTheme>(),
        kind<SNPlainTextTheme>(),
        kind<SNPlainTextDarkTheme>(),
        kind<SNDarkTheme>(),
        kind<SNEnglishTheme>(),
        kind<SNHackerTheme>(),
        kind<SNPresentationTheme>(),
        kind<SNRedTheme>(),
        kind<SNOrangeTheme>(),
        kind<SNGreenTheme>(),
        kind<SNFlatGreenTheme>(),
        kind<SNFlatYellowTheme>(),
        kind<SNTimeOfDayTheme>(),
        kind<SNUserTheme>(),
    };
    return registry;
}

} // namespace

std::shared_ptr<SNTheme> SNThemeKindRegistry::themeWithClassName(const QString &className)
{
    const Factory factory = kinds().value(className);
    return factory ? factory() : nullptr;
}

bool SNThemeKindRegistry::isThemeKind(const QString &className)
{
    return kinds().contains(className);
}

QStringList SNThemeKindRegistry::classNames()
{
    return kinds().keys();
}
