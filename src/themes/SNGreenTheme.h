#pragma once

#include "themes/SNTheme.h"

// "Green". Offered in no menu, but kept so that notes that stored it still open in it.
class SNGreenTheme final : public SNTheme
{
public:
    SNGreenTheme();

    static std::shared_ptr<SNGreenTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNGreenTheme"); }
    QString className() const override { return staticClassName(); }
};
