#pragma once

#include "kit/QWAttributedString.h"
#include "support/QWTestFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QStringList>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Rich text as a reader of a golden file or a failure message wants it: one line per run, its
// text quoted, then the attributes that are set. Numbers are as short as reads back exactly;
// an attachment shows its format, size in pixels and the start of its SHA-1. Also the golden
// tests' plumbing: their rows, their files.
class QWRichTextDump final
{
public:
    // A run that holds line breaks takes a line per paragraph; neighbouring runs always differ
    // in their attributes, so lines alike belong to one run.
    static QString describe(const QWAttributedString &text)
    {
        QString lines;
        for (const QWTextRun &run : text.runs()) {
            const QString attributes = describe(run.attributes);
            for (qsizetype at = run.location; at < run.end();) {
                const qsizetype lineEnd = text.string().indexOf(u'\n', at);
                const qsizetype end = lineEnd < 0 ? run.end() : std::min(lineEnd + 1, run.end());
                lines += quoted(text.string().mid(at, end - at)) + attributes + u'\n';
                at = end;
            }
        }
        return lines;
    }

    static QString describe(const QWTextAttributes &a)
    {
        QString out;
        const auto add = [&out](bool set, const QString &item) {
            if (set)
                out += u' ' + item;
        };
        add(!a.fontFamily().isEmpty(), u"font="_s + quoted(a.fontFamily()));
        add(a.fontSize() != 0.0, u"size="_s + number(a.fontSize()));
        add(a.isBold(), u"bold"_s);
        add(a.isItalic(), u"italic"_s);
        add(a.underlineStyle() != 0, u"underline="_s + lineStyle(a.underlineStyle()));
        add(a.strikethroughStyle() != 0, u"strike="_s + lineStyle(a.strikethroughStyle()));
        add(a.foregroundColor().has_value(), u"color="_s + color(a.foregroundColor()));
        add(a.strokeColor().has_value(), u"stroke="_s + color(a.strokeColor()));
        add(!a.link().isEmpty(), u"link="_s + quoted(a.link()));
        add(!a.tagName().isEmpty(), u"tag="_s + quoted(a.tagName()));
        add(a.hasAttachment(), u"attachment="_s + attachment(a.attachment()));
        add(!a.attachmentFileName().isEmpty(), u"file="_s + quoted(a.attachmentFileName()));
        return out;
    }

    // Compares with the expected file line by line, or writes it when VELLUMO_UPDATE_GOLDEN=1.
    static void compareWithFile(const QString &path, const QByteArray &actual)
    {
        QFile file(path);
        const bool update = qEnvironmentVariableIntValue("VELLUMO_UPDATE_GOLDEN") == 1;
        QVERIFY2(file.open(update ? QIODevice::WriteOnly : QIODevice::ReadOnly), qPrintable(path));
        if (update) {
            file.write(actual);
            return;
        }
        const QList<QByteArray> expected = file.readAll().split('\n');
        const QList<QByteArray> lines = actual.split('\n');
        for (qsizetype line = 0; line < std::max(expected.size(), lines.size()); ++line)
            QCOMPARE(QString::fromUtf8(lines.value(line)), QString::fromUtf8(expected.value(line)));
    }

    // A golden test's rows: one per case folder in the folder, by name, as the column "folder".
    static void addCaseRows(const QString &folder)
    {
        QTest::addColumn<QString>("folder");
        const QDir cases(folder);
        QVERIFY(cases.exists());
        for (const QString &name : cases.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
            QTest::newRow(qPrintable(name)) << cases.filePath(name);
    }

    // Quotes and escapes what would not show: white space other than the space, controls,
    // lone surrogates, private use, the object replacement character and the non-breaking hyphen.
    static QString quoted(const QString &text)
    {
        QString out = u"\""_s;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
                out += QStringView(text).mid(i++, 2);
            else if (c == u'"' || c == u'\\')
                out += u'\\' + QString(c);
            else if (c == u'\n' || c == u'\t')
                out += c == u'\n' ? u"\\n"_s : u"\\t"_s;
            else if (c == u' ' || (c.isPrint() && !c.isSpace() && c != u'\uFFFC' && c != u'\u2011'))
                out += c;
            else
                out += u"\\u%1"_s.arg(c.unicode(), 4, 16, QChar(u'0'));
        }
        return out + u'"';
    }

    static QString number(double value)
    {
        return QString::number(value, 'g', QLocale::FloatingPointShortest);
    }

    // Red, green, blue, and alpha unless opaque. Asked of unset colours too, which describe()
    // then leaves out.
    static QString color(const std::optional<QWColor> &color)
    {
        const QWColor c = color.value_or(QWColor());
        QStringList components { number(c.redComponent()), number(c.greenComponent()),
            number(c.blueComponent()) };
        if (c.alphaComponent() != 1.0)
            components.append(number(c.alphaComponent()));
        return components.join(u',');
    }

private:
    static QString lineStyle(int style)
    {
        using A = QWTextAttributes;
        const int line = style & A::lineStyleMask;
        QStringList parts { line == A::LineStyleSingle ? u"single"_s
                : line == A::LineStyleThick            ? u"thick"_s
                : line == A::LineStyleDouble           ? u"double"_s
                                                       : u"0x%1"_s.arg(line, 0, 16) };
        const char *const patterns[]
            = { "", "dot", "dash", "dashdot", "dashdotdot", "5", "6", "7" };
        if (style & A::linePatternMask)
            parts.append(QLatin1String(patterns[(style & A::linePatternMask) >> 8]));
        if (style & A::LinePatternWave)
            parts.append(u"wave"_s);
        if (style & A::LineByWord)
            parts.append(u"byword"_s);
        if (const int rest
            = style & ~(A::lineStyleMask | A::linePatternMask | A::LinePatternWave | A::LineByWord))
            parts.append(u"0x%1"_s.arg(rest, 0, 16));
        return parts.join(u'+');
    }

    static QString attachment(const QByteArray &bytes)
    {
        const QImage image = QImage::fromData(bytes);
        const QString format = bytes.startsWith("\x89PNG") ? u"png"_s
            : bytes.startsWith("\xFF\xD8")                 ? u"jpeg"_s
                                                           : u"data"_s;
        return u"%1(%2x%3,%4)"_s.arg(format)
            .arg(image.width())
            .arg(image.height())
            .arg(QString::fromLatin1(
                QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(12)));
    }
};

// Failure messages of QCOMPARE on rich text.
inline char *toString(const QWAttributedString &text)
{
    return QTest::toString(QWRichTextDump::describe(text));
}
