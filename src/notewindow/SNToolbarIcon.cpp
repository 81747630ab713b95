#include "notewindow/SNToolbarIcon.h"

#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

const QString SNToolbarIcon::closeIconName = QStringLiteral("icon-close");
const QString SNToolbarIcon::pinIconName = QStringLiteral("icon-pin");
const QString SNToolbarIcon::settingsIconName = QStringLiteral("icon-settings");
const QString SNToolbarIcon::searchIconName = QStringLiteral("icon-search");
const QString SNToolbarIcon::darkSuffix = QStringLiteral("-dark");

namespace {

// The artwork is drawn in one solid colour and laid on the note at this opacity, so that the
// paper's colour shows through. Applied to the finished image rather than in the SVG, where
// crossing strokes would each be blended on their own and show darker where they meet.
constexpr qreal lightBackgroundOpacity = 0.6;
constexpr qreal darkBackgroundOpacity = 0.85;

QPixmap renderedPixmap(QSvgRenderer &renderer, int scale, qreal opacity)
{
    const int side = SNToolbarIcon::iconSize * scale;
    QImage artwork(side, side, QImage::Format_ARGB32_Premultiplied);
    artwork.fill(Qt::transparent);
    {
        QPainter painter(&artwork);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
    }
    QImage faded(side, side, QImage::Format_ARGB32_Premultiplied);
    faded.fill(Qt::transparent);
    {
        QPainter painter(&faded);
        painter.setOpacity(opacity);
        painter.drawImage(0, 0, artwork);
    }
    QPixmap pixmap = QPixmap::fromImage(faded);
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

} // namespace

QString SNToolbarIcon::nameForTheme(const QString &name, bool isDark)
{
    return isDark ? name + darkSuffix : name;
}

QString SNToolbarIcon::resourcePath(const QString &name)
{
    return QStringLiteral(":/Vellumo/icons/%1.svg").arg(name);
}

QIcon SNToolbarIcon::iconNamed(const QString &name)
{
    static QHash<QString, QIcon> cache;
    const auto cached = cache.constFind(name);
    if (cached != cache.cend())
        return *cached;

    QIcon icon;
    QSvgRenderer renderer(resourcePath(name));
    if (renderer.isValid()) {
        const qreal opacity
            = name.endsWith(darkSuffix) ? darkBackgroundOpacity : lightBackgroundOpacity;
        for (int scale : { 1, 2 })
            icon.addPixmap(renderedPixmap(renderer, scale, opacity));
    }
    cache.insert(name, icon);
    return icon;
}
