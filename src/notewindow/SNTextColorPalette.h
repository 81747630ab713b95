#pragma once

#include "kit/QWColor.h"

#include <QList>
#include <QString>
#include <QStringList>

// The colours a note offers for its text, in menu order, with their names: Red, Orange,
// Yellow, Green, Blue, Purple, Gray, Black and White. Built once, on first use.
class SNTextColorPalette final
{
public:
    SNTextColorPalette() = delete;

    static const QList<QWColor> &colorArray();
    // Parallel to colorArray(); translate them for display.
    static const QStringList &colorNames();
};
