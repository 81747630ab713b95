#include "tagbrowser/SNTagTextFieldCell.h"

#include <QPainter>
#include <QPainterPath>

SNTagTextFieldCell::SNTagTextFieldCell(QWidget *parent) : QLabel(parent)
{
    setAlignment(Qt::AlignCenter);
}

SNTagTextFieldCell::~SNTagTextFieldCell() = default;

void SNTagTextFieldCell::paintEvent(QPaintEvent *event)
{
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF frame = rect();
        const double radius = frame.height() / 2.0;
        QPainterPath capsule;
        capsule.addRoundedRect(frame, radius, radius);
        painter.fillPath(capsule, capsuleColor());
    }
    QLabel::paintEvent(event);
}
