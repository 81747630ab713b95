#include "kit/widgets/QWGradientView.h"

#include <QLinearGradient>
#include <QPainter>

QWGradientView::QWGradientView(QWidget *parent) : QWidget(parent)
{
    // Every pixel is painted here, so Qt need not clear the area first.
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QWGradientView::~QWGradientView() = default;

void QWGradientView::setStartColor(const QColor &color)
{
    if (m_startColor == color)
        return;
    m_startColor = color;
    update();
}

void QWGradientView::setEndColor(const QColor &color)
{
    if (m_endColor == color)
        return;
    m_endColor = color;
    update();
}

void QWGradientView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, m_startColor);
    gradient.setColorAt(1, m_endColor);
    painter.fillRect(rect(), gradient);
}
