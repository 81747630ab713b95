#include "notewindow/SNNoteTextFormatter.h"

#include "kit/QWTextAttributes.h"
#include "notes/SNStickyNote.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNWindowLevel.h"
#include "themes/SNTheme.h"
#include "themeview/SNTextColorPalette.h"
#include "themeview/SNThemeTextStyler.h"

#include <QClipboard>
#include <QColorDialog>
#include <QGuiApplication>
#include <QMenu>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

SNNoteTextFormatter::SNNoteTextFormatter(
    SNTextView *textView, const std::shared_ptr<SNStickyNote> &note, QObject *parent)
    : QObject(parent), m_textView(textView), m_note(note)
{ }

SNNoteTextFormatter::~SNNoteTextFormatter() = default;

QString SNNoteTextFormatter::strikethroughActionName()
{
    return tr("Strikethrough");
}

QString SNNoteTextFormatter::changeColorActionName()
{
    return tr("Change Color");
}

bool SNNoteTextFormatter::formattingItemState(const QAction *item)
{
    // Checkable items have flipped by the time they report a trigger; the state they showed
    // is kept beside it.
    return item && item->property("qw_state").toBool();
}

SNNoteTextFormatter::TextRange SNNoteTextFormatter::selectedRange() const
{
    const QTextCursor cursor = m_textView->textCursor();
    return { cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart() };
}

QTextCharFormat SNNoteTextFormatter::formatAtIndex(qsizetype index) const
{
    const QTextDocument *document = m_textView->document();
    const QTextBlock block = document->findBlock(int(index));
    for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (fragment.isValid() && fragment.position() <= index
            && index < fragment.position() + fragment.length())
            return fragment.charFormat();
    }
    return block.charFormat();
}

void SNNoteTextFormatter::editFormatInRange(
    TextRange range, const std::function<void(QTextCharFormat &)> &edit)
{
    SNTextView *text = m_textView;
    if (range.length <= 0) {
        QTextCharFormat format = text->currentCharFormat();
        edit(format);
        text->setCurrentCharFormat(format);
        return;
    }
    QTextDocument *document = text->document();
    const qsizetype end = range.location + range.length;
    QTextCursor batch(document);
    batch.beginEditBlock();
    for (QTextBlock block = document->findBlock(int(range.location));
         block.isValid() && block.position() < end; block = block.next()) {
        // Collected first: each change may split or merge the fragments being walked.
        QList<std::pair<int, int>> pieces;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const int from = std::max<int>(fragment.position(), int(range.location));
            const int to = std::min<int>(fragment.position() + fragment.length(), int(end));
            if (fragment.isValid() && from < to)
                pieces.append({ from, to });
        }
        for (const auto &[from, to] : std::as_const(pieces)) {
            QTextCursor piece(document);
            piece.setPosition(from);
            piece.setPosition(to, QTextCursor::KeepAnchor);
            QTextCharFormat format = piece.charFormat();
            edit(format);
            piece.setCharFormat(format);
        }
    }
    batch.endEditBlock();
}

void SNNoteTextFormatter::toggleBold(QAction *sender)
{
    SNTextView *text = m_textView;
    text->setFocus();
    if (!sender) {
        text->toggleBold();
        return;
    }
    QTextCharFormat format;
    format.setFontWeight(formattingItemState(sender) ? QFont::Normal : QFont::Bold);
    text->mergeCurrentCharFormat(format);
}

void SNNoteTextFormatter::toggleItalic(QAction *sender)
{
    SNTextView *text = m_textView;
    text->setFocus();
    if (!sender) {
        text->toggleItalic();
        return;
    }
    QTextCharFormat format;
    format.setFontItalic(!formattingItemState(sender));
    text->mergeCurrentCharFormat(format);
}

void SNNoteTextFormatter::toggleUnderline(QAction *)
{
    m_textView->setFocus();
    m_textView->toggleUnderline();
}

void SNNoteTextFormatter::toggleStrikethrough(QObject *sender)
{
    const TextRange range = selectedRange();
    bool struckThrough = false;
    if (const auto *item = qobject_cast<const QAction *>(sender)) {
        struckThrough = formattingItemState(item);
    } else {
        const QTextCharFormat format
            = range.length > 0 ? formatAtIndex(range.location) : m_textView->currentCharFormat();
        struckThrough = format.fontStrikeOut();
    }
    strikethroughWithRange(struckThrough, range);
}

void SNNoteTextFormatter::strikethroughWithRange(bool struckThrough, TextRange range)
{
    if (range.location == notFound)
        return;
    editFormatInRange(range, [struckThrough](QTextCharFormat &format) {
        if (struckThrough) {
            format.clearProperty(QTextFormat::FontStrikeOut);
            format.clearProperty(QWTextAttributes::ExactStrikethroughStyleProperty);
            format.clearProperty(QWTextAttributes::StrokeColorProperty);
        } else {
            format.setFontStrikeOut(true);
            format.setProperty(QWTextAttributes::ExactStrikethroughStyleProperty,
                QWTextAttributes::LineStyleSingle);
        }
    });
    if (range.length > 0)
        m_textView->setUndoActionName(strikethroughActionName());
    m_textView->viewport()->update();
}

void SNNoteTextFormatter::changeColorFromMenuItem(QAction *sender)
{
    if (!sender)
        return;
    const QVariant represented = sender->data();
    const std::optional<QWColor> color = represented.canConvert<QColor>()
        ? std::optional<QWColor>(QWColor::fromQColor(represented.value<QColor>()))
        : std::nullopt;
    changeColorWithRange(color, selectedRange());
}

void SNNoteTextFormatter::changeColorWithRange(const std::optional<QWColor> &color, TextRange range)
{
    // No colour is no change: undoing a change over text without a colour of its own does
    // nothing either.
    if (!color || range.location == notFound)
        return;
    const QBrush brush(color->toQColor());
    // The theme's own text colour is no colour of the text's: it follows the next theme.
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    const bool themeColor = theme && brush.color() == theme->defaultFontColor().toQColor();
    editFormatInRange(range, [&brush, themeColor](QTextCharFormat &format) {
        format.clearProperty(QWTextAttributes::ExactForegroundColorProperty);
        if (themeColor)
            format.clearForeground();
        else
            format.setForeground(brush);
    });
    if (range.length > 0)
        m_textView->setUndoActionName(changeColorActionName());
    m_textView->viewport()->update();
}

void SNNoteTextFormatter::orderFrontColorPanel(QObject *)
{
    const TextRange range = selectedRange();
    if (!m_colorPanel) {
        m_colorPanel = new QColorDialog(m_textView->window());
        m_colorPanel->setWindowTitle(tr("Colors"));
        m_colorPanel->setOption(QColorDialog::DontUseNativeDialog);
        m_colorPanel->setAttribute(Qt::WA_DeleteOnClose);
        SNWindowLevel::applyDialogLevel(m_colorPanel, m_note ? m_note->pinState() : 0);
    }
    m_colorPanel->disconnect(this);
    const QTextCharFormat current
        = range.length > 0 ? formatAtIndex(range.location) : m_textView->currentCharFormat();
    if (current.hasProperty(QTextFormat::ForegroundBrush))
        m_colorPanel->setCurrentColor(current.foreground().color());
    connect(m_colorPanel, &QColorDialog::colorSelected, this, [this, range](const QColor &color) {
        const qsizetype length = m_textView->document()->characterCount() - 1;
        // The text may have shrunk while the dialog was open.
        TextRange within = range;
        within.location = std::min(within.location, length);
        within.length = std::min(within.length, length - within.location);
        changeColorWithRange(QWColor::fromQColor(color), within);
    });
    m_colorPanel->open();
    m_colorPanel->raise();
}

QColorDialog *SNNoteTextFormatter::colorPanel() const
{
    return m_colorPanel;
}

void SNNoteTextFormatter::pastePlainText(QObject *)
{
    m_textView->pasteAsPlainText();
}

// MARK: - The right-click menu

void SNNoteTextFormatter::addPasteAsPlainTextItemToMenuWithAttributes(
    QMenu *menu, const QTextCharFormat &)
{
    const QList<QAction *> items = menu->actions();
    for (qsizetype i = 0; i < items.size(); ++i) {
        QString title = items[i]->text();
        title = title.left(title.indexOf(QLatin1Char('\t')));
        title.remove(QLatin1Char('&'));
        if (title != QLatin1String("Paste")
            && items[i]->objectName() != QLatin1String("edit-paste"))
            continue;
        auto *item = new QAction(tr("Paste Plain Text"), menu);
        item->setEnabled(
            !m_textView->isReadOnly() && !QGuiApplication::clipboard()->text().isEmpty());
        connect(item, &QAction::triggered, this, [this, item] { pastePlainText(item); });
        menu->insertAction(items.value(i + 1), item);
        return;
    }
}

void SNNoteTextFormatter::addColorOptionsToMenuWithAttributes(QMenu *menu, const QTextCharFormat &)
{
    auto *colors = new QMenu(tr("Colors"), menu);
    const QList<QWColor> &palette = SNTextColorPalette::colorArray();
    const QStringList &names = SNTextColorPalette::colorNames();
    const qreal ratio = m_textView->devicePixelRatioF();
    for (qsizetype i = 0; i < palette.size(); ++i) {
        const QColor color = palette[i].toQColor();
        QAction *item = colors->addAction(
            QIcon(SNTextColorPalette::colorImageWithColor(color, ratio)), names.value(i));
        item->setData(color);
        connect(item, &QAction::triggered, this, [this, item] { changeColorFromMenuItem(item); });
    }
    colors->addSeparator();
    QAction *show = colors->addAction(tr("Show Colors"));
    show->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    connect(show, &QAction::triggered, this, [this, show] { orderFrontColorPanel(show); });
    menu->addMenu(colors);
    menu->addSeparator();
}

void SNNoteTextFormatter::addFormattingOptionsToMenuWithAttributes(
    QMenu *menu, const QTextCharFormat &attributes)
{
    const bool bold = attributes.hasProperty(QTextFormat::FontWeight)
        && attributes.fontWeight() >= QFont::DemiBold;
    const bool underlined
        = attributes.underlineStyle() != QTextCharFormat::NoUnderline || attributes.fontUnderline();
    struct Item
    {
        QString title;
        QKeySequence key;
        bool state;
        std::function<void(QAction *)> action;
    };
    const Item items[] = {
        { tr("Bold"), QKeySequence(Qt::CTRL | Qt::Key_B), bold,
            [this](QAction *item) { toggleBold(item); } },
        { tr("Italic"), QKeySequence(Qt::CTRL | Qt::Key_I), attributes.fontItalic(),
            [this](QAction *item) { toggleItalic(item); } },
        { tr("Underline"), QKeySequence(Qt::CTRL | Qt::Key_U), underlined,
            [this](QAction *item) { toggleUnderline(item); } },
        { tr("Strikethrough"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
            attributes.fontStrikeOut(), [this](QAction *item) { toggleStrikethrough(item); } },
    };
    for (const Item &entry : items) {
        QAction *item = menu->addAction(entry.title);
        item->setShortcut(entry.key);
        item->setCheckable(true);
        item->setChecked(entry.state);
        item->setProperty("qw_state", entry.state);
        connect(item, &QAction::triggered, this, [item, action = entry.action] { action(item); });
    }
    menu->addSeparator();
}

void SNNoteTextFormatter::addMakeListItemToMenuWithAttributesSelectedRanges(
    QMenu *, const QTextCharFormat &, TextRange)
{
    // Lists are not made from this menu.
}

QTextCharFormat SNNoteTextFormatter::textViewShouldChangeTypingAttributesToAttributes(
    SNTextView *view, const QTextCharFormat &oldAttributes,
    const QTextCharFormat &newAttributes) const
{
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    if (!theme)
        return newAttributes;
    // An emptied note starts again in its theme, whatever the deleted text was in.
    if (view->document()->isEmpty())
        return SNThemeTextStyler::typingFormat(*theme);
    if (!newAttributes.isImageFormat())
        return newAttributes;
    // After an image, typing goes on in the font and colour used before it.
    QTextCharFormat attributes = newAttributes;
    for (const int property :
        { int(QTextFormat::ObjectType), int(QTextFormat::ImageName), int(QTextFormat::ImageWidth),
            int(QTextFormat::ImageHeight), int(QWTextAttributes::AttachmentFileNameProperty) })
        attributes.clearProperty(property);
    const QTextCharFormat themeFormat = SNThemeTextStyler::typingFormat(*theme);
    const QTextCharFormat &fontSource
        = oldAttributes.hasProperty(QTextFormat::FontPointSize) ? oldAttributes : themeFormat;
    for (const int property : { int(QTextFormat::FontFamilies), int(QTextFormat::FontPointSize),
             int(QTextFormat::FontWeight), int(QTextFormat::FontItalic) }) {
        if (fontSource.hasProperty(property))
            attributes.setProperty(property, fontSource.property(property));
        else
            attributes.clearProperty(property);
    }
    attributes.clearProperty(QWTextAttributes::ExactForegroundColorProperty);
    if (oldAttributes.hasProperty(QTextFormat::ForegroundBrush))
        attributes.setForeground(oldAttributes.foreground());
    else
        attributes.clearForeground();
    return attributes;
}
