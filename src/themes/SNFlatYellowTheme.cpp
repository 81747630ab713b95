#include "themes/SNFlatYellowTheme.h"

SNFlatYellowTheme::SNFlatYellowTheme()
{
    setName(QStringLiteral("Yellow (Flat)"));
    const QWColor background(0.9961, 0.8667, 0.4392, 1.0);
    setStartColor(background);
    setEndColor(background);
}

std::shared_ptr<SNFlatYellowTheme> SNFlatYellowTheme::theme()
{
    return std::make_shared<SNFlatYellowTheme>();
}
