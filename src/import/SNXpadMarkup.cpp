#include "import/SNXpadMarkup.h"

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QChar tagMark = QChar(0xE000);
constexpr double defaultFontSize = 14.0;

// xpad's own tag table, in its order: a later tag wins where two sizes overlap, as in GTK.
enum Tag { Bold, Italic, Underline, Strikethrough, FirstSize };
struct TagName
{
    QLatin1StringView name;
    double scale;
};
constexpr std::array<TagName, 11> tags { {
    { "bold"_L1, 0 },
    { "italic"_L1, 0 },
    { "underline"_L1, 0 },
    { "strikethrough"_L1, 0 },
    // Pango's scales: powers of 1.2 around the medium size.
    { "small-xx"_L1, 1.0 / 1.728 },
    { "small-x"_L1, 1.0 / 1.44 },
    { "small"_L1, 1.0 / 1.2 },
    { "medium"_L1, 1.0 },
    { "large"_L1, 1.2 },
    { "large-x"_L1, 1.44 },
    { "large-xx"_L1, 1.728 },
} };

int tagIndex(QStringView name)
{
    for (size_t i = 0; i < tags.size(); ++i) {
        if (name.compare(tags[i].name, Qt::CaseInsensitive) == 0)
            return int(i);
    }
    return -1;
}

QWTextAttributes attributesOf(const std::array<qsizetype, tags.size()> &open)
{
    QWTextAttributes attributes;
    attributes.setBold(open[Bold] > 0);
    attributes.setItalic(open[Italic] > 0);
    if (open[Underline] > 0)
        attributes.setUnderlineStyle(QWTextAttributes::LineStyleSingle);
    if (open[Strikethrough] > 0)
        attributes.setStrikethroughStyle(QWTextAttributes::LineStyleSingle);
    for (size_t size = tags.size(); size-- > FirstSize;) {
        if (open[size] > 0) {
            if (tags[size].scale != 1.0)
                attributes.setFontSize(defaultFontSize * tags[size].scale);
            break;
        }
    }
    return attributes;
}

} // namespace

QWAttributedString SNXpadMarkup::parse(const QString &markup)
{
    // xpad keeps a list of open tags and closes the first of a name; only whether a tag is open
    // matters, so a count per tag gives the same formatting without a list to search.
    std::array<qsizetype, tags.size()> open {};
    QWMutableAttributedString text;
    bool isTagName = false;
    for (const QStringView token : QStringView(markup).tokenize(tagMark)) {
        if (!isTagName) {
            if (!token.isEmpty())
                text.appendString(token.toString(), attributesOf(open));
        } else if (token.startsWith(u'/')) {
            const int tag = tagIndex(token.mid(1));
            if (tag >= 0 && open[tag] > 0)
                --open[tag];
        } else if (const int tag = tagIndex(token); tag >= 0) {
            ++open[tag];
        }
        isTagName = !isTagName;
    }
    return text.attributedString();
}
