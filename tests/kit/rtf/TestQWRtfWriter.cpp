#include "../QWRichTextDump.h"
#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfWriter.h"
#include "support/QWTestImages.h"

#include <QProcess>
#include <QTest>

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

QWAttributedString throughRtf(const QWAttributedString &text)
{
    const QWRtfReadResult result = QWRtfReader().read(QWRtfWriter().write(text));
    if (!result.isOk())
        qFatal("the writer's output does not read: %s", qPrintable(result.errorString()));
    return result.text;
}

} // namespace

class TestQWRtfWriter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What the reader makes of each document of data/cases is written as written.rtf, in
    // ASCII; it reads back the same, and pandoc reads it as pandoc.md. VELLUMO_UPDATE_GOLDEN=1
    // writes both anew.
    void writesWhatItReads_data()
    {
        QWRichTextDump::addCaseRows(QStringLiteral(VELLUMO_TEST_DATA_DIR "/cases"));
    }

    void writesWhatItReads()
    {
        QFETCH(QString, folder);
        const QWAttributedString text
            = QWRtfReader().read(fileBytes(folder + u"/input.rtf"_s)).text;
        const QByteArray rtf = QWRtfWriter().write(text);
        QWRichTextDump::compareWithFile(folder + u"/written.rtf"_s, rtf);
        QVERIFY(std::all_of(rtf.cbegin(), rtf.cend(), [](char c) { return c > 0 && c < 0x7F; }));
        QCOMPARE(throughRtf(text), text);

        // What another program's RTF reader finds in it, as Markdown.
        QProcess pandoc;
        pandoc.start(
            u"pandoc"_s, { u"-f"_s, u"rtf"_s, u"-t"_s, u"markdown-smart"_s, u"--wrap=none"_s });
        QVERIFY2(pandoc.waitForStarted(), "pandoc is not installed; ./build.sh installs it");
        pandoc.write(rtf);
        pandoc.closeWriteChannel();
        QVERIFY(pandoc.waitForFinished());
        QWRichTextDump::compareWithFile(folder + u"/pandoc.md"_s, pandoc.readAllStandardOutput());
    }

    // Text that no document of data/cases reads as.
    void roundTrip_data()
    {
        QTest::addColumn<QWAttributedString>("text");
        const A bold = with([](A &a) { a.setBold(true); });

        QTest::newRow("empty") << QWAttributedString();
        QTest::newRow("breaks") << QWAttributedString(u"\na\u2028\n\n"_s, bold);
        QTest::newRow("lone surrogate") << QWAttributedString(u"a"_s + QChar(0xD83D) + u"b"_s);
        QTest::newRow("odd font name") << QWAttributedString(
            u"x"_s, with([](A &a) { a.setFont(QWFont(u"Odd; {Name}\\ é"_s, 10.5, false, true)); }));
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
            // Images in other formats are written as PNG; what is no image is left out.
            { u"\uFFFC"_s, with([](A &a) {
                 a.setAttachment(imageFileBytes(Qt::green, QSize(7, 5), "BMP"));
                 a.setAttachmentFileName(u"green.bmp"_s);
             }) },
            { u"\uFFFC"_s, with([](A &a) { a.setAttachment("not an image"); }) },
        }));
        QCOMPARE(QWRichTextDump::describe(kept.attributedSubstringFromRange(0, 14)),
            u"\"a\"\n\"b\" color=1,0.30196078431372547,0\n\"c\" size=12.5\n\"d\" underline=double\n"
            "\"e\" strike=single\n\"f\\n\"\n\"g\\n\"\n\"h\\n\"\n\"i\\u2028j\"\n"_s);
        QCOMPARE(kept.string().mid(14), u"\uFFFC"_s);
        const A image = kept.attributesAtIndex(14);
        QCOMPARE(QImage::fromData(image.attachment(), "PNG").pixelColor(3, 2), QColor(Qt::green));
        QCOMPARE(image.attachmentFileName(), u"green.bmp"_s);
    }
};

QTEST_APPLESS_MAIN(TestQWRtfWriter)
#include "TestQWRtfWriter.moc"
