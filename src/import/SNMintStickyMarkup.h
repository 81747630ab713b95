#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

// The text of a Linux Mint sticky note: "#tag:NAME:" switches a format on and the same token
// off again, "#check:0"/"#check:1" is a checkbox, "#bullet:" a bullet, "##" a plain "#".
class SNMintStickyMarkup final
{
public:
    SNMintStickyMarkup() = delete;

    static QWAttributedString parse(const QString &markup);
};
