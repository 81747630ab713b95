#pragma once

#include <QObject>

class QWidget;

// Closes a top-level window on Escape or the desktop's close keys (Ctrl+W), as a dialog does. It
// only hears keys that no control inside the window took: an open cell editor or a key recorder
// keeps its Escape. It does not decide whether the window may close; the window's own close
// handling still does.
class QWWindowCloseKeys final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWWindowCloseKeys)

public:
    // The window owns what is installed.
    static void install(QWidget *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit QWWindowCloseKeys(QWidget *window);
};
