#include "themes/SNOrangeTheme.h"

SNOrangeTheme::SNOrangeTheme()
{
    setName(QStringLiteral("Orange"));
    setStartColor(QWColor(1.0, 0.5843, 0.0, 1.0));
    setEndColor(QWColor(1.0, 0.3686, 0.2275, 1.0));
}

std::shared_ptr<SNOrangeTheme> SNOrangeTheme::theme()
{
    return std::make_shared<SNOrangeTheme>();
}
