#pragma once

#include <QLabel>

// A one-line label that ends a text too long for it with an ellipsis instead of cutting a letter
// in half, and that never asks its layout for more room than it has: a collapsed note's title
// must not widen the note.
class SNElidingLabel final : public QLabel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNElidingLabel)

public:
    explicit SNElidingLabel(QWidget *parent = nullptr);
    ~SNElidingLabel() override;

    QSize minimumSizeHint() const override;
    // The text as drawn in the present width.
    QString shownText() const;

protected:
    void paintEvent(QPaintEvent *event) override;
};
