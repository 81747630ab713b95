#pragma once

#include <QString>
#include <QWidget>

// The strip at the top of a note that holds its buttons. A double click on it announces
// "SNTitleBarWasDoubleClicked" with the view as the sender, so that the note it belongs to
// collapses or expands. Presses it does not use go to the window, which moves on a drag.
class SNTitleBarView final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTitleBarView)

public:
    static const QString titleBarWasDoubleClickedNotification; // "SNTitleBarWasDoubleClicked"

    explicit SNTitleBarView(QWidget *parent = nullptr);
    ~SNTitleBarView() override;

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
};
