#pragma once

#include "themes/SNTheme.h"

// "Dark": white text on a grey gradient. Also the base of the other dark themes, which
// inherit its link and cursor colours and its dark flag.
class SNDarkTheme : public SNTheme
{
public:
    SNDarkTheme();

    static std::shared_ptr<SNDarkTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNDarkTheme"); }
    QString className() const override { return staticClassName(); }
};
