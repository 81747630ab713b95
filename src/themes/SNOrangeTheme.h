#pragma once

#include "themes/SNTheme.h"

// "Orange". Offered in no menu, but kept so that notes that stored it still open in it.
class SNOrangeTheme final : public SNTheme
{
public:
    SNOrangeTheme();

    static std::shared_ptr<SNOrangeTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNOrangeTheme"); }
    QString className() const override { return staticClassName(); }
};
