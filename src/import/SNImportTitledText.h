#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

// A note's text as Vellumo shows it when its program keeps the title apart: the title is the
// first line, unless the text already starts with it; white space at the end is dropped, since
// no program shows it.
class SNImportTitledText final
{
public:
    SNImportTitledText() = delete;

    static QWAttributedString make(const QString &title, const QWAttributedString &text);
};
