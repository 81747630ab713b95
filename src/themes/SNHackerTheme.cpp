#include "themes/SNHackerTheme.h"

SNHackerTheme::SNHackerTheme()
{
    setName(QStringLiteral("Hacker"));
    const QWColor background = QWColor::black();
    setStartColor(background);
    setEndColor(background);
    const QWColor green(0.2667, 0.8392, 0.3176, 1.0);
    setDefaultFontColor(green);
    setLinkColor(QWColor(0.1608, 0.9922, 0.2157, 1.0));
    setCursorColor(green);
    setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("Monaco"), 12));
}

std::shared_ptr<SNHackerTheme> SNHackerTheme::theme()
{
    return std::make_shared<SNHackerTheme>();
}
