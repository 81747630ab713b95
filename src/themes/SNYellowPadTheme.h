#pragma once

#include "themes/SNTheme.h"

// "Yellow": the yellow pad gradient; the first and default theme.
class SNYellowPadTheme final : public SNTheme
{
public:
    SNYellowPadTheme();

    static std::shared_ptr<SNYellowPadTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNYellowPadTheme"); }
    QString className() const override { return staticClassName(); }
};
