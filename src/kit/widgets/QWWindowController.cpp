#include "kit/widgets/QWWindowController.h"

QWWindowController::QWWindowController(QObject *parent) : QObject(parent) { }

QWWindowController::~QWWindowController() = default;

QWidget *QWWindowController::window()
{
    if (!m_window && !m_loading) {
        // Guarded: the set-up below may ask for the window again.
        m_loading = true;
        std::unique_ptr<QWidget> window = loadWindow();
        m_window = std::move(window);
        if (m_window) {
            qw_viewDidLoad();
            windowDidLoad();
        }
        m_loading = false;
    }
    return m_window.get();
}

void QWWindowController::showWindow()
{
    QWidget *shown = window();
    if (!shown)
        return;
    shown->show();
    shown->raise();
    shown->activateWindow();
}

void QWWindowController::announceWindowWillClose()
{
    Q_EMIT windowWillClose(this);
}
