#include "kit/rtf/QWRtfCharacterFormat.h"

#include "kit/rtf/QWRtfColorTable.h"
#include "kit/rtf/QWRtfFontTable.h"
#include "kit/rtf/QWRtfReader.h"

#include <algorithm>

bool QWRtfCharacterFormat::apply(const QWRtfKeyword &keyword, const QWRtfTokenizer::Token &token)
{
    using Action = QWRtfKeyword::Action;
    // "\b", "\b1" switch on, "\b0" off.
    const bool on = !token.hasParameter || token.parameter != 0;
    switch (keyword.action) {
    case Action::Font:
        if (token.hasParameter)
            font = token.parameter;
        break;
    case Action::Plain:
        *this = QWRtfCharacterFormat();
        break;
    case Action::Bold:
        bold = on;
        break;
    case Action::Italic:
        italic = on;
        break;
    case Action::FontSize:
        if (!token.hasParameter)
            halfPoints = 24;
        else if (token.parameter > 0)
            halfPoints = std::min(token.parameter, QWRtfReader::maximumHalfPoints);
        break;
    case Action::Underline:
        underline = on ? keyword.value : int(QWTextAttributes::LineStyleNone);
        break;
    case Action::Strikethrough:
        strikethrough = on ? keyword.value : int(QWTextAttributes::LineStyleNone);
        break;
    case Action::ForegroundColor:
        color = token.hasParameter ? token.parameter : -1;
        break;
    case Action::Hidden:
        hidden = on;
        break;
    default:
        return false;
    }
    return true;
}

QWTextAttributes QWRtfCharacterFormat::attributes(
    const QWRtfFontTable &fonts, const QWRtfColorTable &colors) const
{
    QWTextAttributes attributes;
    if (const QWRtfFontTable::Font *entry = fonts.font(font))
        attributes.setFontFamily(entry->name);
    if (halfPoints > 0)
        attributes.setFontSize(halfPoints / 2.0);
    attributes.setBold(bold);
    attributes.setItalic(italic);
    attributes.setUnderlineStyle(underline);
    attributes.setStrikethroughStyle(strikethrough);
    if (colors.contains(color))
        attributes.setForegroundColor(colors.at(color));
    return attributes;
}
