#pragma once

#include "kit/QWColor.h"

#include <QColor>
#include <QFont>
#include <QString>

class QPainter;
class QRectF;

// Draws one tag button: a rounded rectangle in the tag's colour, darker while pressed, and the
// title over it.
class SNTagButtonCell final
{
public:
    static constexpr double cornerRadius = 5.0;
    // How much darker the pressed button is.
    static constexpr float highlightDarkening = 0.2f;

    explicit SNTagButtonCell(const QWColor &backgroundColor = QWColor::white());

    const QWColor &backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QWColor &color) { m_backgroundColor = color; }

    // The fill: the background colour, or while pressed that colour darkened.
    QWColor bezelColor(bool highlighted) const;
    void drawBezelWithFrame(QPainter &painter, const QRectF &frame, bool highlighted) const;
    void drawTitle(QPainter &painter, const QString &title, const QRectF &frame,
        const QColor &color, const QFont &font) const;

private:
    QWColor m_backgroundColor;
};
