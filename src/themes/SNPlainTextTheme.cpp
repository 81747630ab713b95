#include "themes/SNPlainTextTheme.h"

SNPlainTextTheme::SNPlainTextTheme()
{
    setName(QStringLiteral("Monospace"));
    const QWColor background = QWColor::white();
    setStartColor(background);
    setEndColor(background);
    setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("Menlo"), 13));
}

std::shared_ptr<SNPlainTextTheme> SNPlainTextTheme::theme()
{
    return std::make_shared<SNPlainTextTheme>();
}
