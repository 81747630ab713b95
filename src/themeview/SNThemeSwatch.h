#pragma once

#include <QIcon>
#include <QRectF>

class QPainter;
class SNTheme;

// The small round picture of a theme's gradient that stands beside its name in the theme menu.
class SNThemeSwatch final
{
public:
    static constexpr int swatchSize = 12;
    static constexpr qreal borderWidth = 2.0;

    SNThemeSwatch() = delete;

    // A 12 x 12 swatch, sharp at one and two device pixels per point.
    static QIcon colorImageWithTheme(const SNTheme &theme);
    // The theme's gradient, start colour at the top, clipped to the oval inscribed in rect; when
    // bordered, the oval's edge is darkened by a thin ring so that pale themes stand out on a
    // pale menu.
    static void drawGradientInRectBordered(
        QPainter &painter, const SNTheme &theme, const QRectF &rect, bool bordered);
    static QColor borderColor();
};
