#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QTextEdit>

class SNLinkHighlighter;

// The editor of a note. Rich text with the usual editing keys (undo and redo, the clipboard,
// selection, scrolling come with QTextEdit), plus bold, italic and underline on Ctrl+B, Ctrl+I
// and Ctrl+U, an insertion point in a colour of its own, and links shown in the theme's link
// style with a pointing hand over them.
class SNTextView final : public QTextEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTextView)

public:
    explicit SNTextView(QWidget *parent = nullptr);
    ~SNTextView() override;

    // QTextEdit draws its caret in the text colour; a theme may want another one.
    const QColor &insertionPointColor() const { return m_insertionPointColor; }
    void setInsertionPointColor(const QColor &color);

    // The scroll bar is a slim handle in this colour over the note, with no track or arrows
    // that would cover the note's background.
    const QColor &scrollerColor() const { return m_scrollerColor; }
    void setScrollerColor(const QColor &color);

    // How links are shown; display only, the text keeps its own attributes.
    QTextCharFormat linkTextAttributes() const;
    void setLinkTextAttributes(const QTextCharFormat &format);
    const QCursor &linkCursor() const { return m_linkCursor; }
    void setLinkCursor(const QCursor &cursor) { m_linkCursor = cursor; }

    // On the selection, or on what is typed next when nothing is selected. Bold and italic are
    // switched on unless the first selected character already has them; then they go.
    void toggleBold();
    void toggleItalic();
    void toggleUnderline();

    bool isInsertionPointShown() const { return m_caretShown; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    // The character format that decides what a toggle does: the first selected character's,
    // or the typing format.
    QTextCharFormat formatForToggle() const;
    void restartInsertionPointBlink();
    QRect insertionPointRect() const;

    SNLinkHighlighter *m_linkHighlighter;
    QColor m_insertionPointColor = Qt::black;
    QColor m_scrollerColor;
    QCursor m_linkCursor = QCursor(Qt::PointingHandCursor);
    QBasicTimer m_blinkTimer;
    bool m_caretShown = false;
};
