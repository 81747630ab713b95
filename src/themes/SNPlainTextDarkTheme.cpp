#include "themes/SNPlainTextDarkTheme.h"

SNPlainTextDarkTheme::SNPlainTextDarkTheme()
{
    setName(QStringLiteral("Monospace Dark"));
    const QWColor background(0.1373, 0.1373, 0.1373, 1.0);
    setStartColor(background);
    setEndColor(background);
    setDefaultFontColor(QWColor(0.8588, 0.8627, 0.9922, 1.0));
    setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("Menlo"), 13));
}

std::shared_ptr<SNPlainTextDarkTheme> SNPlainTextDarkTheme::theme()
{
    return std::make_shared<SNPlainTextDarkTheme>();
}
