#include "notewindow/SNTextView.h"

#include "notewindow/SNLinkHighlighter.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleHints>
#include <QTextBlock>
#include <QTextCursor>

SNTextView::SNTextView(QWidget *parent)
    : QTextEdit(parent), m_linkHighlighter(new SNLinkHighlighter(document()))
{
    setAcceptRichText(true);
    setTabChangesFocus(false);
    // The caret is drawn by paintEvent() in its own colour; QTextEdit's would take the text's.
    setCursorWidth(0);
    viewport()->setMouseTracking(true);
    connect(this, &QTextEdit::cursorPositionChanged, this, &SNTextView::restartInsertionPointBlink);
    connect(this, &QTextEdit::selectionChanged, this, &SNTextView::restartInsertionPointBlink);
}

SNTextView::~SNTextView() = default;

void SNTextView::setInsertionPointColor(const QColor &color)
{
    if (m_insertionPointColor == color)
        return;
    m_insertionPointColor = color;
    viewport()->update();
}

void SNTextView::setScrollerColor(const QColor &color)
{
    if (m_scrollerColor == color)
        return;
    m_scrollerColor = color;
    const QString handle = QStringLiteral("rgba(%1, %2, %3, %4)")
                               .arg(color.red())
                               .arg(color.green())
                               .arg(color.blue())
                               .arg(color.alpha());
    verticalScrollBar()->setStyleSheet(QStringLiteral(
        "QScrollBar:vertical { background: transparent; width: 9px; margin: 3px 3px 3px 0; }"
        "QScrollBar::handle:vertical { background: %1; border-radius: 3px; min-height: 24px; }"
        "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; border: none; }"
        "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }")
                                           .arg(handle));
}

QTextCharFormat SNTextView::linkTextAttributes() const
{
    return m_linkHighlighter->linkFormat();
}

void SNTextView::setLinkTextAttributes(const QTextCharFormat &format)
{
    m_linkHighlighter->setLinkFormat(format);
}

QTextCharFormat SNTextView::formatForToggle() const
{
    const QTextCursor cursor = textCursor();
    if (!cursor.hasSelection())
        return currentCharFormat();
    // QTextCursor reports the format of the character before its position.
    QTextCursor first(document());
    first.setPosition(cursor.selectionStart() + 1);
    return first.charFormat();
}

void SNTextView::toggleBold()
{
    const bool bold = formatForToggle().fontWeight() >= QFont::DemiBold;
    QTextCharFormat format;
    format.setFontWeight(bold ? QFont::Normal : QFont::Bold);
    mergeCurrentCharFormat(format);
}

void SNTextView::toggleItalic()
{
    QTextCharFormat format;
    format.setFontItalic(!formatForToggle().fontItalic());
    mergeCurrentCharFormat(format);
}

void SNTextView::toggleUnderline()
{
    const QTextCharFormat current = formatForToggle();
    const bool underlined
        = current.underlineStyle() != QTextCharFormat::NoUnderline || current.fontUnderline();
    QTextCharFormat format;
    format.setUnderlineStyle(
        underlined ? QTextCharFormat::NoUnderline : QTextCharFormat::SingleUnderline);
    mergeCurrentCharFormat(format);
}

void SNTextView::keyPressEvent(QKeyEvent *event)
{
    if (!isReadOnly()) {
        if (event->matches(QKeySequence::Bold)) {
            toggleBold();
            return;
        }
        if (event->matches(QKeySequence::Italic)) {
            toggleItalic();
            return;
        }
        if (event->matches(QKeySequence::Underline)) {
            toggleUnderline();
            return;
        }
    }
    QTextEdit::keyPressEvent(event);
}

QRect SNTextView::insertionPointRect() const
{
    const QRect rect = cursorRect();
    return QRect(rect.left(), rect.top(), 1, rect.height());
}

void SNTextView::paintEvent(QPaintEvent *event)
{
    QTextEdit::paintEvent(event);
    if (!m_caretShown || isReadOnly() || !hasFocus())
        return;
    QPainter painter(viewport());
    painter.fillRect(insertionPointRect(), m_insertionPointColor);
}

void SNTextView::restartInsertionPointBlink()
{
    viewport()->update();
    if (!hasFocus() || isReadOnly()) {
        m_blinkTimer.stop();
        m_caretShown = false;
        return;
    }
    m_caretShown = true;
    const int flashTime = QGuiApplication::styleHints()->cursorFlashTime();
    if (flashTime > 0)
        m_blinkTimer.start(flashTime / 2, this);
    else
        m_blinkTimer.stop();
}

void SNTextView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_blinkTimer.timerId()) {
        QTextEdit::timerEvent(event);
        return;
    }
    m_caretShown = !m_caretShown;
    viewport()->update(insertionPointRect().adjusted(-1, -1, 1, 1));
}

void SNTextView::focusInEvent(QFocusEvent *event)
{
    QTextEdit::focusInEvent(event);
    restartInsertionPointBlink();
}

void SNTextView::focusOutEvent(QFocusEvent *event)
{
    QTextEdit::focusOutEvent(event);
    restartInsertionPointBlink();
}

void SNTextView::mouseMoveEvent(QMouseEvent *event)
{
    QTextEdit::mouseMoveEvent(event);
    const bool overLink = !anchorAt(event->position().toPoint()).isEmpty();
    viewport()->setCursor(overLink ? m_linkCursor : QCursor(Qt::IBeamCursor));
}
