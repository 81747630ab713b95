#pragma once

#include <QBasicTimer>
#include <QColor>
#include <QPointer>
#include <QStringList>
#include <QTextEdit>

#include <memory>

class QMenu;
class QWSpellChecker;
class SNLinkHighlighter;
class SNTextViewDelegate;

// The editor of a note. Rich text with the usual editing keys (undo and redo, the clipboard,
// selection, scrolling come with QTextEdit), plus bold, italic and underline on Ctrl+B, Ctrl+I
// and Ctrl+U, an insertion point in a colour of its own, links shown in the theme's link style
// with a pointing hand over them and opened by a click, "Paste Plain Text", spelling marks and
// auto-correction, and names for the undo steps of its commands. The note's controller, as its
// delegate, decides the right-click menu, what a link click does and what typing continues in.
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

    SNTextViewDelegate *delegate() const { return m_delegate; }
    void setDelegate(SNTextViewDelegate *delegate) { m_delegate = delegate; }

    // The clipboard's text, without its formats, in the typing format.
    void pasteAsPlainText();

    // The menu a right click at the point of the viewport shows: the editor's own items (with
    // spelling suggestions over a misspelt word), as the delegate arranges them. The proposed
    // menu is handed to `owner`, whose deletion takes every menu made for it along.
    QMenu *menuForPosition(const QPoint &position, std::unique_ptr<QMenu> &owner);
    // The target of the link, or the name of the hashtag, under a point of the viewport.
    QString linkAtPosition(const QPoint &position) const;
    // The index of the character under a point of the viewport; the text's length past its end.
    int characterIndexForPosition(const QPoint &position) const;

    // What the next undo step undoes, for the Undo item: "Strikethrough", or empty.
    QString undoActionName() const;
    // Names the undo step just made.
    void setUndoActionName(const QString &name);

    // Spelling. Without a checker (or with one that has no dictionary) nothing is marked.
    QWSpellChecker *spellChecker() const { return m_spellChecker; }
    void setSpellChecker(QWSpellChecker *checker);
    bool isContinuousSpellCheckingEnabled() const;
    void setContinuousSpellCheckingEnabled(bool enabled);
    bool isAutomaticSpellingCorrectionEnabled() const { return m_autoCorrect; }
    void setAutomaticSpellingCorrectionEnabled(bool enabled) { m_autoCorrect = enabled; }
    // Marks the misspelt words of the whole text now.
    void checkSpelling();
    // The word that ends just before the position corrected, as one undo step; true when it
    // was replaced.
    bool correctWordEndingAt(int position);

    // Asks the delegate for the typing format and puts it in place.
    void updateTypingAttributes();
    const QTextCharFormat &typingAttributes() const { return m_typingAttributes; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    // The character format that decides what a toggle does: the first selected character's,
    // or the typing format.
    QTextCharFormat formatForToggle() const;
    void restartInsertionPointBlink();
    void styleScroller();
    QRect insertionPointRect() const;
    void addSpellingItemsToMenu(QMenu *menu, int index);
    void undoCommandAdded();

    SNTextViewDelegate *m_delegate = nullptr;
    QWSpellChecker *m_spellChecker = nullptr;
    bool m_autoCorrect = false;
    bool m_updatingTypingAttributes = false;
    QTextCharFormat m_typingAttributes;
    QStringList m_undoActionNames; // one per undo step, oldest first
    QString m_pressedLink;
    QPoint m_pressPosition;

    SNLinkHighlighter *m_linkHighlighter;
    QColor m_insertionPointColor = Qt::black;
    QColor m_scrollerColor;
    bool m_scrollerStyled = false;
    QCursor m_linkCursor = QCursor(Qt::PointingHandCursor);
    QBasicTimer m_blinkTimer;
    bool m_caretShown = false;
};
