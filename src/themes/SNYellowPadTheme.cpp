#include "themes/SNYellowPadTheme.h"

SNYellowPadTheme::SNYellowPadTheme()
{
    setName(QStringLiteral("Yellow"));
    setStartColor(QWColor(1.0, 0.8706, 0.4078, 1.0));
    setEndColor(QWColor(1.0, 0.8275, 0.1804, 1.0));
}

std::shared_ptr<SNYellowPadTheme> SNYellowPadTheme::theme()
{
    return std::make_shared<SNYellowPadTheme>();
}
