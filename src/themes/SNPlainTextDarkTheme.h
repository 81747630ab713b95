#pragma once

#include "themes/SNDarkTheme.h"

// "Monospace Dark": Menlo 13 on flat charcoal; link, cursor and the dark flag come from
// SNDarkTheme.
class SNPlainTextDarkTheme final : public SNDarkTheme
{
public:
    SNPlainTextDarkTheme();

    static std::shared_ptr<SNPlainTextDarkTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNPlainTextDarkTheme"); }
    QString className() const override { return staticClassName(); }
};
