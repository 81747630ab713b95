#pragma once

#include "kit/widgets/QWWindowController.h"

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QWidget>

#include <memory>

// The base of controllers that own one view shown inside someone else's window. The view is
// built on first access; qw_viewDidLoad() runs once, right after. The appearance calls are made
// by whoever shows the view, and each announces itself through a signal, so that observers need
// not subclass. Overrides call the base first.
class QWViewController : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWViewController)

public:
    explicit QWViewController(QObject *parent = nullptr);
    ~QWViewController() override;

    QWidget *view();
    bool isViewLoaded() const { return !m_view.isNull(); }

    // Zero unless the controller sets it: the view's own size is wanted then.
    QSize viewMinSize() const { return m_viewMinSize; }
    void setViewMinSize(const QSize &size) { m_viewMinSize = size; }
    QSize viewDefaultSize() const { return m_viewDefaultSize; }
    void setViewDefaultSize(const QSize &size) { m_viewDefaultSize = size; }

    QWidget *parentWindow() const { return m_parentWindow; }
    void setParentWindow(QWidget *window) { m_parentWindow = window; }
    QWWindowController *parentWindowController() const { return m_parentWindowController; }
    void setParentWindowController(QWWindowController *controller);

    // Asks the window that shows the view to fit it again.
    void forceResize();

    virtual void qw_viewWillAppear();
    virtual void qw_viewDidAppear();
    virtual void qw_viewWillDisappear();
    virtual void qw_viewDidDisappear();

Q_SIGNALS:
    void viewWillAppear();
    void viewDidAppear();
    void viewWillDisappear();
    void viewDidDisappear();
    void resizeRequested(QWViewController *controller);

protected:
    virtual std::unique_ptr<QWidget> loadView() = 0;
    virtual void qw_viewDidLoad() { }

private:
    // The view may sit in another widget, which then deletes it with itself.
    QPointer<QWidget> m_view;
    bool m_loading = false;
    QSize m_viewMinSize;
    QSize m_viewDefaultSize;
    QPointer<QWidget> m_parentWindow;
    QPointer<QWWindowController> m_parentWindowController;
};
