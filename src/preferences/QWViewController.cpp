#include "preferences/QWViewController.h"

#include "kit/widgets/QWWindowController.h"

QWViewController::QWViewController(QObject *parent) : QObject(parent) { }

QWViewController::~QWViewController()
{
    delete m_view.data();
}

QWidget *QWViewController::view()
{
    if (!m_view && !m_loading) {
        m_loading = true;
        m_view = loadView().release();
        if (m_view)
            qw_viewDidLoad();
        m_loading = false;
    }
    return m_view;
}

void QWViewController::setParentWindowController(QWWindowController *controller)
{
    m_parentWindowController = controller;
}

void QWViewController::forceResize()
{
    Q_EMIT resizeRequested(this);
}

void QWViewController::qw_viewWillAppear()
{
    Q_EMIT viewWillAppear();
}

void QWViewController::qw_viewDidAppear()
{
    Q_EMIT viewDidAppear();
}

void QWViewController::qw_viewWillDisappear()
{
    Q_EMIT viewWillDisappear();
}

void QWViewController::qw_viewDidDisappear()
{
    Q_EMIT viewDidDisappear();
}
