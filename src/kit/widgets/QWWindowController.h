#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

// The base of every controller that owns one top-level window. The window is built on first
// access, from the interface file named after the controller's class; qw_viewDidLoad() runs
// exactly once while it loads, then windowDidLoad(). The controller owns its window.
class QWWindowController : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWWindowController)

public:
    explicit QWWindowController(QObject *parent = nullptr);
    ~QWWindowController() override;

    // The window, loaded on first access.
    QWidget *window();
    bool isWindowLoaded() const { return m_window != nullptr; }

    // Shows the window, raises it and gives it the keyboard.
    virtual void showWindow();

Q_SIGNALS:
    // The window is about to close: the controller's last chance to save what it shows.
    void windowWillClose(QWWindowController *controller);

protected:
    // Builds the window and its contents from the interface file; called once.
    virtual std::unique_ptr<QWidget> loadWindow() = 0;
    virtual void qw_viewDidLoad() { }
    virtual void windowDidLoad() { }
    // For subclasses, from the path that really closes the window.
    void announceWindowWillClose();

private:
    std::unique_ptr<QWidget> m_window;
    bool m_loading = false;
};
