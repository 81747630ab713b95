#include "themes/SNDarkTheme.h"

SNDarkTheme::SNDarkTheme()
{
    setName(QStringLiteral("Dark"));
    setStartColor(QWColor(0.2902, 0.2902, 0.2902, 1.0));
    setEndColor(QWColor(0.1686, 0.1686, 0.1686, 1.0));
    setDefaultFontColor(QWColor::white());
    setLinkColor(QWColor(0.1373, 0.6039, 0.8902, 1.0));
    setCursorColor(QWColor::white());
    setIsDark(true);
}

std::shared_ptr<SNDarkTheme> SNDarkTheme::theme()
{
    return std::make_shared<SNDarkTheme>();
}
