#include "themes/SNEnglishTheme.h"

SNEnglishTheme::SNEnglishTheme()
{
    setName(QStringLiteral("English"));
    const QWColor background(0.9882, 0.9608, 0.9294, 1.0);
    setStartColor(background);
    setEndColor(background);
    setDefaultFontColor(QWColor::black());
    setLinkColor(QWColor(0.6902, 0.2118, 0.2, 1.0));
    setCursorColor(QWColor(0.5804, 0.2353, 0.2392, 1.0));
    setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("Georgia"), 16));
}

std::shared_ptr<SNEnglishTheme> SNEnglishTheme::theme()
{
    return std::make_shared<SNEnglishTheme>();
}

QWFont SNEnglishTheme::fallbackFont() const
{
    return QWFont(QStringLiteral("Menlo"), 16);
}
