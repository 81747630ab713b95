#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfWriter.h"
#include "support/QWTestImages.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Failure messages: the text and, per run, its range and what is set.
char *toString(const QWAttributedString &text)
{
    QString description = u'"' + text.string() + u'"';
    for (const QWTextRun &run : text.runs()) {
        const QWTextAttributes &a = run.attributes;
        description
            += u" [%1+%2 %3 %4 b%5 i%6 u%7 s%8 %9 %10 %11]"_s.arg(run.location)
                   .arg(run.length)
                   .arg(a.fontFamily())
                   .arg(a.fontSize())
                   .arg(a.isBold())
                   .arg(a.isItalic())
                   .arg(a.underlineStyle(), 0, 16)
                   .arg(a.strikethroughStyle(), 0, 16)
                   .arg(a.foregroundColor() ? a.foregroundColor()->description() : QString())
                   .arg(a.link())
                   .arg(a.attachment().size());
    }
    return QTest::toString(description);
}

namespace {

using A = QWTextAttributes;

struct Piece
{
    QString text;
    A attributes;
};

QWAttributedString join(const QList<Piece> &pieces)
{
    QWMutableAttributedString text;
    for (const Piece &piece : pieces)
        text.appendString(piece.text, piece.attributes);
    return text.attributedString();
}

A with(const std::function<void(A &)> &set)
{
    A attributes;
    set(attributes);
    return attributes;
}

QByteArray imageBytes(const QColor &color, const char *format)
{
    return imageFileBytes(color, QSize(7, 5), format);
}

A attachment(const QByteArray &bytes, const QString &name = QString())
{
    return with([&](A &a) {
        a.setAttachment(bytes);
        a.setAttachmentFileName(name);
    });
}

QWAttributedString throughRtf(const QWAttributedString &text)
{
    const QWRtfReadResult result = QWRtfReader().read(QWRtfWriter().write(text));
    if (!result.isOk())
        qFatal("the writer's output does not read: %s", qPrintable(result.errorString()));
    return result.text;
}

// What pandoc's RTF reader makes of a document, as its JSON syntax tree.
QJsonArray pandocBlocks(const QByteArray &rtf)
{
    QProcess pandoc;
    pandoc.start(u"pandoc"_s, { u"-f"_s, u"rtf"_s, u"-t"_s, u"json"_s });
    if (!pandoc.waitForStarted())
        qFatal("pandoc is not installed; ./build.sh installs it");
    pandoc.write(rtf);
    pandoc.closeWriteChannel();
    if (!pandoc.waitForFinished() || pandoc.exitCode() != 0)
        qFatal("pandoc failed: %s", pandoc.readAllStandardError().constData());
    return QJsonDocument::fromJson(pandoc.readAllStandardOutput()).object()[u"blocks"_s].toArray();
}

// The plain text of pandoc's inlines, and what is marked in it.
struct PandocText
{
    QString text;
    QStringList strong, emphasized, underlined, struck;
    QList<std::pair<QString, QString>> links; // text, target
    int images = 0;

    void addInlines(const QJsonArray &inlines)
    {
        for (const QJsonValue &value : inlines) {
            const QJsonObject element = value.toObject();
            const QString type = element[u"t"_s].toString();
            const QJsonValue content = element[u"c"_s];
            if (type == u"Str") {
                text += content.toString();
            } else if (type == u"Space" || type == u"SoftBreak") {
                text += u' ';
            } else if (type == u"LineBreak") {
                text += u'\u2028';
            } else if (type == u"Strong" || type == u"Emph" || type == u"Underline"
                || type == u"Strikeout") {
                const qsizetype start = text.size();
                addInlines(content.toArray());
                QStringList &marked = type == u"Strong" ? strong
                    : type == u"Emph"                   ? emphasized
                    : type == u"Underline"              ? underlined
                                                        : struck;
                marked.append(text.mid(start));
            } else if (type == u"Link") {
                const qsizetype start = text.size();
                addInlines(content[1].toArray());
                links.append({ text.mid(start), content[2][0].toString() });
            } else if (type == u"Image") {
                ++images;
            }
        }
    }

    static PandocText fromBlocks(const QJsonArray &blocks)
    {
        PandocText result;
        for (const QJsonValue &block : blocks) {
            if (!result.text.isEmpty())
                result.text += u'\n';
            result.addInlines(block[u"c"_s].toArray());
        }
        return result;
    }
};

} // namespace

class TestQWRtfWriter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data()
    {
        QTest::addColumn<QWAttributedString>("text");
        const QByteArray png = imageBytes(Qt::red, "PNG");
        const QByteArray jpeg = imageBytes(Qt::blue, "JPEG");
        const A bold = with([](A &a) { a.setBold(true); });

        QTest::newRow("empty") << QWAttributedString();
        QTest::newRow("plain") << QWAttributedString(u"Hello, world"_s);
        QTest::newRow("RTF syntax") << QWAttributedString(u"{\\rtf1 \\par} \\'41 \\u65? ;"_s, bold);
        QTest::newRow("breaks") << QWAttributedString(u"\na\tb\u2028c\n\nd\n"_s);
        QTest::newRow("non-ASCII")
            << QWAttributedString(u"Grüße — “x” € Ž \u00A0 日本語 😀 \uF8FF \uFFFC \uFFFD"_s);
        QTest::newRow("lone surrogate") << QWAttributedString(u"a"_s + QChar(0xD83D) + u"b"_s);
        QTest::newRow("fonts") << join({
            { u"serif "_s,
                with([](A &a) { a.setFont(QWFont(u"DejaVu Serif"_s, 18, true, false)); }) },
            { u"mono "_s,
                with([](A &a) { a.setFont(QWFont(u"Courier New"_s, 10.5, false, true)); }) },
            { u"sized "_s, with([](A &a) { a.setFontSize(12); }) },
            { u"default "_s, A() },
            { u"odd name "_s, with([](A &a) { a.setFontFamily(u"Odd; {Name}\\ é"_s); }) },
            { u"Helvetica"_s, with([](A &a) { a.setFontFamily(u"Helvetica"_s); }) },
        });

        QList<Piece> underlines;
        for (const int line :
            std::initializer_list<int> { A::LineStyleSingle, A::LineStyleThick }) {
            for (const int pattern : std::initializer_list<int> { A::LinePatternSolid,
                     A::LinePatternDot, A::LinePatternDash, A::LinePatternDashDot,
                     A::LinePatternDashDotDot, A::LinePatternWave }) {
                underlines.append({ u"%1 "_s.arg(line | pattern, 0, 16),
                    with([&](A &a) { a.setUnderlineStyle(line | pattern); }) });
            }
        }
        for (const int style : std::initializer_list<int> { A::LineStyleDouble,
                 A::LineStyleDouble | A::LinePatternWave, A::LineStyleSingle | A::LineByWord }) {
            underlines.append(
                { u"%1 "_s.arg(style, 0, 16), with([&](A &a) { a.setUnderlineStyle(style); }) });
        }
        QTest::newRow("underlines") << join(underlines);
        QTest::newRow("strikethrough") << join({
            { u"single "_s, with([](A &a) { a.setStrikethroughStyle(A::LineStyleSingle); }) },
            { u"double "_s, with([](A &a) { a.setStrikethroughStyle(A::LineStyleDouble); }) },
            { u"with underline"_s, with([](A &a) {
                 a.setStrikethroughStyle(A::LineStyleSingle);
                 a.setUnderlineStyle(A::LineStyleDouble);
             }) },
        });
        QTest::newRow("colours") << join({
            { u"red "_s, with([](A &a) { a.setForegroundColor(QWColor(1, 0, 0)); }) },
            { u"plain "_s, A() },
            { u"teal "_s,
                with([](A &a) { a.setForegroundColor(QWColor(0, 128 / 255.0, 128 / 255.0)); }) },
            { u"bold red "_s, with([](A &a) {
                 a.setForegroundColor(QWColor(1, 0, 0));
                 a.setBold(true);
             }) },
            { u"black"_s, with([](A &a) { a.setForegroundColor(QWColor::black()); }) },
        });
        const A link = with([](A &a) { a.setLink(u"https://example.org/a?b=1&c=2"_s); });
        QTest::newRow("links") << join({
            { u"before "_s, A() },
            { u"one "_s, link },
            { u"link"_s, with([&](A &a) {
                 a = link;
                 a.setBold(true);
             }) },
            { u"next"_s, with([](A &a) { a.setLink(u"mailto:someone@example.org"_s); }) },
            { u" quoted"_s, with([](A &a) { a.setLink(u"file:///C:\\dir\\\"odd\" name"_s); }) },
            { u" über"_s, with([](A &a) { a.setLink(u"https://bücher.example/straße"_s); }) },
            { u"\nacross\nparagraphs"_s, with([](A &a) { a.setLink(u"#mark"_s); }) },
        });
        QTest::newRow("attachments") << join({
            { u"png "_s, A() },
            { u"\uFFFC"_s, attachment(png, u"red é.png"_s) },
            { u" jpeg "_s, A() },
            { u"\uFFFC"_s, attachment(jpeg) },
            { u"\uFFFC\uFFFC"_s, attachment(png, u"twice.png"_s) },
            { u"\uFFFC"_s, with([&](A &a) {
                 a = attachment(jpeg, u"linked.jpg"_s);
                 a.setLink(u"https://example.org/"_s);
                 a.setItalic(true);
             }) },
        });
        QTest::newRow("everything at once")
            << QWAttributedString(u"all of it 😀\tand more"_s, with([](A &a) {
                   a.setFont(QWFont(u"DejaVu Sans"_s, 13.5, true, true));
                   a.setForegroundColor(QWColor(0.2, 0.4, 0.6));
                   a.setUnderlineStyle(A::LineStyleThick | A::LinePatternDashDot);
                   a.setStrikethroughStyle(A::LineStyleDouble);
                   a.setLink(u"https://example.org/"_s);
               }));
    }

    void roundTrip()
    {
        QFETCH(QWAttributedString, text);
        QCOMPARE(throughRtf(text), text);
    }

    // What RTF cannot hold comes back as the nearest thing it can.
    void nearestRtfCanHold()
    {
        const QWAttributedString kept = throughRtf(join({
            { u"a"_s, with([](A &a) {
                 a.setStrokeColor(QWColor(1, 0, 0));
                 a.setTagName(u"#tag"_s);
             }) },
            { u"b"_s, with([](A &a) { a.setForegroundColor(QWColor(1, 0.3, 0, 0.5)); }) },
            { u"c"_s, with([](A &a) { a.setFontSize(12.3); }) },
            { u"d"_s, with([](A &a) { a.setUnderlineStyle(A::LineStyleDouble | A::LineByWord); }) },
            { u"e"_s, with([](A &a) { a.setStrikethroughStyle(A::LineStyleThick); }) },
            { u"f\u0001\r\ng\rh\u2029i\u000Bj"_s, A() },
        }));
        QCOMPARE(kept.string(), u"abcdef\ng\nh\ni\u2028j"_s);
        QCOMPARE(kept.attributesAtIndex(0), A());
        QCOMPARE(kept.attributesAtIndex(1).foregroundColor(), QWColor(1, 77 / 255.0, 0));
        QCOMPARE(kept.attributesAtIndex(2).fontSize(), 12.5);
        QCOMPARE(kept.attributesAtIndex(3).underlineStyle(), int(A::LineStyleDouble));
        QCOMPARE(kept.attributesAtIndex(4).strikethroughStyle(), int(A::LineStyleSingle));

        // Images in other formats are written as PNG; what is no image is left out.
        const QByteArray bmp = imageBytes(Qt::green, "BMP");
        const QWAttributedString images = throughRtf(join({
            { u"\uFFFC"_s, attachment(bmp, u"green.bmp"_s) },
            { u"\uFFFC"_s, attachment("not an image") },
            { u"\uFFFC"_s, A() },
            { u"x"_s, attachment(bmp) },
        }));
        QCOMPARE(images.string(), u"\uFFFC\uFFFCx"_s);
        const A converted = images.attributesAtIndex(0);
        QVERIFY(converted.attachment().startsWith("\x89PNG"));
        QCOMPARE(QImage::fromData(converted.attachment()).pixelColor(3, 2), QColor(Qt::green));
        QCOMPARE(converted.attachmentFileName(), u"green.bmp"_s);
        QCOMPARE(images.attributesAtIndex(1), A());
        QCOMPARE(images.attributesAtIndex(2), A());
    }

    void documentShape()
    {
        QWRtfWriter writer;
        writer.setDefaultFontFamily(u"DejaVu Sans"_s);
        const QByteArray rtf = writer.write(join({
            { u"é日😀\uF8FF"_s, A() },
            { u"x"_s, with([](A &a) { a.setFontFamily(u"Courier"_s); }) },
        }));
        QVERIFY(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0"));
        QVERIFY(
            rtf.contains("{\\f0\\fnil\\fcharset0 DejaVu Sans;}{\\f1\\fnil\\fcharset0 Courier;}"));
        // Every non-ASCII character as a signed 16-bit \uN with a fallback; two for a pair.
        QVERIFY(rtf.contains("\\u233\\'e9\\u26085\\'3f\\u-10179\\'3f\\u-8704\\'3f\\u-1793\\'3f"));
        for (const char byte : rtf)
            QVERIFY(byte > 0 && byte < 0x7F);
        // Nothing about the document, such as its information or page, is written.
        const QRegularExpression documentWords(u"\\\\(info|title|author|creatim|paper[wh]|"
                                               u"marg[lrtb]|pg[wh]sxn|landscape|view(kind|w|h)|"
                                               u"deftab|margmirror|gutter)\\b"_s);
        QVERIFY(!documentWords.match(QString::fromLatin1(rtf)).hasMatch());
    }

    // Pictures carry their size in pixels, read from the image file's header.
    void pictureSizes()
    {
        QImage image(7, 5, QImage::Format_RGB32);
        image.fill(Qt::yellow);
        QList<QByteArray> files;
        for (const bool progressive : { false, true }) {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            QImageWriter writer(&buffer, "JPEG");
            writer.setProgressiveScanWrite(progressive);
            QVERIFY(writer.write(image));
            files.append(bytes);
        }
        files.append(imageBytes(Qt::yellow, "PNG"));
        files.append(imageBytes(Qt::yellow, "PNG").first(20)); // no room for the size
        for (const QByteArray &file : std::as_const(files)) {
            const QByteArray rtf
                = QWRtfWriter().write(QWAttributedString(u"\uFFFC"_s, attachment(file)));
            QCOMPARE(rtf.contains("\\picw7\\pich5\\picwgoal"), file.size() > 20);
        }
    }

    // pandoc's RTF reader finds the same text, formatting, links and images in what we write.
    void readByPandoc()
    {
        const A link = with([](A &a) { a.setLink(u"https://example.org/a?b=1&c=2"_s); });
        const QWAttributedString text = join({
            { u"Plain "_s, A() },
            { u"bold"_s, with([](A &a) { a.setBold(true); }) },
            { u" "_s, A() },
            { u"italic"_s, with([](A &a) { a.setItalic(true); }) },
            { u" "_s, A() },
            { u"under"_s, with([](A &a) { a.setUnderlineStyle(A::LineStyleSingle); }) },
            { u" "_s, A() },
            { u"struck"_s, with([](A &a) { a.setStrikethroughStyle(A::LineStyleSingle); }) },
            { u" see "_s, A() },
            { u"the site"_s, link },
            { u" or "_s, A() },
            { u"write"_s, with([](A &a) { a.setLink(u"mailto:someone@example.org"_s); }) },
            { u" red big\n"_s, with([](A &a) {
                 a.setFont(QWFont(u"DejaVu Serif"_s, 18, false, false));
                 a.setForegroundColor(QWColor(1, 0, 0));
             }) },
            { u"Grüße, naïve café — “quoted” € ≠ 日本語 {braces} \\slash\n"_s, A() },
            { u"one\u2028two\n"_s, A() },
            { u"\uFFFC"_s, attachment(imageBytes(Qt::red, "PNG"), u"red.png"_s) },
            { u" end"_s, A() },
        });
        const PandocText pandoc = PandocText::fromBlocks(pandocBlocks(QWRtfWriter().write(text)));

        QCOMPARE(pandoc.text,
            u"Plain bold italic under struck see the site or write red big\n"
            "Grüße, naïve café — “quoted” € ≠ 日本語 {braces} \\slash\n"
            "one\u2028two\n end"_s);
        QCOMPARE(pandoc.strong, QStringList { u"bold"_s });
        QCOMPARE(pandoc.emphasized, QStringList { u"italic"_s });
        QCOMPARE(pandoc.underlined, QStringList { u"under"_s });
        QCOMPARE(pandoc.struck, QStringList { u"struck"_s });
        const QList<std::pair<QString, QString>> links { { u"the site"_s,
                                                             u"https://example.org/a?b=1&c=2"_s },
            { u"write"_s, u"mailto:someone@example.org"_s } };
        QCOMPARE(pandoc.links, links);
        QCOMPARE(pandoc.images, 1);
    }
};

QTEST_MAIN(TestQWRtfWriter)
#include "TestQWRtfWriter.moc"
