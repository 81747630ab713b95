#include "themes/SNFlatGreenTheme.h"

SNFlatGreenTheme::SNFlatGreenTheme()
{
    setName(QStringLiteral("Green (Flat)"));
    const QWColor background(0.298, 0.851, 0.3922, 1.0);
    setStartColor(background);
    setEndColor(background);
}

std::shared_ptr<SNFlatGreenTheme> SNFlatGreenTheme::theme()
{
    return std::make_shared<SNFlatGreenTheme>();
}
