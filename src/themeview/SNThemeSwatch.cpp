#include "themeview/SNThemeSwatch.h"

#include "themes/SNTheme.h"

#include <QHash>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

QColor SNThemeSwatch::borderColor()
{
    static const QColor color = QColor::fromRgbF(0.0f, 0.0f, 0.0f, 0.2f);
    return color;
}

void SNThemeSwatch::drawGradientInRectBordered(
    QPainter &painter, const SNTheme &theme, const QRectF &rect, bool bordered)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath oval;
    oval.addEllipse(rect);
    painter.setClipPath(oval);
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0, theme.startColor().toQColor());
    gradient.setColorAt(1, theme.endColor().toQColor());
    painter.fillPath(oval, gradient);
    if (bordered) {
        // Still clipped: only the inner half of the line shows, a ring inside the oval's edge.
        painter.strokePath(oval, QPen(borderColor(), borderWidth));
    }
    painter.restore();
}

QIcon SNThemeSwatch::colorImageWithTheme(const SNTheme &theme)
{
    // Every note's theme menu shows the same few swatches: drawn once per pair of colours.
    static QHash<QString, QIcon> drawn;
    const QString key = theme.startColor().toQColor().name(QColor::HexArgb)
        + theme.endColor().toQColor().name(QColor::HexArgb);
    const auto found = drawn.constFind(key);
    if (found != drawn.cend())
        return *found;
    QIcon icon;
    for (int scale : { 1, 2 }) {
        QImage image(swatchSize * scale, swatchSize * scale, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            painter.scale(scale, scale);
            drawGradientInRectBordered(painter, theme, QRectF(0, 0, swatchSize, swatchSize), true);
        }
        QPixmap pixmap = QPixmap::fromImage(image);
        pixmap.setDevicePixelRatio(scale);
        icon.addPixmap(pixmap);
    }
    drawn.insert(key, icon);
    return icon;
}
