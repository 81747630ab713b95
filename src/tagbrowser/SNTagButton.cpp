#include "tagbrowser/SNTagButton.h"

#include <QFontMetrics>
#include <QPainter>

SNTagButton::SNTagButton(QWidget *parent) : QAbstractButton(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
}

SNTagButton::~SNTagButton() = default;

void SNTagButton::setCell(const SNTagButtonCell &cell)
{
    m_cell = cell;
    update();
}

void SNTagButton::setTitleColor(const QColor &color)
{
    m_titleColor = color;
    update();
}

QSize SNTagButton::sizeHint() const
{
    return { fontMetrics().horizontalAdvance(text()) + 2 * titleInset, fontMetrics().height() + 4 };
}

void SNTagButton::sizeToFit()
{
    resize(sizeHint().width(), height());
}

void SNTagButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRectF frame = rect();
    m_cell.drawBezelWithFrame(painter, frame, isDown());
    m_cell.drawTitle(painter, text(), frame, m_titleColor, font());
}
