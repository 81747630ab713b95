#pragma once

#include "themes/SNTheme.h"

// "Monospace": white paper and Menlo 13.
class SNPlainTextTheme final : public SNTheme
{
public:
    SNPlainTextTheme();

    static std::shared_ptr<SNPlainTextTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNPlainTextTheme"); }
    QString className() const override { return staticClassName(); }
};
