#pragma once

#include "themes/SNTheme.h"

// "Yellow (Flat)". Offered in no menu, but kept so that notes that stored it still open in
// it.
class SNFlatYellowTheme final : public SNTheme
{
public:
    SNFlatYellowTheme();

    static std::shared_ptr<SNFlatYellowTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNFlatYellowTheme"); }
    QString className() const override { return staticClassName(); }
};
