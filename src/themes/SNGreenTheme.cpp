#include "themes/SNGreenTheme.h"

SNGreenTheme::SNGreenTheme()
{
    setName(QStringLiteral("Green"));
    setStartColor(QWColor(0.5294, 0.9882, 0.4392, 1.0));
    setEndColor(QWColor(0.0471, 0.8275, 0.098, 1.0));
}

std::shared_ptr<SNGreenTheme> SNGreenTheme::theme()
{
    return std::make_shared<SNGreenTheme>();
}
