#include "notewindow/SNTitleBarView.h"

#include "kit/QWNotificationCenter.h"

#include <QMouseEvent>

const QString SNTitleBarView::titleBarWasDoubleClickedNotification
    = QStringLiteral("SNTitleBarWasDoubleClicked");

SNTitleBarView::SNTitleBarView(QWidget *parent) : QWidget(parent) { }

SNTitleBarView::~SNTitleBarView() = default;

void SNTitleBarView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseDoubleClickEvent(event);
        return;
    }
    event->accept();
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        titleBarWasDoubleClickedNotification, this);
}
