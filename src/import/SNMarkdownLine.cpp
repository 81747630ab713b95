#include "import/SNMarkdownLine.h"

#include <QList>
#include <QRegularExpression>

#include <algorithm>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

// In the order in which formatting that starts and ends together nests, outermost first.
enum class Style { Link, Underline, Bold, Italic, Strike };
constexpr Style allStyles[] { Style::Link, Style::Underline, Style::Bold, Style::Italic,
    Style::Strike };

// Where one style holds, white space at its ends left out; a link holds one address.
struct Span
{
    Style style;
    qsizetype start = 0;
    qsizetype end = 0;
    QString url;
    bool autolink = false; // written as <url>: its text is its address
};

// One opening and closing of a span: a span that other formatting cuts into has several.
struct Piece
{
    Style style;
    QString url;
    bool autolink = false;
    bool html = false;
};

struct Token
{
    enum Kind { Text, Open, Close } kind;
    QString text;
    int piece = -1;
};

// Adjacent markers of one character, which CommonMark reads as one delimiter run.
struct DelimiterRun
{
    qsizetype start = 0;
    qsizetype end = 0;
    QChar character;
    QList<int> opened;
    QList<int> closed;
};

// Symbols outside ASCII count as punctuation for some readers and not for others (CommonMark
// changed its mind); a marker must read the same either way.
enum class CharClass { Space, Punctuation, Symbol, Other };

CharClass classOf(char32_t c)
{
    if (QChar::isSpace(c))
        return CharClass::Space;
    if (QChar::isPunct(c) || (c < 0x80 && QChar::isSymbol(c)))
        return CharClass::Punctuation;
    return QChar::isSymbol(c) ? CharClass::Symbol : CharClass::Other;
}

// The character before index, or after it; the ends of the line are space.
CharClass classBefore(const QString &s, qsizetype index)
{
    if (index <= 0)
        return CharClass::Space;
    if (index >= 2 && s[index - 1].isLowSurrogate() && s[index - 2].isHighSurrogate())
        return classOf(QChar::surrogateToUcs4(s[index - 2], s[index - 1]));
    return classOf(s[index - 1].unicode());
}

CharClass classAfter(const QString &s, qsizetype index)
{
    if (index >= s.size())
        return CharClass::Space;
    if (index + 1 < s.size() && s[index].isHighSurrogate() && s[index + 1].isLowSurrogate())
        return classOf(QChar::surrogateToUcs4(s[index], s[index + 1]));
    return classOf(s[index].unicode());
}

// Whether a run of markers between these characters only opens (or only closes) emphasis.
bool runReadsAs(CharClass before, CharClass after, bool opening)
{
    for (const bool symbolsArePunctuation : { false, true }) {
        const auto space = [](CharClass c) { return c == CharClass::Space; };
        const auto punctuation = [symbolsArePunctuation](CharClass c) {
            return c == CharClass::Punctuation || (symbolsArePunctuation && c == CharClass::Symbol);
        };
        const bool left
            = !space(after) && (!punctuation(after) || space(before) || punctuation(before));
        const bool right
            = !space(before) && (!punctuation(before) || space(after) || punctuation(after));
        if (opening ? (!left || right) : (!right || left))
            return false;
    }
    return true;
}

// What CommonMark takes as an autolink: a scheme, a colon, no spaces or angle brackets.
bool isAutolinkable(const QString &url)
{
    static const QRegularExpression pattern(
        u"^[A-Za-z][A-Za-z0-9+.-]{1,31}:[^\\x00-\\x20<>\\x7F]*$"_s);
    return pattern.match(url).hasMatch();
}

// A link address as a Markdown destination: what would end or break it percent-encoded.
QString destination(const QString &url)
{
    QString out;
    for (const QChar c : url) {
        const bool ascii = c.unicode() < 0x80;
        if ((ascii && (c.unicode() <= 0x20 || u"<>()\\\x7f"_s.contains(c)))
            || (!ascii
                && (c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line
                    || c.category() == QChar::Separator_Paragraph))) {
            for (const char byte : QString(c).toUtf8())
                out += u"%%1"_s.arg(uchar(byte), 2, 16, QLatin1Char('0')).toUpper();
        } else {
            out += c;
        }
    }
    return out;
}

class LineWriter
{
public:
    LineWriter(const QWAttributedString &text, qsizetype start, qsizetype end,
        const SNMarkdownLine::PictureMarkup &pictureMarkup);

    QString markdown();

private:
    const QWTextAttributes &attributes(qsizetype index) const
    {
        return *m_attributes[index - m_lineStart];
    }
    QString styleKey(Style style, qsizetype index) const;
    void addSpans(Style style);
    void markAutolinks();
    void makeTokens();
    void appendText(const QString &text);
    QString escaped(qsizetype index) const;
    QString marker(const Piece &piece, bool opening) const;
    QString render(const QString &prefix, QList<DelimiterRun> &runs) const;

    const QString &m_string;
    const SNMarkdownLine::PictureMarkup &m_pictureMarkup;
    qsizetype m_lineStart = 0;
    qsizetype m_start = 0; // the content: white space at both ends left out
    qsizetype m_end = 0;
    QList<const QWTextAttributes *> m_attributes; // per character of the line
    QList<Span> m_spans;
    QList<Piece> m_pieces;
    QList<Token> m_tokens;
};

LineWriter::LineWriter(const QWAttributedString &text, qsizetype start, qsizetype end,
    const SNMarkdownLine::PictureMarkup &pictureMarkup)
    : m_string(text.string()),
      m_pictureMarkup(pictureMarkup),
      m_lineStart(start),
      m_start(start),
      m_end(end)
{
    static const QWTextAttributes none;
    m_attributes.fill(&none, end - start);
    for (const QWTextRun &run : text.runs()) {
        for (qsizetype i = std::max(run.location, start); i < std::min(run.end(), end); ++i)
            m_attributes[i - start] = &run.attributes;
    }
    while (m_start < m_end && m_string[m_start].isSpace())
        ++m_start;
    while (m_end > m_start && m_string[m_end - 1].isSpace())
        --m_end;
}

QString LineWriter::markdown()
{
    if (m_start == m_end)
        return QString();
    QString prefix;
    for (qsizetype i = m_lineStart; i < m_start; ++i)
        prefix += m_string[i] == u'\t' ? u"&nbsp;&nbsp;&nbsp;&nbsp;"_s : u"&nbsp;"_s;
    for (const Style style : allStyles)
        addSpans(style);
    markAutolinks();
    makeTokens();
    // Markers that would not read as markers where they stand become HTML, which changes what
    // stands beside other markers: go on until every marker reads as meant.
    for (;;) {
        QList<DelimiterRun> runs;
        const QString out = render(prefix, runs);
        bool changed = false;
        for (const DelimiterRun &run : std::as_const(runs)) {
            QList<int> wrong;
            if (!run.opened.isEmpty() && !run.closed.isEmpty())
                wrong = run.opened;
            else if (!runReadsAs(classBefore(out, run.start), classAfter(out, run.end),
                         !run.opened.isEmpty()))
                wrong = run.opened + run.closed;
            for (const int piece : std::as_const(wrong)) {
                changed = changed || !m_pieces[piece].html;
                m_pieces[piece].html = true;
            }
        }
        if (!changed)
            return out;
    }
}

QString LineWriter::styleKey(Style style, qsizetype index) const
{
    const QWTextAttributes &a = attributes(index);
    switch (style) {
    case Style::Link:
        // A hashtag's marker links to its own text; the tag is written as it is.
        return a.tagName().isEmpty() ? a.link() : QString();
    case Style::Underline:
        return a.underlineStyle() != QWTextAttributes::LineStyleNone ? u"u"_s : QString();
    case Style::Bold:
        return a.isBold() ? u"b"_s : QString();
    case Style::Italic:
        return a.isItalic() ? u"i"_s : QString();
    case Style::Strike:
        return a.strikethroughStyle() != QWTextAttributes::LineStyleNone ? u"s"_s : QString();
    }
    return QString();
}

void LineWriter::addSpans(Style style)
{
    for (qsizetype i = m_start; i < m_end;) {
        const QString key = styleKey(style, i);
        qsizetype next = i + 1;
        while (next < m_end && styleKey(style, next) == key)
            ++next;
        if (!key.isEmpty()) {
            Span span { style, i, next, style == Style::Link ? key : QString() };
            while (span.start < span.end && m_string[span.start].isSpace())
                ++span.start;
            while (span.end > span.start && m_string[span.end - 1].isSpace())
                --span.end;
            if (span.start < span.end)
                m_spans.append(span);
        }
        i = next;
    }
}

void LineWriter::markAutolinks()
{
    for (Span &link : m_spans) {
        if (link.style != Style::Link
            || QStringView(m_string).sliced(link.start, link.end - link.start) != link.url
            || !isAutolinkable(link.url))
            continue;
        // Nothing may start or end inside: an autolink holds no other markup.
        const auto inside = [&link](qsizetype at) { return at > link.start && at < link.end; };
        link.autolink = std::none_of(m_spans.cbegin(), m_spans.cend(),
            [&inside](const Span &other) { return inside(other.start) || inside(other.end); });
    }
}

void LineWriter::makeTokens()
{
    struct Open
    {
        int span;
        int piece = -1; // none yet: its marker waits for a character other than space
    };
    std::vector<Open> stack;
    for (qsizetype at = m_start; at <= m_end; ++at) {
        // What ends here closes, and with it whatever was opened inside it; those go on after.
        const qsizetype ending
            = std::find_if(stack.cbegin(), stack.cend(),
                  [this, at](const Open &open) { return m_spans[open.span].end == at; })
            - stack.cbegin();
        QList<int> opening;
        while (qsizetype(stack.size()) > ending) {
            const Open open = stack.back();
            stack.pop_back();
            if (open.piece >= 0)
                m_tokens.append({ Token::Close, QString(), open.piece });
            if (m_spans[open.span].end > at)
                opening.append(open.span);
        }
        if (at == m_end)
            break;
        for (int span = 0; span < m_spans.size(); ++span) {
            if (m_spans[span].start == at)
                opening.append(span);
        }
        // What lasts longer goes outside; an autolink innermost.
        std::sort(opening.begin(), opening.end(), [this](int a, int b) {
            const Span &x = m_spans[a];
            const Span &y = m_spans[b];
            if (x.end != y.end)
                return x.end > y.end;
            if (x.autolink != y.autolink)
                return y.autolink;
            return x.style < y.style;
        });
        for (const int span : std::as_const(opening))
            stack.push_back({ span });
        // Spans begin and end on other characters than space, but what goes on after a closing
        // may go on with a space: its marker waits for the next word, as CommonMark wants.
        if (!m_string[at].isSpace()) {
            for (Open &open : stack) {
                if (open.piece >= 0)
                    continue;
                const Span &span = m_spans[open.span];
                m_pieces.append({ span.style, span.url, span.autolink, false });
                open.piece = int(m_pieces.size() - 1);
                m_tokens.append({ Token::Open, QString(), open.piece });
            }
        }
        const bool raw = !stack.empty() && m_spans[stack.back().span].autolink;
        appendText(raw ? QString(m_string[at]) : escaped(at));
    }
}

void LineWriter::appendText(const QString &text)
{
    if (text.isEmpty())
        return;
    if (!m_tokens.isEmpty() && m_tokens.last().kind == Token::Text)
        m_tokens.last().text += text;
    else
        m_tokens.append({ Token::Text, text, -1 });
}

QString LineWriter::escaped(qsizetype index) const
{
    const QChar c = m_string[index];
    const auto at
        = [this](qsizetype i) { return i >= m_start && i < m_end ? m_string[i] : QChar(); };
    const bool lineStart = index == m_lineStart;
    const QString backslashed = u'\\' + QString(c);
    switch (c.unicode()) {
    case u'\\':
    case u'`':
    case u'*':
    case u'[':
    case u']':
    case u'<':
    case u'~':
    case u'|':
    case u'$':
    case u'^':
        return backslashed;
    case u'_':
        // Inside a word an underscore never emphasises; hashtags keep theirs.
        return at(index - 1).isLetterOrNumber() && at(index + 1).isLetterOrNumber() ? QString(c)
                                                                                    : backslashed;
    case u'&':
        // Only what could begin an entity ("&amp;").
        return at(index + 1).isLetter() || at(index + 1) == u'#' ? backslashed : QString(c);
    case u'=':
    case u'+':
    case u'%':
        // Highlight, insertion and comment marks of some readers; "=" and "+" begin a line as
        // a heading underline or a list item.
        return lineStart || at(index - 1) == c || at(index + 1) == c ? backslashed : QString(c);
    case u'-':
    case u'>':
        return lineStart ? backslashed : QString(c);
    case u'#': {
        // A heading, not a hashtag: "#" followed by a space or nothing.
        qsizetype after = index;
        while (at(after) == u'#')
            ++after;
        return lineStart && (after == m_end || m_string[after].isSpace()) ? backslashed
                                                                          : QString(c);
    }
    case u'.':
    case u')': {
        // "1." or "1)" beginning a line would begin a numbered list.
        const qsizetype digits = index - m_lineStart;
        const bool number = digits >= 1 && digits <= 9
            && std::all_of(m_string.cbegin() + m_lineStart, m_string.cbegin() + index,
                [](QChar d) { return d >= u'0' && d <= u'9'; });
        return number && (index + 1 == m_end || m_string[index + 1].isSpace()) ? backslashed
                                                                               : QString(c);
    }
    case 0xFFFC:
        return attributes(index).hasAttachment() ? m_pictureMarkup(attributes(index).attachment())
                                                 : QString();
    default:
        return c.category() == QChar::Other_Control ? QString() : QString(c);
    }
}

QString LineWriter::marker(const Piece &piece, bool opening) const
{
    switch (piece.style) {
    case Style::Link:
        if (piece.autolink)
            return opening ? u"<"_s : u">"_s;
        return opening ? u"["_s : u"]("_s + destination(piece.url) + u')';
    case Style::Underline:
        return opening ? u"<u>"_s : u"</u>"_s;
    case Style::Bold:
        return !piece.html ? u"**"_s : opening ? u"<strong>"_s : u"</strong>"_s;
    case Style::Italic:
        return !piece.html ? u"*"_s : opening ? u"<em>"_s : u"</em>"_s;
    case Style::Strike:
        return !piece.html ? u"~~"_s : opening ? u"<del>"_s : u"</del>"_s;
    }
    return QString();
}

QString LineWriter::render(const QString &prefix, QList<DelimiterRun> &runs) const
{
    QString out = prefix;
    bool inRun = false;
    for (const Token &token : m_tokens) {
        if (token.kind == Token::Text) {
            out += token.text;
            inRun = false;
            continue;
        }
        const Piece &piece = m_pieces[token.piece];
        const bool opening = token.kind == Token::Open;
        const QString mark = marker(piece, opening);
        const bool delimiter = !piece.html
            && (piece.style == Style::Bold || piece.style == Style::Italic
                || piece.style == Style::Strike);
        if (!delimiter) {
            out += mark;
            inRun = false;
            continue;
        }
        if (!inRun || runs.last().character != mark[0])
            runs.append({ out.size(), out.size(), mark[0], {}, {} });
        inRun = true;
        (opening ? runs.last().opened : runs.last().closed).append(token.piece);
        out += mark;
        runs.last().end = out.size();
    }
    return out;
}

} // namespace

QString SNMarkdownLine::markdown(const QWAttributedString &text, qsizetype start, qsizetype end,
    const PictureMarkup &pictureMarkup)
{
    return LineWriter(text, start, end, pictureMarkup).markdown();
}
