#pragma once

#include "kit/QWColor.h"

#include <QList>
#include <QPixmap>
#include <QStringList>

class QPainter;
class QRectF;

// The colours a note's text can be given from its menu, with their names, in menu order:
// Red, Orange, Yellow, Green, Blue, Purple, Gray, Black, White.
class SNTextColorPalette final
{
public:
    static constexpr int swatchSize = 12;

    SNTextColorPalette() = delete;

    static const QList<QWColor> &colorArray();
    static const QStringList &colorNames();

    // A round swatch of the colour with a faint dark ring, for a menu item.
    static QPixmap colorImageWithColor(const QColor &color, qreal devicePixelRatio = 1.0);
    static void drawColorInRectBordered(
        QPainter &painter, const QColor &color, const QRectF &rect, bool bordered);
};
