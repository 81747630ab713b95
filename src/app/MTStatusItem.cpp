#include "app/MTStatusItem.h"

#include "app/MTStatusItemDelegate.h"
#include "kit/QWNotificationCenter.h"

#include <QCursor>
#include <QEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QIcon>
#include <QMenu>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>
#include <QTimer>

#include <cmath>

const QString MTStatusItem::lengthDidChangeNotification
    = QStringLiteral("MTStatusItemLengthDidChange");

namespace {

// Images are kept at this many pixels per point, so that they stay sharp on any panel.
constexpr qreal cachedImageScale = 4.0;

QString iconResourcePath(const QString &name)
{
    return QStringLiteral(":/Vellumo/icons/") + name + QStringLiteral(".svg");
}

} // namespace

MTStatusItem::MTStatusItem(QObject *parent) : QObject(parent)
{
    m_badgeFont = QGuiApplication::font();
    m_badgeFont.setBold(true);
    m_badgeFont.setPixelSize(12);
    makeStatusItem();
    // The panel's colours follow the desktop's scheme; a change of scheme may change the image.
    QCoreApplication::instance()->installEventFilter(this);
}

MTStatusItem::~MTStatusItem() = default;

void MTStatusItem::makeStatusItem()
{
    if (!m_statusItem) {
        m_statusItem = std::make_unique<QSystemTrayIcon>();
        m_statusItem->setToolTip(QGuiApplication::applicationDisplayName());
        connect(m_statusItem.get(), &QSystemTrayIcon::activated, this,
            &MTStatusItem::statusItemWasActivated);
        // Trays that open the menu themselves (and never report the click) need it up front.
        m_statusItem->setContextMenu(m_contextMenu);
    }
    recalculateLength();
    m_statusItem->show();
}

void MTStatusItem::destroy()
{
    if (!m_statusItem)
        return;
    m_statusItem->hide();
    m_statusItem.reset();
}

void MTStatusItem::setActive(bool active)
{
    m_active = active;
    setIconState(active ? (m_iconState | activeIconState) : (m_iconState & ~activeIconState));
}

void MTStatusItem::toggleActive()
{
    setIconState(m_iconState ^ activeIconState);
}

void MTStatusItem::setClicked(bool clicked)
{
    m_clicked = clicked;
    redraw();
}

void MTStatusItem::setIconState(qint64 state)
{
    m_iconState = state;
    redraw();
}

void MTStatusItem::setContextMenu(QMenu *menu)
{
    if (m_contextMenu)
        disconnect(m_contextMenu, nullptr, this, nullptr);
    m_contextMenu = menu;
    if (menu) {
        connect(menu, &QMenu::aboutToShow, this, &MTStatusItem::menuWillShow);
        connect(menu, &QMenu::aboutToHide, this, &MTStatusItem::menuDidClose);
    }
    if (m_statusItem)
        m_statusItem->setContextMenu(menu);
}

void MTStatusItem::setBadge(const QString &badge)
{
    m_badge = badge;
    recalculateLength();
}

bool MTStatusItem::isDarkMode() const
{
    // Panels follow the desktop's colour scheme; a dark window colour means a dark scheme.
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5;
}

void MTStatusItem::updateDarkModeState()
{
    const bool dark = isDarkMode();
    const bool darkBit = (m_iconState & darkMenuBarIconState) != 0;
    // Written only on a change, since every write redraws.
    if (dark && !darkBit)
        m_iconState |= darkMenuBarIconState;
    else if (!dark && darkBit)
        m_iconState &= ~darkMenuBarIconState;
}

QString MTStatusItem::iconName() const
{
    return QStringLiteral("icon-statusitem");
}

QString MTStatusItem::iconImageName() const
{
    QString name = iconName();
    if (m_iconState & activeIconState)
        name += QStringLiteral("-active");
    else if (m_iconState & darkMenuBarIconState)
        name += QStringLiteral("-normal-dark");
    else
        name += QStringLiteral("-normal");
    // While active or with the menu open the icon sits on a highlight: the light image shows
    // there, so the "-active" name never reaches the screen.
    if (m_clicked || (m_iconState & activeIconState))
        name = QStringLiteral("icon-statusitem-normal-dark");
    return name;
}

QImage MTStatusItem::iconImage() const
{
    const QString name = iconImageName();
    const auto cached = m_iconCache.constFind(name);
    if (cached != m_iconCache.cend())
        return *cached;
    QSvgRenderer renderer(iconResourcePath(name));
    if (!renderer.isValid())
        return {};
    const QSize size = renderer.defaultSize();
    QImage image(size * cachedImageScale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        renderer.render(&painter);
    }
    image.setDevicePixelRatio(cachedImageScale);
    m_iconCache.insert(name, image);
    return image;
}

QRectF MTStatusItem::bounds() const
{
    return QRectF(0, 0, m_length, thickness);
}

QRectF MTStatusItem::imageDrawingRect() const
{
    const QImage image = iconImage();
    if (image.isNull())
        return {};
    const QSizeF size = image.deviceIndependentSize();
    const QRectF area = bounds();
    const qreal y = std::round((area.height() - size.height()) / 2);
    const qreal x
        = m_badge.isEmpty() ? std::round((area.width() - size.width()) / 2) : qreal(badgeMargin);
    return QRectF(QPointF(x, y), size);
}

QRectF MTStatusItem::badgeDrawingRect() const
{
    if (m_badge.isEmpty())
        return {};
    const QSizeF text = QFontMetricsF(m_badgeFont).size(Qt::TextSingleLine, m_badge);
    const qreal imageWidth = iconImage().deviceIndependentSize().width();
    const qreal x = imageWidth + badgeMargin + badgeMargin;
    const qreal y = std::round(thickness / 2.0 - text.height() / 2);
    return QRectF(std::floor(x), std::floor(y), std::ceil(text.width()), std::ceil(text.height()));
}

void MTStatusItem::recalculateLength()
{
    int length = minimumLength;
    if (!m_badge.isEmpty()) {
        const QRectF badge = badgeDrawingRect();
        length = qMax(minimumLength, int(std::round(badge.x() + badge.width() + badgeMargin)));
    }
    if (length != m_length) {
        m_length = length;
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            lengthDidChangeNotification, m_statusItem.get());
    }
    redraw();
}

void MTStatusItem::drawRect(QPainter &painter)
{
    updateDarkModeState();
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_clicked || m_active) {
        QColor highlight = QGuiApplication::palette().color(QPalette::Highlight);
        highlight.setAlphaF(0.45f);
        painter.setPen(Qt::NoPen);
        painter.setBrush(highlight);
        painter.drawRoundedRect(bounds().adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    }
    if (!m_badge.isEmpty()) {
        const bool dark = (m_iconState & darkMenuBarIconState) != 0;
        painter.setPen(dark ? m_badgeColorDark : m_badgeColor);
        painter.setFont(m_badgeFont);
        painter.drawText(badgeDrawingRect(), Qt::AlignLeft | Qt::AlignVCenter, m_badge);
    }
    const QImage image = iconImage();
    if (!image.isNull())
        painter.drawImage(imageDrawingRect(), image);
}

QImage MTStatusItem::renderedImage(qreal devicePixelRatio)
{
    QImage image(QSizeF(m_length * devicePixelRatio, thickness * devicePixelRatio).toSize(),
        QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    image.setDevicePixelRatio(devicePixelRatio);
    QPainter painter(&image);
    drawRect(painter);
    return image;
}

void MTStatusItem::redraw()
{
    if (!m_statusItem)
        return;
    QIcon icon;
    for (const qreal scale : { 1.0, 2.0 })
        icon.addPixmap(QPixmap::fromImage(renderedImage(scale)));
    m_statusItem->setIcon(icon);
}

bool MTStatusItem::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == QCoreApplication::instance()
        && event->type() == QEvent::ApplicationPaletteChange)
        redraw();
    return QObject::eventFilter(watched, event);
}

void MTStatusItem::statusItemWasActivated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason == QSystemTrayIcon::Trigger)
        mouseDown(QGuiApplication::queryKeyboardModifiers());
    else if (reason == QSystemTrayIcon::Context)
        rightMouseDown();
}

void MTStatusItem::mouseDown(Qt::KeyboardModifiers modifiers)
{
    if (modifiers == Qt::ControlModifier)
        rightMouseDown();
    else if (m_delegate)
        m_delegate->menuIconWasClicked();
    else
        showMenu();
}

void MTStatusItem::rightMouseDown()
{
    showMenu();
}

void MTStatusItem::showMenu()
{
    if (m_delegate && !m_delegate->menuShouldShow())
        return;
    setClicked(true);
    // The tray may have opened it already, on the press that brought us here.
    if (m_contextMenu && !m_contextMenu->isVisible())
        m_contextMenu->popup(QCursor::pos());
}

void MTStatusItem::menuWillShow()
{
    // Trays open the menu on their own too; this is where a refusal still holds.
    if (m_delegate && !m_delegate->menuShouldShow()) {
        QTimer::singleShot(0, m_contextMenu, &QMenu::close);
        return;
    }
    setClicked(true);
}

void MTStatusItem::menuDidClose()
{
    setClicked(false);
}
