#include "themes/SNPresentationTheme.h"

SNPresentationTheme::SNPresentationTheme()
{
    setName(QStringLiteral("Presentation"));
    const QWColor background = QWColor::white();
    setStartColor(background);
    setEndColor(background);
    setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("Helvetica Neue"), 24));
}

std::shared_ptr<SNPresentationTheme> SNPresentationTheme::theme()
{
    return std::make_shared<SNPresentationTheme>();
}
