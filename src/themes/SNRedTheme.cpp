#include "themes/SNRedTheme.h"

SNRedTheme::SNRedTheme()
{
    setName(QStringLiteral("Red"));
    setStartColor(QWColor(1.0, 0.3647, 0.2275, 1.0));
    setEndColor(QWColor(1.0, 0.1686, 0.4078, 1.0));
    setDefaultFontColor(QWColor::white());
    setLinkColor(QWColor::white());
}

std::shared_ptr<SNRedTheme> SNRedTheme::theme()
{
    return std::make_shared<SNRedTheme>();
}
