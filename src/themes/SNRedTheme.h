#pragma once

#include "themes/SNTheme.h"

// "Red", with white text and links. Offered in no menu, but kept so that notes that stored it
// still open in it.
class SNRedTheme final : public SNTheme
{
public:
    SNRedTheme();

    static std::shared_ptr<SNRedTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNRedTheme"); }
    QString className() const override { return staticClassName(); }
};
