#include "themeview/SNThemeTextStyler.h"

#include "kit/QWAttributedString.h"
#include "kit/QWTextAttributes.h"
#include "themes/SNTheme.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <vector>

namespace {

QTextCharFormat foregroundFormat(const QWColor &color)
{
    QWTextAttributes attributes;
    attributes.setForegroundColor(color);
    return attributes.toCharFormat();
}

bool hasFamily(const QTextCharFormat &format)
{
    return format.hasProperty(QTextFormat::FontFamilies)
        || format.hasProperty(QTextFormat::FontFamily);
}

// The format without what the theme decides; unchanged when there is nothing to take off.
QTextCharFormat neutralFormat(const QTextCharFormat &format, const SNTheme *theme)
{
    QTextCharFormat neutral = format;
    neutral.clearProperty(QTextFormat::FontFamilies);
    neutral.clearProperty(QTextFormat::FontFamily);
    if (theme && SNThemeTextStyler::isThemeTextColor(format, *theme)) {
        neutral.clearForeground();
        neutral.clearProperty(QWTextAttributes::ExactForegroundColorProperty);
    }
    return neutral;
}

struct Piece
{
    int position = 0;
    int length = 0; // 0: the block's own character format
    QTextCharFormat format;
};

// Every stretch of [from, to) whose format `change` alters, with its new format. Collected
// before any is applied, since applying splits and merges the fragments being walked.
template <typename Change>
std::vector<Piece> changedPieces(const QTextDocument &document, int from, int to, Change change)
{
    std::vector<Piece> pieces;
    for (QTextBlock block = document.findBlock(from); block.isValid() && block.position() < to;
         block = block.next()) {
        const QTextCharFormat blockFormat = change(block.charFormat());
        if (blockFormat != block.charFormat())
            pieces.push_back({ block.position(), 0, blockFormat });
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const int start = std::max(fragment.position(), from);
            const int end = std::min(fragment.position() + fragment.length(), to);
            if (!fragment.isValid() || start >= end)
                continue;
            const QTextCharFormat changed = change(fragment.charFormat());
            if (changed != fragment.charFormat())
                pieces.push_back({ start, end - start, changed });
        }
    }
    return pieces;
}

void applyPieces(QTextCursor &cursor, const std::vector<Piece> &pieces)
{
    for (const Piece &piece : pieces) {
        cursor.setPosition(piece.position);
        if (piece.length == 0) {
            cursor.setBlockCharFormat(piece.format);
            continue;
        }
        cursor.setPosition(piece.position + piece.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(piece.format);
    }
}

} // namespace

bool SNThemeTextStyler::isThemeTextColor(const QTextCharFormat &format, const SNTheme &theme)
{
    if (!format.hasProperty(QTextFormat::ForegroundBrush))
        return false;
    const std::optional<QWColor> color = QWTextAttributes::fromCharFormat(format).foregroundColor();
    // Compared as drawn: text typed in Qt carries the colour only as Qt keeps it.
    return color && color->toQColor() == theme.defaultFontColor().toQColor();
}

void SNThemeTextStyler::neutralizeDocument(QTextDocument &document, const SNTheme &theme)
{
    const std::vector<Piece> pieces = changedPieces(document, 0, document.characterCount(),
        [&theme](const QTextCharFormat &format) { return neutralFormat(format, &theme); });
    if (pieces.empty())
        return;
    // Turning undo off drops the history, which a freshly loaded note does not have yet.
    const bool undoRedoEnabled = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    applyPieces(cursor, pieces);
    cursor.endEditBlock();
    document.setUndoRedoEnabled(undoRedoEnabled);
}

void SNThemeTextStyler::removeFamiliesInSelection(QTextCursor &cursor)
{
    QTextDocument *document = cursor.document();
    if (!document || !cursor.hasSelection())
        return;
    const std::vector<Piece> pieces = changedPieces(*document, cursor.selectionStart(),
        cursor.selectionEnd(), [](const QTextCharFormat &format) {
            return hasFamily(format) ? neutralFormat(format, nullptr) : format;
        });
    if (pieces.empty())
        return;
    QTextCursor editor(document);
    // One undo step with the edit that brought the text in.
    editor.joinPreviousEditBlock();
    applyPieces(editor, pieces);
    editor.endEditBlock();
}

QWAttributedString SNThemeTextStyler::storedString(
    const QTextDocument &document, const SNTheme &theme)
{
    return QWAttributedString::fromTextDocument(document, themeFormat(theme));
}

QTextCharFormat SNThemeTextStyler::fontFormat(const QWFont &font)
{
    QWTextAttributes attributes;
    attributes.setFont(font);
    QTextCharFormat format = attributes.toCharFormat();
    format.setFontFamilies(font.toQFont().families());
    return format;
}

QTextCharFormat SNThemeTextStyler::typingFormat(const SNTheme &theme)
{
    QTextCharFormat format = fontFormat(theme.defaultFont());
    format.clearProperty(QTextFormat::FontFamilies);
    format.clearProperty(QTextFormat::FontFamily);
    return format;
}

QTextCharFormat SNThemeTextStyler::themeFormat(const SNTheme &theme)
{
    QTextCharFormat format = fontFormat(theme.defaultFont());
    format.merge(foregroundFormat(theme.defaultFontColor()));
    return format;
}

QTextCharFormat SNThemeTextStyler::linkFormat(const SNTheme &theme)
{
    QTextCharFormat format;
    format.setForeground(theme.linkColor().toQColor());
    format.setFont(theme.defaultFont().toQFont());
    format.setUnderlineStyle(QWTextAttributes::qtUnderlineStyle(linkUnderlineStyle));
    return format;
}
