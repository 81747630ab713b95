#pragma once

#include "themes/SNTheme.h"

// "Presentation": large Helvetica Neue 24 on white.
class SNPresentationTheme final : public SNTheme
{
public:
    SNPresentationTheme();

    static std::shared_ptr<SNPresentationTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNPresentationTheme"); }
    QString className() const override { return staticClassName(); }
};
