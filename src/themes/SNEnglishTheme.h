#pragma once

#include "themes/SNTheme.h"

// "English": Georgia 16 on cream with a red-brown link and cursor. Without Georgia it falls
// back to Menlo 16 rather than the base class's Helvetica Neue.
class SNEnglishTheme final : public SNTheme
{
public:
    SNEnglishTheme();

    static std::shared_ptr<SNEnglishTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNEnglishTheme"); }
    QString className() const override { return staticClassName(); }
    QWFont fallbackFont() const override;
};
