#include "import/SNMarkdownWriter.h"

#include "import/SNMarkdownLine.h"

#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

bool isLineBreak(QChar c)
{
    return c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f' || c == QChar::LineSeparator
        || c == QChar::ParagraphSeparator;
}

} // namespace

SNMarkdownWriter::Document SNMarkdownWriter::write(
    const QWAttributedString &text, const QString &pictureBaseName)
{
    Document document;
    const auto pictureMarkup = [&](const QByteArray &bytes) {
        const QString suffix = pictureSuffix(bytes);
        if (suffix.isEmpty()) {
            ++document.unknownPictures;
            return QString();
        }
        const QString name
            = pictureFileName(pictureBaseName, int(document.pictures.size()) + 1, suffix);
        document.pictures.append({ name, bytes });
        return u"![]("_s + QString::fromLatin1(QUrl::toPercentEncoding(name)) + u')';
    };

    QStringList lines;
    const QString &string = text.string();
    for (qsizetype start = 0, at = 0; at <= string.size(); ++at) {
        if (at < string.size() && !isLineBreak(string[at]))
            continue;
        lines.append(SNMarkdownLine::markdown(text, start, at, pictureMarkup));
        if (at + 1 < string.size() && string[at] == u'\r' && string[at + 1] == u'\n')
            ++at;
        start = at + 1;
    }
    while (!lines.isEmpty() && lines.first().isEmpty())
        lines.removeFirst();
    while (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();

    // Markdown joins the lines of a paragraph; the note shows each on its own. Two spaces at
    // the end make a line break that every reader keeps.
    for (qsizetype i = 0; i < lines.size(); ++i) {
        document.markdown += lines[i];
        const bool breakInParagraph
            = i + 1 < lines.size() && !lines[i].isEmpty() && !lines[i + 1].isEmpty();
        document.markdown += breakInParagraph ? u"  \n"_s : u"\n"_s;
    }
    return document;
}

QStringList SNMarkdownWriter::pictureSuffixes(const QWAttributedString &text)
{
    QStringList suffixes;
    for (const QWTextRun &run : text.runs()) {
        if (!run.attributes.hasAttachment())
            continue;
        const QString suffix = pictureSuffix(run.attributes.attachment());
        for (qsizetype i = run.location; i < run.end() && !suffix.isEmpty(); ++i) {
            if (text.string()[i] == QChar::ObjectReplacementCharacter)
                suffixes.append(suffix);
        }
    }
    return suffixes;
}

QString SNMarkdownWriter::pictureFileName(
    const QString &baseName, int number, const QString &suffix)
{
    return u"%1 %2.%3"_s.arg(baseName).arg(number).arg(suffix);
}

QString SNMarkdownWriter::pictureSuffix(const QByteArray &bytes)
{
    if (bytes.startsWith("\x89PNG\r\n\x1a\n"))
        return u"png"_s;
    if (bytes.startsWith("\xFF\xD8\xFF"))
        return u"jpg"_s;
    if (bytes.startsWith("GIF87a") || bytes.startsWith("GIF89a"))
        return u"gif"_s;
    if (bytes.startsWith("RIFF") && bytes.mid(8, 4) == "WEBP")
        return u"webp"_s;
    if (bytes.startsWith("BM"))
        return u"bmp"_s;
    if (bytes.startsWith(QByteArray("II*\0", 4)) || bytes.startsWith(QByteArray("MM\0*", 4)))
        return u"tif"_s;
    return QString();
}
