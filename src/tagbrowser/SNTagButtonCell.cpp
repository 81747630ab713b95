#include "tagbrowser/SNTagButtonCell.h"

#include <QPainter>
#include <QPainterPath>
#include <QRectF>

SNTagButtonCell::SNTagButtonCell(const QWColor &backgroundColor)
    : m_backgroundColor(backgroundColor)
{ }

QWColor SNTagButtonCell::bezelColor(bool highlighted) const
{
    return highlighted ? m_backgroundColor.qw_darkenBy(highlightDarkening) : m_backgroundColor;
}

void SNTagButtonCell::drawBezelWithFrame(
    QPainter &painter, const QRectF &frame, bool highlighted) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(frame, cornerRadius, cornerRadius);
    painter.fillPath(path, bezelColor(highlighted).toQColor());
    painter.restore();
}

void SNTagButtonCell::drawTitle(QPainter &painter, const QString &title, const QRectF &frame,
    const QColor &color, const QFont &font) const
{
    // Centred in the frame, which sits the title where it looks centred on the bezel.
    painter.save();
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(frame, Qt::AlignCenter | Qt::TextSingleLine, title);
    painter.restore();
}
