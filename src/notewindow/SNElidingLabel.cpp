#include "notewindow/SNElidingLabel.h"

#include <QPainter>
#include <QStyle>

SNElidingLabel::SNElidingLabel(QWidget *parent) : QLabel(parent) { }

SNElidingLabel::~SNElidingLabel() = default;

QSize SNElidingLabel::minimumSizeHint() const
{
    return QSize(0, QLabel::minimumSizeHint().height());
}

QString SNElidingLabel::shownText() const
{
    // The indent on both sides: the text keeps clear of whatever follows the label too.
    const int width = contentsRect().width() - 2 * std::max(indent(), 0);
    QString firstLine = text();
    firstLine.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return fontMetrics().elidedText(firstLine, Qt::ElideRight, std::max(width, 0));
}

void SNElidingLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QRect area = contentsRect();
    area.setLeft(area.left() + std::max(indent(), 0));
    style()->drawItemText(&painter, area, int(alignment()) | Qt::TextSingleLine, palette(),
        isEnabled(), shownText(), foregroundRole());
}
