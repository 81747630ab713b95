#pragma once

#include "tagbrowser/SNTagButtonCell.h"

#include <QAbstractButton>
#include <QColor>

// A push button drawn by an SNTagButtonCell: a filled rounded rectangle with a title in a
// colour of its own. It carries a number (the index of the item it stands for), as the cloud
// needs to tell which one was clicked.
class SNTagButton final : public QAbstractButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTagButton)

public:
    // Room on each side of the title when the button is sized to fit it.
    static constexpr int titleInset = 6;

    explicit SNTagButton(QWidget *parent = nullptr);
    ~SNTagButton() override;

    SNTagButtonCell &cell() { return m_cell; }
    const SNTagButtonCell &cell() const { return m_cell; }
    void setCell(const SNTagButtonCell &cell);

    const QColor &titleColor() const { return m_titleColor; }
    void setTitleColor(const QColor &color);

    qint64 tagNumber() const { return m_tagNumber; }
    void setTagNumber(qint64 number) { m_tagNumber = number; }

    // Just wide enough for the title; the height stays.
    void sizeToFit();

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    SNTagButtonCell m_cell;
    QColor m_titleColor = Qt::black;
    qint64 m_tagNumber = 0;
};
