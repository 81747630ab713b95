#include "notewindow/SNThemeTextStyler.h"

#include "kit/QWTextAttributes.h"
#include "themes/SNTheme.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <vector>

namespace {

bool hasFont(const QTextCharFormat &format)
{
    return format.hasProperty(QTextFormat::FontFamilies)
        || format.hasProperty(QTextFormat::FontFamily)
        || format.hasProperty(QTextFormat::FontPointSize)
        || format.hasProperty(QTextFormat::FontWeight)
        || format.hasProperty(QTextFormat::FontItalic);
}

QTextCharFormat foregroundFormat(const QWColor &color)
{
    QWTextAttributes attributes;
    attributes.setForegroundColor(color);
    return attributes.toCharFormat();
}

// The properties of the format that must change for the text to be in the theme.
QTextCharFormat themeChange(
    const QTextCharFormat &format, const SNTheme &theme, const SNTheme *previousTheme)
{
    QTextCharFormat change;
    if (hasFont(format)) {
        const bool bold
            = format.hasProperty(QTextFormat::FontWeight) && format.fontWeight() >= QFont::DemiBold;
        QWFont font = theme.defaultFont().withBold(bold).withItalic(format.fontItalic());
        if (format.hasProperty(QTextFormat::FontPointSize) && format.fontPointSize() > 0.0)
            font = font.withPointSize(format.fontPointSize());
        QTextCharFormat wanted = SNThemeTextStyler::fontFormat(font);
        // A run that was not bold keeps whatever weight property it had.
        for (const int property : { int(QTextFormat::FontFamilies), int(QTextFormat::FontPointSize),
                 int(QTextFormat::FontWeight) }) {
            if (wanted.hasProperty(property)
                && format.property(property) != wanted.property(property))
                change.setProperty(property, wanted.property(property));
        }
    }
    if (previousTheme && format.hasProperty(QTextFormat::ForegroundBrush)) {
        const std::optional<QWColor> color
            = QWTextAttributes::fromCharFormat(format).foregroundColor();
        const QColor oldDefault = previousTheme->defaultFontColor().toQColor();
        const QColor newDefault = theme.defaultFontColor().toQColor();
        // Compared as drawn: text typed here carries the colour only as Qt keeps it.
        if (color && color->toQColor() == oldDefault && oldDefault != newDefault)
            change.merge(foregroundFormat(theme.defaultFontColor()));
    }
    return change;
}

struct Edit
{
    int position = 0;
    int length = 0; // 0: the block's own character format
    QTextCharFormat change;
};

} // namespace

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

bool SNThemeTextStyler::restyleDocument(
    QTextDocument &document, const SNTheme &theme, const SNTheme *previousTheme)
{
    std::vector<Edit> edits;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextCharFormat blockChange = themeChange(block.charFormat(), theme, previousTheme);
        if (!blockChange.properties().isEmpty())
            edits.push_back({ block.position(), 0, blockChange });
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (!fragment.isValid())
                continue;
            const QTextCharFormat change = themeChange(fragment.charFormat(), theme, previousTheme);
            if (!change.properties().isEmpty())
                edits.push_back({ fragment.position(), fragment.length(), change });
        }
    }
    if (edits.empty())
        return false;

    const bool undoRedoEnabled = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    for (const Edit &edit : edits) {
        cursor.setPosition(edit.position);
        if (edit.length == 0) {
            cursor.mergeBlockCharFormat(edit.change);
            continue;
        }
        cursor.setPosition(edit.position + edit.length, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(edit.change);
    }
    cursor.endEditBlock();
    document.setUndoRedoEnabled(undoRedoEnabled);
    return true;
}
