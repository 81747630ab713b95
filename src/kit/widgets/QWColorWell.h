#pragma once

#include <QColor>
#include <QPushButton>

// A button that shows a colour. Clicking it asks for a colour panel; whoever opens the panel
// sets the colour back with setColor() and hears of it through colorChanged().
class QWColorWell final : public QPushButton
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWColorWell)

public:
    explicit QWColorWell(QWidget *parent = nullptr);
    ~QWColorWell() override;

    const QColor &color() const { return m_color; }
    // Announces the change only when asked to: programs set wells all the time, users rarely.
    void setColor(const QColor &color, bool announce = false);

    QSize sizeHint() const override;

Q_SIGNALS:
    void colorChanged(QWColorWell *well);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color = Qt::white;
};
