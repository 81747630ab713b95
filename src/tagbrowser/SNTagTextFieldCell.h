#pragma once

#include <QColor>
#include <QLabel>

// A text label drawn on a capsule: a rounded rectangle of its whole frame, the corners half the
// frame's height, in a strong red, under the text.
class SNTagTextFieldCell final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTagTextFieldCell)

public:
    explicit SNTagTextFieldCell(QWidget *parent = nullptr);
    ~SNTagTextFieldCell() override;

    static QColor capsuleColor() { return QColor::fromRgbF(1.0f, 0.1569f, 0.3176f, 1.0f); }

protected:
    void paintEvent(QPaintEvent *event) override;
};
