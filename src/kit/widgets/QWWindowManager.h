#pragma once

#include <QList>
#include <QMetaObject>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

class QWidget;
class QWWindowController;

// The register of the window controllers whose windows the program shows together: one
// note window controller per open note. It keeps them in the order they were added, shows
// them, hides them all, brings them all to the front in their last front-to-back order, and
// lets a controller go when its window closes. It owns the controllers it holds.
//
// X11 reports the stacking order only through the window manager, so the manager keeps the
// front-to-back order itself, from window activation.
class QWWindowManager final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWWindowManager)

public:
    static const QString willCloseAllWindowsNotification; // "QWWindowManagerWillCloseAllWindows"
    static const QString didCloseAllWindowsNotification; // "QWWindowManagerDidCloseAllWindows"

    QWWindowManager();
    ~QWWindowManager() override;

    static QWWindowManager &sharedManager();

    QList<QWWindowController *> windowControllers() const;

    // Runs once for each controller as it is added, after its window is loaded and before it
    // is first shown: what every managed window needs before it maps.
    void setWindowPreparation(std::function<void(QWWindowController *)> prepare);

    void addWindowWithControllerShouldShow(QWWindowController *controller, bool shouldShow);
    void addWindowWithController(QWWindowController *controller);
    void addWindowControllersShouldShow(
        const QList<QWWindowController *> &controllers, bool shouldShow);
    void addWindowControllers(const QList<QWWindowController *> &controllers);

    // The managed controllers of that class or derived from it, in list order.
    QList<QWWindowController *> windowControllersForClass(const QMetaObject &metaObject) const;
    template <class Controller> QList<Controller *> windowControllersForClass() const
    {
        QList<Controller *> result;
        for (QWWindowController *controller :
            windowControllersForClass(Controller::staticMetaObject))
            result.append(static_cast<Controller *>(controller));
        return result;
    }

    // Makes the window key and raises it, even when another program is active.
    void showWindow(QWidget *window);
    void bringWindowControllersToTheFront();
    // Hides every managed window without closing it or forgetting it, having remembered the
    // front-to-back order first (updateOrderedWindows()).
    void hideAllWindowControllers();
    // Remembers the present front-to-back order, for the next bringWindowControllersToTheFront().
    void updateOrderedWindows();

    // The managed windows, front-most first: those the manager has seen activated or has
    // raised itself, in that order, then the ones never brought forward, in list order.
    QList<QWidget *> orderedWindows() const;

private:
    void windowDidClose(QWWindowController *controller);
    void controllerWasDestroyed(QObject *controller);
    void stopWatching(QWWindowController *controller);
    bool eventFilter(QObject *watched, QEvent *event) override;
    void moveToFront(QWidget *window);
    // Shows the window in front of the others.
    void orderFront(QWidget *window);
    // Brings the managed windows to the front in their own order; windows just mapped (on top
    // already, in that order) are not raised again.
    void bringToTheFront(const QSet<QWidget *> &justMapped);
    bool isManagedWindow(const QWidget *window) const;

    std::function<void(QWWindowController *)> m_prepare;

    QList<QPointer<QWWindowController>> m_controllers;
    QList<QPointer<QWidget>> m_stackingOrder; // front-most first
    std::optional<QList<QPointer<QWidget>>> m_previousOrderedWindows;
};
