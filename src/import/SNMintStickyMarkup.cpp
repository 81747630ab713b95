#include "import/SNMintStickyMarkup.h"

#include "import/SNImportTextRanges.h"

#include <QHash>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double defaultFontSize = 14.0;

// Sticky's tag table in its order: where sizes overlap, the later one wins, as in GTK.
enum Tag { Bold, Italic, Monospace, Underline, Strikethrough, Link, FirstSize, TagCount = 10 };
constexpr std::array<QLatin1StringView, TagCount> tagNames { "bold"_L1, "italic"_L1, "monospace"_L1,
    "underline"_L1, "strikethrough"_L1, "link"_L1, "header"_L1, "small"_L1, "large"_L1,
    "larger"_L1 };
constexpr std::array<double, TagCount> scales { 0, 0, 0, 0, 0, 0, 1.5, 1.0 / 1.2, 1.2, 1.44 };

using F = SNImportTextRanges::Format;
constexpr std::array<F, FirstSize> formats { F::Bold, F::Italic, F::Monospace, F::Underline,
    F::Strikethrough, F::Link };

int tagIndex(QStringView name)
{
    const auto it = std::find(tagNames.begin(), tagNames.end(), name);
    return it == tagNames.end() ? -1 : int(it - tagNames.begin());
}

} // namespace

QWAttributedString SNMintStickyMarkup::parse(const QString &markup)
{
    QString text;
    SNImportTextRanges ranges;
    QHash<QString, qsizetype> openTags;
    // Knowing where the last ":" is spares a search to the end for every unfinished "#tag:".
    const qsizetype lastColon = markup.lastIndexOf(u':');
    qsizetype at = 0;
    while (at < markup.size()) {
        const qsizetype mark = markup.indexOf(u'#', at);
        if (mark < 0) {
            text += QStringView(markup).sliced(at);
            break;
        }
        text += QStringView(markup).sliced(at, mark - at);
        const QStringView rest = QStringView(markup).sliced(mark);
        if (rest.startsWith(u"##")) {
            text += u'#';
            at = mark + 2;
        } else if (rest.startsWith(u"#check") && rest.size() > 7 && rest[7].isDigit()
            && rest[7].unicode() < 128) {
            text += rest[7] == u'0' ? u"\u2610"_s : u"\u2611"_s;
            // Sticky draws a margin after its checkbox; the text gets the space instead.
            if (rest.size() <= 8 || rest[8] != u' ')
                text += u' ';
            at = mark + 8;
        } else if (rest.startsWith(u"#bullet")) {
            text += u"\u2022"_s;
            if (rest.size() <= 8 || rest[8] != u' ')
                text += u' ';
            at = mark + 8;
        } else if (rest.startsWith(u"#tag") && mark + 6 <= lastColon) {
            // As Sticky reads it: the name runs from after "#tag:" to the next ":" after that.
            const qsizetype colon = markup.indexOf(u':', mark + 6);
            const QString name = markup.sliced(mark + 5, colon - mark - 5);
            if (const auto it = openTags.constFind(name); it != openTags.cend()) {
                if (const int tag = tagIndex(name); tag >= FirstSize)
                    ranges.addSize(
                        tag - FirstSize, defaultFontSize * scales[tag], *it, text.size());
                else if (tag >= 0)
                    ranges.add(formats[tag], *it, text.size());
                openTags.erase(it);
            } else {
                openTags.insert(name, text.size());
            }
            // A tag left open at the end is never applied: Sticky formats a range when it closes.
            at = colon + 1;
        } else {
            // Sticky repairs anything else after a "#" by keeping the "#".
            text += u'#';
            at = mark + 1;
        }
    }
    return ranges.apply(text);
}
