#pragma once

#include <QColor>
#include <QWidget>

// A view that fills itself with a vertical gradient, from startColor at the top to endColor at
// the bottom. Note windows use it as their background; it draws nothing else.
class QWGradientView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWGradientView)
    Q_PROPERTY(QColor startColor READ startColor WRITE setStartColor)
    Q_PROPERTY(QColor endColor READ endColor WRITE setEndColor)

public:
    explicit QWGradientView(QWidget *parent = nullptr);
    ~QWGradientView() override;

    const QColor &startColor() const { return m_startColor; }
    void setStartColor(const QColor &color);
    const QColor &endColor() const { return m_endColor; }
    void setEndColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_startColor = Qt::white;
    QColor m_endColor = Qt::white;
};
