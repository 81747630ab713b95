#include "notewindow/SNTextColorPalette.h"

const QList<QWColor> &SNTextColorPalette::colorArray()
{
    static const QList<QWColor> colors {
        QWColor(1.0, 0.1765, 0.3333),
        QWColor(1.0, 0.5843, 0.0),
        QWColor(1.0, 0.8, 0.0),
        QWColor(0.298, 0.851, 0.3922),
        QWColor(0.0, 0.4784, 1.0),
        QWColor(0.3451, 0.3373, 0.8392),
        QWColor(0.5569, 0.5569, 0.5765),
        QWColor::black(),
        QWColor::white(),
    };
    return colors;
}

const QStringList &SNTextColorPalette::colorNames()
{
    static const QStringList names {
        QStringLiteral("Red"),
        QStringLiteral("Orange"),
        QStringLiteral("Yellow"),
        QStringLiteral("Green"),
        QStringLiteral("Blue"),
        QStringLiteral("Purple"),
        QStringLiteral("Gray"),
        QStringLiteral("Black"),
        QStringLiteral("White"),
    };
    return names;
}
