#include "kit/widgets/QWColorWell.h"

#include <QPainter>
#include <QStyleOptionButton>

QWColorWell::QWColorWell(QWidget *parent) : QPushButton(parent)
{
    setCursor(Qt::PointingHandCursor);
}

QWColorWell::~QWColorWell() = default;

void QWColorWell::setColor(const QColor &color, bool announce)
{
    m_color = color;
    setToolTip(color.name(QColor::HexRgb));
    update();
    if (announce)
        Q_EMIT colorChanged(this);
}

QSize QWColorWell::sizeHint() const
{
    return { 52, 26 };
}

void QWColorWell::paintEvent(QPaintEvent *event)
{
    QPushButton::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF swatch = QRectF(rect()).adjusted(6.5, 5.5, -6.5, -5.5);
    QColor fill = m_color;
    QColor border = palette().color(QPalette::Dark);
    if (!isEnabled()) {
        // A disabled well still says which colour the theme has, only quieter.
        fill.setAlphaF(0.45f);
        border.setAlphaF(0.5f);
    }
    painter.setPen(QPen(border, 1.0));
    painter.setBrush(fill);
    painter.drawRoundedRect(swatch, 3.0, 3.0);
}
