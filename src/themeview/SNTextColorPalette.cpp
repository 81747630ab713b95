#include "themeview/SNTextColorPalette.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>

const QList<QWColor> &SNTextColorPalette::colorArray()
{
    static const QList<QWColor> colors = {
        { 1.0, 0.1765, 0.3333 },
        { 1.0, 0.5843, 0.0 },
        { 1.0, 0.8, 0.0 },
        { 0.298, 0.851, 0.3922 },
        { 0.0, 0.4784, 1.0 },
        { 0.3451, 0.3373, 0.8392 },
        { 0.5569, 0.5569, 0.5765 },
        QWColor::black(),
        QWColor::white(),
    };
    return colors;
}

const QStringList &SNTextColorPalette::colorNames()
{
    static const QStringList names = {
        QCoreApplication::translate("SNTextColorPalette", "Red"),
        QCoreApplication::translate("SNTextColorPalette", "Orange"),
        QCoreApplication::translate("SNTextColorPalette", "Yellow"),
        QCoreApplication::translate("SNTextColorPalette", "Green"),
        QCoreApplication::translate("SNTextColorPalette", "Blue"),
        QCoreApplication::translate("SNTextColorPalette", "Purple"),
        QCoreApplication::translate("SNTextColorPalette", "Gray"),
        QCoreApplication::translate("SNTextColorPalette", "Black"),
        QCoreApplication::translate("SNTextColorPalette", "White"),
    };
    return names;
}

QPixmap SNTextColorPalette::colorImageWithColor(const QColor &color, qreal devicePixelRatio)
{
    QPixmap image(QSize(swatchSize, swatchSize) * devicePixelRatio);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawColorInRectBordered(painter, color, QRectF(0, 0, swatchSize, swatchSize), true);
    return image;
}

void SNTextColorPalette::drawColorInRectBordered(
    QPainter &painter, const QColor &color, const QRectF &rect, bool bordered)
{
    // One ring colour for every swatch: white 0.0 at a fifth of full strength.
    static const QColor ringColor = QColor::fromRgbF(0.0f, 0.0f, 0.0f, 0.2f);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath oval;
    oval.addEllipse(rect);
    painter.setClipPath(oval);
    painter.fillPath(oval, color);
    if (bordered) {
        // The ring is stroked on the oval's edge and clipped to it: half its width shows.
        painter.setPen(QPen(ringColor, 2.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(rect);
    }
    painter.restore();
}
