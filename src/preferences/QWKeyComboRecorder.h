#pragma once

#include "kit/QWKeyCombo.h"

#include <QWidget>

class QToolButton;

// A field that records a key combination for a system-wide hot key. A click (or Space) starts
// recording; the next key pressed with at least one modifier (function keys need none) becomes
// the combination; Escape stops recording and keeps the old one; Backspace or Delete, or the
// clear button, records the empty combination, flags 0 and code 0. While recording, the field
// holds the keyboard, so that the program's own hot keys do not fire in place of being recorded.
class QWKeyComboRecorder final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWKeyComboRecorder)

public:
    explicit QWKeyComboRecorder(QWidget *parent = nullptr);
    ~QWKeyComboRecorder() override;

    const QWKeyCombo &keyCombo() const { return m_keyCombo; }
    // Shows the combination without announcing a change.
    void setKeyCombo(const QWKeyCombo &combo);

    bool isRecording() const { return m_recording; }
    void beginRecording();
    void endRecording();
    void clearKeyCombo();

    // What the field shows now.
    QString displayedText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void keyComboDidChange(QWKeyComboRecorder *recorder, const QWKeyCombo &combo);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void record(const QWKeyCombo &combo);
    void placeClearButton();

    QWKeyCombo m_keyCombo { 0, 0 };
    bool m_recording = false;
    Qt::KeyboardModifiers m_heldModifiers;
    QToolButton *m_clearButton = nullptr; // a child
};
