#pragma once

#include <QColor>
#include <QFont>
#include <QHash>
#include <QImage>
#include <QMenu>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QString>
#include <QSystemTrayIcon>

#include <memory>

class MTStatusItemDelegate;
class QPainter;

// The program's icon in the system tray. It draws one of two images, chosen by whether the
// program is active, whether the panel is dark and whether its menu is open, with an optional
// short badge drawn to the right of the image into the same picture. A left click goes to the
// delegate; a right click, or a left click with Control alone, opens the menu.
//
// The tray slot comes and goes with destroy() and makeStatusItem(); this object stays, so the
// application keeps one for its whole life.
class MTStatusItem final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(MTStatusItem)

public:
    // Posted with the tray icon as the object whenever the width changes.
    static const QString lengthDidChangeNotification; // "MTStatusItemLengthDidChange"

    // iconState bits.
    static constexpr qint64 activeIconState = 1;
    static constexpr qint64 darkMenuBarIconState = 8;

    static constexpr int minimumLength = 24;
    static constexpr int thickness = 22;
    static constexpr int badgeMargin = 5;

    explicit MTStatusItem(QObject *parent = nullptr);
    ~MTStatusItem() override;

    // Puts the icon into the tray (again, after destroy()).
    void makeStatusItem();
    // Takes the icon out of the tray; this object survives for the next makeStatusItem().
    void destroy();
    // Null while the icon is out of the tray.
    QSystemTrayIcon *statusItem() const { return m_statusItem.get(); }

    bool isActive() const { return m_active; }
    void setActive(bool active);
    void toggleActive();
    // True while the menu is open.
    bool isClicked() const { return m_clicked; }
    void setClicked(bool clicked);
    qint64 iconState() const { return m_iconState; }
    void setIconState(qint64 state);

    // Held weakly: the delegate outlives the icon.
    MTStatusItemDelegate *delegate() const { return m_delegate; }
    void setDelegate(MTStatusItemDelegate *delegate) { m_delegate = delegate; }
    QMenu *contextMenu() const { return m_contextMenu; }
    void setContextMenu(QMenu *menu);

    const QString &badge() const { return m_badge; }
    void setBadge(const QString &badge);
    const QColor &badgeColor() const { return m_badgeColor; }
    void setBadgeColor(const QColor &color) { m_badgeColor = color; }
    const QColor &badgeColorDark() const { return m_badgeColorDark; }
    void setBadgeColorDark(const QColor &color) { m_badgeColorDark = color; }
    const QFont &badgeFont() const { return m_badgeFont; }
    void setBadgeFont(const QFont &font) { m_badgeFont = font; }

    // Whether the panel is dark, as far as the desktop's palette tells.
    bool isDarkMode() const;
    void updateDarkModeState();

    // The base name of the icon images: "icon-statusitem".
    QString iconName() const;
    // The image the present state shows: "icon-statusitem-normal" or "-normal-dark".
    QString iconImageName() const;
    // Loaded once per name; null when the resource is missing.
    QImage iconImage() const;

    QRectF imageDrawingRect() const;
    QRectF badgeDrawingRect() const;
    // The width of the picture: 24, or more to fit the badge.
    int length() const { return m_length; }
    void recalculateLength();

    // Draws the picture into a length() by thickness area.
    void drawRect(QPainter &painter);
    // The picture at a device pixel ratio, as the tray shows it.
    QImage renderedImage(qreal devicePixelRatio);

    void showMenu();
    void menuDidClose();
    // A left click, with the keyboard modifiers held at the time.
    void mouseDown(Qt::KeyboardModifiers modifiers);
    void rightMouseDown();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void redraw();
    void statusItemWasActivated(QSystemTrayIcon::ActivationReason reason);
    void menuWillShow();
    QRectF bounds() const;

    bool m_active = false;
    bool m_clicked = false;
    MTStatusItemDelegate *m_delegate = nullptr;
    QPointer<QMenu> m_contextMenu;
    qint64 m_iconState = 0;
    QString m_badge;
    QColor m_badgeColor = QColor(0x1f, 0x1f, 0x1f);
    QColor m_badgeColorDark = Qt::white;
    QFont m_badgeFont;
    std::unique_ptr<QSystemTrayIcon> m_statusItem;
    mutable QHash<QString, QImage> m_iconCache;
    int m_length = minimumLength;
};
