#include "notewindow/SNTextView.h"

#include "kit/QWSpellChecker.h"
#include "kit/QWTextAttributes.h"
#include "notewindow/SNTextViewDelegate.h"
#include "tags/SNHashtagScanner.h"
#include "themeview/SNLinkHighlighter.h"
#include "themeview/SNThemeTextStyler.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStyleHints>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QUrl>
#include <QUuid>

namespace {

// How many of the dictionary's suggestions the menu offers.
constexpr int menuGuessLimit = 5;

// A typed character after which the word before it counts as finished.
bool endsWord(const QString &typed)
{
    if (typed.size() != 1)
        return false;
    const QChar character = typed.front();
    return character.isSpace()
        || (character.isPunct() && character != QLatin1Char('\'') && character != QLatin1Char('#')
            && character != QLatin1Char('-') && character != QLatin1Char('_'));
}

} // namespace

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
    connect(this, &QTextEdit::cursorPositionChanged, this, &SNTextView::updateTypingAttributes);
    connect(this, &QTextEdit::textChanged, this, &SNTextView::updateTypingAttributes);
    connect(document(), &QTextDocument::undoCommandAdded, this, &SNTextView::undoCommandAdded);
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int, int maximum) {
        if (maximum > 0 && !m_scrollerStyled)
            styleScroller();
    });
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
    if (m_scrollerStyled)
        styleScroller();
}

void SNTextView::styleScroller()
{
    // A style sheet costs each note about as much as its text does at start-up, and most notes
    // never scroll: the scroller gets it when it first has something to scroll.
    m_scrollerStyled = true;
    const QString handle = QStringLiteral("rgba(%1, %2, %3, %4)")
                               .arg(m_scrollerColor.red())
                               .arg(m_scrollerColor.green())
                               .arg(m_scrollerColor.blue())
                               .arg(m_scrollerColor.alpha());
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
    // What is typed takes the typing format of this moment, whatever moved the caret here.
    if (!isReadOnly() && !event->text().isEmpty())
        updateTypingAttributes();
    if (!isReadOnly() && m_autoCorrect && endsWord(event->text()) && !textCursor().hasSelection()) {
        QTextEdit::keyPressEvent(event);
        if (event->isAccepted()) {
            const int typedAt = textCursor().position() - 1;
            correctWordEndingAt(typedAt);
        }
        return;
    }
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
    const bool overLink = !linkAtPosition(event->position().toPoint()).isEmpty();
    viewport()->setCursor(overLink ? m_linkCursor : QCursor(Qt::IBeamCursor));
}

void SNTextView::mousePressEvent(QMouseEvent *event)
{
    m_pressedLink = event->button() == Qt::LeftButton ? linkAtPosition(event->position().toPoint())
                                                      : QString();
    m_pressPosition = event->position().toPoint();
    QTextEdit::mousePressEvent(event);
}

void SNTextView::mouseReleaseEvent(QMouseEvent *event)
{
    QTextEdit::mouseReleaseEvent(event);
    const QString link = std::exchange(m_pressedLink, QString());
    if (link.isEmpty() || event->button() != Qt::LeftButton
        || (event->position().toPoint() - m_pressPosition).manhattanLength()
            >= QGuiApplication::styleHints()->startDragDistance()
        || linkAtPosition(event->position().toPoint()) != link)
        return;
    const int index = characterIndexForPosition(event->position().toPoint());
    if (m_delegate && m_delegate->textViewClickedOnLinkAtIndex(this, link, index))
        return;
    const QUrl url(link);
    if (url.isValid() && !url.scheme().isEmpty())
        QDesktopServices::openUrl(url);
}

QString SNTextView::linkAtPosition(const QPoint &position) const
{
    const QString anchor = anchorAt(position);
    if (!anchor.isEmpty())
        return anchor;
    const QPointF documentPoint
        = QPointF(position) + QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const int index = document()->documentLayout()->hitTest(documentPoint, Qt::ExactHit);
    if (index < 0)
        return QString();
    const std::optional<SNHashtagScanner::Occurrence> tag
        = SNHashtagScanner::occurrenceAtIndex(*document(), index);
    return tag ? tag->name : QString();
}

int SNTextView::characterIndexForPosition(const QPoint &position) const
{
    const QPointF documentPoint
        = QPointF(position) + QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const int index = document()->documentLayout()->hitTest(documentPoint, Qt::ExactHit);
    if (index >= 0)
        return index;
    // Beside the text rather than on a character: the nearest place between characters.
    return cursorForPosition(position).position();
}

void SNTextView::contextMenuEvent(QContextMenuEvent *event)
{
    std::unique_ptr<QMenu> owner;
    QMenu *menu = menuForPosition(event->pos(), owner);
    if (menu)
        menu->exec(event->globalPos());
}

QMenu *SNTextView::menuForPosition(const QPoint &position, std::unique_ptr<QMenu> &owner)
{
    owner.reset(createStandardContextMenu(position));
    QMenu *proposed = owner.get();
    const int index = characterIndexForPosition(position);
    const QString undoName = undoActionName();
    if (!undoName.isEmpty()) {
        const QList<QAction *> items = proposed->actions();
        for (QAction *item : items) {
            if (item->objectName() == QLatin1String("edit-undo"))
                item->setText(tr("&Undo %1").arg(undoName));
        }
    }
    addSpellingItemsToMenu(proposed, index);
    return m_delegate ? m_delegate->textViewMenuForEventAtIndex(this, proposed, index) : proposed;
}

void SNTextView::addSpellingItemsToMenu(QMenu *menu, int index)
{
    if (!m_spellChecker || !isContinuousSpellCheckingEnabled() || isReadOnly())
        return;
    const QTextBlock block = document()->findBlock(index);
    if (!block.isValid())
        return;
    const QString text = block.text();
    const int offset = index - block.position();
    const QList<QWSpellChecker::Range> ranges = m_spellChecker->misspelledRangesInString(text);
    for (const QWSpellChecker::Range &range : ranges) {
        if (offset < range.start || offset >= range.start + range.length)
            continue;
        const QString word = text.mid(range.start, range.length);
        const int start = block.position() + int(range.start);
        const int end = start + int(range.length);
        QAction *first = menu->actions().value(0);
        const QStringList guesses = m_spellChecker->guessesForWord(word).mid(0, menuGuessLimit);
        for (const QString &guess : guesses) {
            auto *item = new QAction(guess, menu);
            QFont font = item->font();
            font.setBold(true);
            item->setFont(font);
            connect(item, &QAction::triggered, this, [this, start, end, guess] {
                QTextCursor cursor(document());
                cursor.setPosition(start);
                cursor.setPosition(end, QTextCursor::KeepAnchor);
                cursor.insertText(guess);
            });
            menu->insertAction(first, item);
        }
        if (guesses.isEmpty()) {
            auto *none = new QAction(tr("No Guesses Found"), menu);
            none->setEnabled(false);
            menu->insertAction(first, none);
        }
        menu->insertSeparator(first);
        auto *ignore = new QAction(tr("Ignore Spelling"), menu);
        connect(ignore, &QAction::triggered, this, [this, word] {
            m_spellChecker->ignoreWord(word);
            checkSpelling();
        });
        auto *learn = new QAction(tr("Learn Spelling"), menu);
        connect(learn, &QAction::triggered, this, [this, word] {
            m_spellChecker->learnWord(word);
            checkSpelling();
        });
        menu->insertActions(first, { ignore, learn });
        menu->insertSeparator(first);
        return;
    }
}

void SNTextView::pasteAsPlainText()
{
    if (isReadOnly())
        return;
    const QString text = QGuiApplication::clipboard()->text();
    if (!text.isEmpty())
        insertPlainText(text);
}

bool SNTextView::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasImage() || QTextEdit::canInsertFromMimeData(source);
}

void SNTextView::insertFromMimeData(const QMimeData *source)
{
    if (!source->hasImage() || source->hasHtml() || source->hasText()) {
        const int start = textCursor().selectionStart();
        QTextEdit::insertFromMimeData(source);
        // A note is drawn in its theme's family, whatever program the text came from.
        QTextCursor inserted = textCursor();
        inserted.setPosition(start, QTextCursor::KeepAnchor);
        SNThemeTextStyler::removeFamiliesInSelection(inserted);
        return;
    }
    const QImage image = source->imageData().value<QImage>();
    if (image.isNull())
        return;
    // Held by the document under a name of its own; the note stores the image's bytes.
    const QString name = QStringLiteral("vellumo-attachment:pasted-%1")
                             .arg(QUuid::createUuid().toString(QUuid::WithoutBraces));
    document()->addResource(QTextDocument::ImageResource, QUrl(name), image);
    QTextImageFormat format;
    // Text typed after the image continues in the font and colour around it.
    format.merge(textCursor().charFormat());
    format.setName(name);
    textCursor().insertImage(format);
}

QString SNTextView::undoActionName() const
{
    return m_undoActionNames.value(document()->availableUndoSteps() - 1);
}

void SNTextView::setUndoActionName(const QString &name)
{
    const int steps = document()->availableUndoSteps();
    if (steps <= 0)
        return;
    m_undoActionNames.resize(steps);
    m_undoActionNames[steps - 1] = name;
}

void SNTextView::undoCommandAdded()
{
    // A new step drops the steps that could have been redone.
    const int steps = document()->availableUndoSteps();
    m_undoActionNames.resize(std::max(steps, 0));
    if (steps > 0)
        m_undoActionNames[steps - 1].clear();
}

// Re-marking the text changes how it is drawn, not what it is; QTextEdit would report it as a
// change of the text.

void SNTextView::setSpellChecker(QWSpellChecker *checker)
{
    const QSignalBlocker blocker(this);
    m_spellChecker = checker;
    m_linkHighlighter->setSpellChecker(checker);
}

bool SNTextView::isContinuousSpellCheckingEnabled() const
{
    return m_linkHighlighter->checksSpelling();
}

void SNTextView::setContinuousSpellCheckingEnabled(bool enabled)
{
    const QSignalBlocker blocker(this);
    m_linkHighlighter->setChecksSpelling(enabled);
}

void SNTextView::checkSpelling()
{
    const QSignalBlocker blocker(this);
    m_linkHighlighter->rehighlight();
}

bool SNTextView::correctWordEndingAt(int position)
{
    if (!m_spellChecker || position <= 0)
        return false;
    const QTextBlock block = document()->findBlock(position - 1);
    const QString text = block.text();
    const int end = position - block.position();
    if (end <= 0 || end > text.size())
        return false;
    int start = end;
    while (start > 0 && QWSpellChecker::isWordCharacter(text.at(start - 1)))
        --start;
    // Trailing apostrophes close a quotation; they are not part of the word.
    int wordEnd = end;
    while (wordEnd > start && !text.at(wordEnd - 1).isLetterOrNumber())
        --wordEnd;
    while (start < wordEnd && !text.at(start).isLetterOrNumber())
        ++start;
    if (start >= wordEnd)
        return false;
    // A hashtag is a name the user chose, and a link keeps its own text; so does a piece of an
    // address, a path or a file name ("www.exampel.com", "~/notse").
    static const QString joiners = QStringLiteral("#/.@:\\~");
    if (start > 0 && joiners.contains(text.at(start - 1)))
        return false;
    QTextCursor cursor(document());
    cursor.setPosition(block.position() + start);
    cursor.setPosition(block.position() + wordEnd, QTextCursor::KeepAnchor);
    const QTextCharFormat format = cursor.charFormat();
    if (format.isAnchor() || format.hasProperty(QWTextAttributes::TagNameProperty))
        return false;
    const QStringView word = QStringView(text).sliced(start, wordEnd - start);
    const std::optional<QString> correction = m_spellChecker->correctionForWord(word);
    // A change of case only ("www" to "WWW") is a matter of style, not of spelling.
    if (!correction || correction->compare(word, Qt::CaseInsensitive) == 0)
        return false;
    // A step of its own, so that one undo brings the word back as it was typed.
    cursor.beginEditBlock();
    cursor.insertText(*correction, format);
    cursor.endEditBlock();
    setUndoActionName(tr("Correct Spelling"));
    return true;
}

void SNTextView::updateTypingAttributes()
{
    if (m_updatingTypingAttributes || textCursor().hasSelection())
        return;
    m_updatingTypingAttributes = true;
    QTextCharFormat proposed = currentCharFormat();
    // Links and tags do not run on into what is typed after them.
    if (proposed.isAnchor() || proposed.hasProperty(QWTextAttributes::TagNameProperty)) {
        proposed.setAnchor(false);
        proposed.clearProperty(QTextFormat::AnchorHref);
        proposed.clearProperty(QWTextAttributes::TagNameProperty);
    }
    const QTextCharFormat wanted = m_delegate
        ? m_delegate->textViewShouldChangeTypingAttributesToAttributes(
            this, m_typingAttributes, proposed)
        : proposed;
    if (wanted != currentCharFormat())
        setCurrentCharFormat(wanted);
    m_typingAttributes = wanted;
    m_updatingTypingAttributes = false;
}
