#pragma once

#include "themes/SNTheme.h"

// "Green (Flat)". Offered in no menu, but kept so that notes that stored it still open in it.
class SNFlatGreenTheme final : public SNTheme
{
public:
    SNFlatGreenTheme();

    static std::shared_ptr<SNFlatGreenTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNFlatGreenTheme"); }
    QString className() const override { return staticClassName(); }
};
