#include "kit/widgets/QWWindowManager.h"

#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWWindowController.h"
#include "kit/widgets/QWX11WindowState.h"

#include <QEvent>
#include <QWidget>

const QString QWWindowManager::willCloseAllWindowsNotification
    = QStringLiteral("QWWindowManagerWillCloseAllWindows");
const QString QWWindowManager::didCloseAllWindowsNotification
    = QStringLiteral("QWWindowManagerDidCloseAllWindows");

QWWindowManager::QWWindowManager() = default;

QWWindowManager::~QWWindowManager()
{
    const QList<QPointer<QWWindowController>> controllers = m_controllers;
    m_controllers.clear();
    for (const QPointer<QWWindowController> &controller : controllers) {
        if (!controller)
            continue;
        stopWatching(controller);
        delete controller.data();
    }
}

QWWindowManager &QWWindowManager::sharedManager()
{
    // Never destroyed: it lives as long as the process, and the windows its controllers own
    // could not be destroyed once the application object is gone.
    static QWWindowManager *const manager = new QWWindowManager;
    return *manager;
}

QList<QWWindowController *> QWWindowManager::windowControllers() const
{
    QList<QWWindowController *> result;
    result.reserve(m_controllers.size());
    for (const QPointer<QWWindowController> &controller : m_controllers) {
        if (controller)
            result.append(controller);
    }
    return result;
}

void QWWindowManager::setWindowPreparation(std::function<void(QWWindowController *)> prepare)
{
    m_prepare = std::move(prepare);
}

void QWWindowManager::addWindowWithControllerShouldShow(
    QWWindowController *controller, bool shouldShow)
{
    if (!controller)
        return;
    if (!m_controllers.contains(controller)) {
        m_controllers.append(controller);
        controller->setParent(this);
        connect(controller, &QWWindowController::windowWillClose, this,
            [this, controller] { windowDidClose(controller); });
        connect(controller, &QObject::destroyed, this, &QWWindowManager::controllerWasDestroyed);
        // Loads the window: its activations must be seen from the start.
        if (QWidget *window = controller->window()) {
            window->installEventFilter(this);
            if (m_prepare)
                m_prepare(controller);
        }
    }
    if (shouldShow)
        showWindow(controller->window());
}

void QWWindowManager::addWindowWithController(QWWindowController *controller)
{
    addWindowWithControllerShouldShow(controller, true);
}

void QWWindowManager::addWindowControllersShouldShow(
    const QList<QWWindowController *> &controllers, bool shouldShow)
{
    // Each window is loaded, shown and put in front in turn, and sent to the X server before
    // the next one is loaded: the window manager, which takes a few milliseconds to take on
    // each window, starts on the first ones while the others are still being built. Only the
    // front one is activated, at the end. Activating every window costs a round trip to the
    // window manager each, and Qt goes through all its windows on every change of the active
    // one: hundreds of notes would take seconds.
    QSet<QWidget *> mapped;
    for (QWWindowController *controller : controllers) {
        addWindowWithControllerShouldShow(controller, false);
        if (!shouldShow || !controller)
            continue;
        QWidget *window = controller->window();
        if (!window->isVisible())
            mapped.insert(window);
        const bool quiet = window->testAttribute(Qt::WA_ShowWithoutActivating);
        window->setAttribute(Qt::WA_ShowWithoutActivating, true);
        orderFront(window);
        window->setAttribute(Qt::WA_ShowWithoutActivating, quiet);
        QWX11WindowState::sendPendingRequests();
    }
    if (shouldShow)
        bringToTheFront(mapped);
}

void QWWindowManager::addWindowControllers(const QList<QWWindowController *> &controllers)
{
    addWindowControllersShouldShow(controllers, true);
}

QList<QWWindowController *> QWWindowManager::windowControllersForClass(
    const QMetaObject &metaObject) const
{
    QList<QWWindowController *> result;
    for (const QPointer<QWWindowController> &controller : m_controllers) {
        if (controller && controller->metaObject()->inherits(&metaObject))
            result.append(controller);
    }
    return result;
}

void QWWindowManager::showWindow(QWidget *window)
{
    if (!window)
        return;
    if (window->isMinimized())
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    // Qt asks the window manager for activation as an application, which it may refuse while
    // another program has the focus (and openbox then restacks the windows it just raised);
    // the user asked for this window, so ask as a pager does.
    if (!QWX11WindowState::requestActivation(window))
        window->activateWindow();
    if (isManagedWindow(window))
        moveToFront(window);
}

void QWWindowManager::orderFront(QWidget *window)
{
    // A window being mapped goes on top of the others by itself; asking the window manager to
    // raise it as well costs it a restack for each window, which at start-up is each note.
    const bool wasVisible = window->isVisible();
    window->show();
    if (wasVisible)
        window->raise();
    moveToFront(window);
}

void QWWindowManager::bringWindowControllersToTheFront()
{
    bringToTheFront({});
}

void QWWindowManager::bringToTheFront(const QSet<QWidget *> &justMapped)
{
    QList<QWidget *> taken;
    if (m_previousOrderedWindows) {
        for (const QPointer<QWidget> &window : std::as_const(*m_previousOrderedWindows)) {
            if (window)
                taken.append(window);
        }
    } else {
        taken = orderedWindows();
    }
    QList<QWidget *> managed;
    for (QWidget *window : std::as_const(taken)) {
        if (isManagedWindow(window))
            managed.append(window);
    }

    // Back-most first, so that each raise leaves the order that was taken.
    QWidget *frontMost = nullptr;
    for (auto it = managed.crbegin(); it != managed.crend(); ++it) {
        QWidget *window = *it;
        // Just mapped in this order, on top of the others: only the record needs the order.
        if (justMapped.contains(window))
            moveToFront(window);
        else
            orderFront(window);
        frontMost = window;
    }
    // With no managed window there is nothing to activate: no window of ours changes.
    if (frontMost)
        showWindow(frontMost);

    m_previousOrderedWindows.reset();
}

void QWWindowManager::hideAllWindowControllers()
{
    // X11 has no notice that a whole program is about to be hidden: this is the moment the
    // stacking order the user had is still known.
    updateOrderedWindows();
    for (const QPointer<QWWindowController> &controller : std::as_const(m_controllers)) {
        if (controller && controller->isWindowLoaded())
            controller->window()->hide();
    }
}

void QWWindowManager::updateOrderedWindows()
{
    QList<QPointer<QWidget>> windows;
    for (QWidget *window : orderedWindows())
        windows.append(window);
    m_previousOrderedWindows = windows;
}

QList<QWidget *> QWWindowManager::orderedWindows() const
{
    QList<QWidget *> result;
    for (const QPointer<QWidget> &window : m_stackingOrder) {
        if (window && isManagedWindow(window))
            result.append(window);
    }
    // A window never activated nor raised (added without being shown) still has a place,
    // behind the others, so that bringing all to the front does not leave it hidden.
    for (const QPointer<QWWindowController> &controller : m_controllers) {
        if (!controller || !controller->isWindowLoaded())
            continue;
        QWidget *window = controller->window();
        if (window && !result.contains(window))
            result.append(window);
    }
    return result;
}

void QWWindowManager::windowDidClose(QWWindowController *controller)
{
    const qsizetype index = m_controllers.indexOf(controller);
    if (index >= 0) {
        if (m_controllers.size() == 1)
            QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
                willCloseAllWindowsNotification, nullptr);
        m_controllers.removeAt(index);
    }
    if (m_controllers.isEmpty())
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            didCloseAllWindowsNotification, nullptr);

    stopWatching(controller);
    // Later: the controller is still in the middle of closing its window.
    if (index >= 0)
        controller->deleteLater();
}

void QWWindowManager::controllerWasDestroyed(QObject *)
{
    // Deleted by someone else while managed: its window went with it, which is a close. The
    // pointer to it is already null, so it is the one null entry.
    if (m_controllers.size() == 1)
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            willCloseAllWindowsNotification, nullptr);
    m_controllers.removeIf([](const QPointer<QWWindowController> &c) { return c.isNull(); });
    m_stackingOrder.removeIf([](const QPointer<QWidget> &window) { return window.isNull(); });
    if (m_controllers.isEmpty())
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            didCloseAllWindowsNotification, nullptr);
}

void QWWindowManager::stopWatching(QWWindowController *controller)
{
    disconnect(controller, nullptr, this, nullptr);
    if (!controller->isWindowLoaded())
        return;
    QWidget *window = controller->window();
    window->removeEventFilter(this);
    m_stackingOrder.removeIf(
        [window](const QPointer<QWidget> &entry) { return entry.isNull() || entry == window; });
}

bool QWWindowManager::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate && watched->isWidgetType())
        moveToFront(static_cast<QWidget *>(watched));
    return QObject::eventFilter(watched, event);
}

void QWWindowManager::moveToFront(QWidget *window)
{
    m_stackingOrder.removeIf(
        [window](const QPointer<QWidget> &entry) { return entry.isNull() || entry == window; });
    m_stackingOrder.prepend(window);
}

bool QWWindowManager::isManagedWindow(const QWidget *window) const
{
    if (!window)
        return false;
    for (const QPointer<QWWindowController> &controller : m_controllers) {
        if (controller && controller->isWindowLoaded() && controller->window() == window)
            return true;
    }
    return false;
}
