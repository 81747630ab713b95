#include "QWRichTextDump.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "kit/rtf/QWRtfReader.h"

#include <QDir>
#include <QTest>
#include <QTextCursor>
#include <QTextDocument>

#include <limits>

namespace {

using A = QWTextAttributes;

A bold()
{
    A attributes;
    attributes.setBold(true);
    return attributes;
}

A linked(const QString &url)
{
    A attributes;
    attributes.setLink(url);
    return attributes;
}

// Every attribute, a tag and a stroke colour among them, which no RTF document holds.
A everything()
{
    A a;
    a.setFont(QWFont(u"Helvetica Neue"_s, 13.5, true, true));
    a.setForegroundColor(QWColor(0.123456789012345, 2.0 / 3.0, 0.999999, 0.5));
    a.setStrokeColor(QWColor(0.1, 0.2, 0.3));
    a.setUnderlineStyle(A::LineStyleDouble | A::LinePatternDashDot);
    a.setStrikethroughStyle(A::LineStyleThick | A::LinePatternDash);
    a.setLink(u"https://example.org/a?b=c"_s);
    a.setTagName(u"#work"_s);
    return a;
}

} // namespace

class TestQWAttributedString final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsAreKeptInOneForm()
    {
        const QString text = u"hello world"_s;
        // Out of order, overlapping, partly outside, negative, and equal neighbours.
        const QWAttributedString messy(text,
            { { 6, 100, linked(u"a"_s) }, { -3, 5, bold() }, { 4, 4, linked(u"b"_s) },
                { 2, 2, bold() }, { 9, -4, bold() } });
        QCOMPARE(QWRichTextDump::describe(messy),
            u"\"hell\" bold\n\"o wo\" link=\"b\"\n\"rld\" link=\"a\"\n"_s);

        // Gaps carry no attributes, and the same text built in pieces compares equal.
        const QWAttributedString gaps(text, { { 2, 1, bold() } });
        QWMutableAttributedString pieces;
        for (const QString &piece : { u"he"_s, u"l"_s, u"lo"_s, u" world"_s })
            pieces.appendString(piece, piece == u"l" ? bold() : A());
        QCOMPARE(pieces.attributedString(), gaps);
        QCOMPARE(gaps.runAtIndex(7), (QWTextRun { 3, 8, A() }));
        QCOMPARE(gaps.attributesAtIndex(-1), A());
        QCOMPARE(gaps.runAtIndex(text.size()).length, 0);
        QVERIFY(QWAttributedString(QString(), bold()).runs().isEmpty());
    }

    void substringsAndEditing()
    {
        const QWAttributedString text(u"abcdef"_s, { { 0, 2, bold() }, { 2, 4, linked(u"x"_s) } });
        const QWAttributedString middle = text.attributedSubstringFromRange(1, 3);
        QCOMPARE(QWRichTextDump::describe(middle), u"\"b\" bold\n\"cd\" link=\"x\"\n"_s);
        QCOMPARE(text.attributedSubstringFromRange(-5, 100), text);
        QVERIFY(text.attributedSubstringFromRange(4, -1).isEmpty());
        QVERIFY(
            text.attributedSubstringFromRange(std::numeric_limits<qsizetype>::max(), 9).isEmpty());

        QWMutableAttributedString edit(text);
        edit.modifyAttributesRange(1, 2, [](A &a) { a.setTagName(u"#t"_s); });
        // Typing at the end of a run continues it; replacing takes the replaced attributes.
        edit.replaceCharactersInRangeWithString(2, 0, u"++"_s);
        edit.replaceCharactersInRangeWithString(0, 1, u"Z"_s);
        QCOMPARE(QWRichTextDump::describe(edit.attributedString()),
            u"\"Z\" bold\n\"b++\" bold tag=\"#t\"\n\"c\" link=\"x\" tag=\"#t\"\n"
            "\"def\" link=\"x\"\n"_s);
        // Undoing the changes gives back the original, runs merged again.
        edit.deleteCharactersInRange(2, 2);
        edit.replaceCharactersInRangeWithString(0, 1, u"a"_s);
        edit.modifyAttributesRange(0, 100, [](A &a) { a.setTagName({}); });
        QCOMPARE(edit.attributedString(), text);
        edit.setAttributesRange(A(), -10, 1000);
        QCOMPARE(edit.attributedString(), QWAttributedString(u"abcdef"_s));
        edit.replaceCharactersInRangeWithAttributedString(99, 0, middle);
        QCOMPARE(edit.attributedString().attributedSubstringFromRange(6, 3), middle);
    }

    // Through the editor and through the archive. The documents of the RTF tests come as the
    // reader makes them.
    void roundTrips_data()
    {
        QTest::addColumn<QWAttributedString>("text");
        QTest::addColumn<QWAttributedString>("edited"); // as the editor gives it back
        QTest::newRow("empty") << QWAttributedString() << QWAttributedString();
        QTest::newRow("separators") << QWAttributedString(u"a\r\nb\rc\u2029d\ne\u2028f\n\n"_s)
                                    << QWAttributedString(u"a\nb\nc\nd\ne\u2028f\n\n"_s);
        // The separators keep their own attributes, even a "\r\n" split across two runs.
        const QWAttributedString styled(
            u"one\ntwo\n\nthree"_s, { { 3, 1, bold() }, { 7, 1, linked(u"l"_s) } });
        QTest::newRow("styled separators") << styled << styled;
        QTest::newRow("split separator")
            << QWAttributedString(u"x\r\ny"_s, { { 1, 1, bold() }, { 2, 1, linked(u"l"_s) } })
            << QWAttributedString(u"x\ny"_s, { { 1, 1, bold() } });
        A wave;
        wave.setUnderlineStyle(A::LineStyleDouble | A::LinePatternWave | A::LineByWord);
        const QWAttributedString rich(
            u"plain styled wave"_s, { { 6, 6, everything() }, { 13, 4, wave } });
        QTest::newRow("what no RTF document holds") << rich << rich;
        const QDir cases(
            QDir::cleanPath(QStringLiteral(VELLUMO_TEST_DATA_DIR "/../rtf/data/cases")));
        QVERIFY(cases.exists());
        for (const QString &name : cases.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QByteArray rtf = fileBytes(cases.filePath(name + u"/input.rtf"_s));
            const QWAttributedString text = QWRtfReader().read(rtf).text;
            QVERIFY(!text.isEmpty());
            QTest::newRow(qPrintable(name)) << text << text;
        }
    }

    void roundTrips()
    {
        QFETCH(QWAttributedString, text);
        QTextDocument document;
        text.toTextDocument(document);
        QTEST(QWAttributedString::fromTextDocument(document), "edited");
        QCOMPARE(QWAttributedString::fromArchivedData(text.archivedData()), text);
    }

    // What the user changes in the editor wins over what the editor could not show: recoloured
    // without lines, then underlined plainly.
    void userChangesInTheEditorWin()
    {
        const A a = everything();
        QTextDocument document;
        QWAttributedString(u"plain styled"_s, a).toTextDocument(document);
        QTextCursor cursor(&document);
        QTextCharFormat change;
        change.setForeground(QColor(Qt::red));
        change.setFontUnderline(false);
        change.setFontStrikeOut(false);
        cursor.setPosition(6);
        cursor.setPosition(7, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(change);
        change = QTextCharFormat();
        change.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        cursor.setPosition(7);
        cursor.setPosition(8, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(change);
        A recoloured = a;
        recoloured.setForegroundColor(QWColor(1, 0, 0));
        recoloured.setUnderlineStyle(0);
        recoloured.setStrikethroughStyle(0);
        A underlined = a;
        underlined.setUnderlineStyle(A::LineStyleSingle);
        QCOMPARE(QWAttributedString::fromTextDocument(document).attributedSubstringFromRange(6, 3),
            QWAttributedString(
                u"sty"_s, { { 0, 1, recoloured }, { 1, 1, underlined }, { 2, 1, a } }));
    }

    void pastedImagesBecomePng()
    {
        // A pasted image is a QImage resource; it comes back as PNG of the same picture. Text
        // can share the format of an image; only U+FFFC is the image.
        QTextDocument document;
        QImage image(6, 4, QImage::Format_ARGB32);
        image.fill(Qt::green);
        document.addResource(
            QTextDocument::ImageResource, QUrl(u"pasted"_s), QVariant::fromValue(image));
        QTextCursor cursor(&document);
        cursor.insertText(u"x"_s);
        cursor.insertImage(u"pasted"_s);
        QTextImageFormat sameFormat;
        sameFormat.setName(u"pasted"_s);
        cursor.insertText(u"yz\uFFFC"_s, sameFormat);
        const QWAttributedString read = QWAttributedString::fromTextDocument(document);
        QCOMPARE(read.string(), u"x\uFFFCyz\uFFFC"_s);
        QCOMPARE(read.attributesAtIndex(4), read.attributesAtIndex(1));
        QVERIFY(!read.attributesAtIndex(2).hasAttachment());
        const QByteArray bytes = read.attributesAtIndex(1).attachment();
        QCOMPARE(QImage::fromData(bytes, "PNG").convertToFormat(image.format()), image);
    }

    // Runs out of the text, of the wrong kinds or with hostile attributes are cut to the text
    // or left out; an archive cut short never reads as a string it does not hold.
    void hostileArchives()
    {
        using V = QWArchiveValue;
        constexpr qint64 huge = std::numeric_limits<qint64>::max();
        constexpr qint64 tiny = std::numeric_limits<qint64>::min();
        const auto run = [](V location, V length, V::Entries attributes = {}) {
            attributes.insert(attributes.begin(),
                { { u"location"_s, std::move(location) }, { u"length"_s, std::move(length) } });
            return V::fromObject(u"QWTextRun"_s, std::move(attributes));
        };
        const auto i = &V::fromInteger;
        const V::Array runs { run(i(3), i(huge), { { u"bold"_s, V::fromBool(true) } }),
            run(i(tiny), i(huge)), run(i(huge), i(huge)), run(i(2), i(tiny)),
            run(i(-2), i(3), { { u"italic"_s, V::fromBool(true) } }),
            run(V::fromString(u"1"_s), i(1)), V::fromObject(u"NSObject"_s, {}),
            run(i(2), i(1),
                { { u"fontSize"_s, V::fromDouble(std::numeric_limits<double>::quiet_NaN()) },
                    { u"fontFamily"_s, i(7) }, { u"underlineStyle"_s, i(qint64(1) << 40) },
                    { u"strikethroughStyle"_s, V::fromString(u"1"_s) },
                    { u"foregroundColor"_s, V::fromString(u"red"_s) },
                    { u"link"_s, V::fromData("x") } }) };
        const auto decode = [](V::Entries entries) {
            return QWAttributedString::fromArchivedData(QWKeyedArchiver::archivedDataWithRootValue(
                V::fromObject(u"QWAttributedString"_s, std::move(entries))));
        };
        const V text = V::fromString(u"abcdef"_s);
        const auto read = decode({ { u"string"_s, text }, { u"runs"_s, V::fromArray(runs) } });
        QCOMPARE(QWRichTextDump::describe(read.value_or(QWAttributedString())),
            u"\"a\" italic\n\"bc\"\n\"def\" bold\n"_s);
        QCOMPARE(decode({ { u"string"_s, text }, { u"runs"_s, V::fromString(u"oops"_s) } }),
            QWAttributedString(u"abcdef"_s));
        QVERIFY(!decode({ { u"runs"_s, V::fromArray(runs) } }));
        QVERIFY(!decode({ { u"string"_s, V::fromData("abc") } }));
        QVERIFY(!QWAttributedString::fromArchivedData("\xd9\xd9\xf7\xa1garbage"));
        const QByteArray whole = QWAttributedString(u"abcdef"_s, bold()).archivedData();
        for (qsizetype size = 0; size < whole.size(); ++size) {
            const auto partial = QWAttributedString::fromArchivedData(whole.first(size));
            QVERIFY(!partial || u"abcdef"_s.startsWith(partial->string()));
        }
    }
};

QTEST_APPLESS_MAIN(TestQWAttributedString)
#include "TestQWAttributedString.moc"
