#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

// The text of an xpad pad: tag names between two U+E000 characters switch formatting on
// ("\uE000bold\uE000") and off ("\uE000/bold\uE000"). Names xpad does not know keep their text
// and add nothing.
class SNXpadMarkup final
{
public:
    SNXpadMarkup() = delete;

    static QWAttributedString parse(const QString &markup);
};
