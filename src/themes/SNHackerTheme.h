#pragma once

#include "themes/SNDarkTheme.h"

// "Hacker": green Monaco 12 on black; dark by way of SNDarkTheme.
class SNHackerTheme final : public SNDarkTheme
{
public:
    SNHackerTheme();

    static std::shared_ptr<SNHackerTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNHackerTheme"); }
    QString className() const override { return staticClassName(); }
};
