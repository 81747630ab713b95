#include "kit/QWAttributedString.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "support/QWTestImages.h"

#include <QImage>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include <limits>

Q_DECLARE_METATYPE(QWTextAttributes)

using namespace Qt::Literals::StringLiterals;

// Failure messages: the text and, per run, its range and the attributes that are set.
char *toString(const QWAttributedString &text)
{
    QString description = u'"' + text.string() + u'"';
    for (const QWTextRun &run : text.runs()) {
        QWKeyedArchiver attributes;
        run.attributes.encodeWithCoder(attributes);
        QStringList keys;
        for (const auto &entry : attributes.entries())
            keys.append(entry.first);
        description += u" [%1+%2 %3]"_s.arg(run.location).arg(run.length).arg(keys.join(u','));
    }
    return QTest::toString(description);
}

namespace {

using A = QWTextAttributes;

QWTextAttributes bold()
{
    QWTextAttributes attributes;
    attributes.setBold(true);
    return attributes;
}

QWTextAttributes linked(const QString &url)
{
    QWTextAttributes attributes;
    attributes.setLink(url);
    return attributes;
}

QByteArray pngBytes(const QColor &color, int width)
{
    return imageFileBytes(color, QSize(width, 3), "PNG", QImage::Format_ARGB32);
}

QWAttributedString throughDocument(const QWAttributedString &text)
{
    QTextDocument document;
    text.toTextDocument(document);
    return QWAttributedString::fromTextDocument(document);
}

QWArchiveValue runValue(
    QWArchiveValue location, QWArchiveValue length, QWArchiveValue::Entries attributes = {})
{
    QWArchiveValue::Entries entries { { QStringLiteral("location"), std::move(location) },
        { QStringLiteral("length"), std::move(length) } };
    for (auto &entry : attributes)
        entries.push_back(std::move(entry));
    return QWArchiveValue::fromObject(QStringLiteral("QWTextRun"), std::move(entries));
}

std::optional<QWAttributedString> decodeRoot(QWArchiveValue::Entries entries)
{
    const QWArchiveValue root
        = QWArchiveValue::fromObject(QStringLiteral("QWAttributedString"), std::move(entries));
    return QWAttributedString::fromArchivedData(QWKeyedArchiver::archivedDataWithRootValue(root));
}

} // namespace

class TestQWAttributedString final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runsAreKeptInOneForm()
    {
        const QString text = QStringLiteral("hello world");
        // Out of order, overlapping, partly outside, negative, and equal neighbours.
        const QWAttributedString messy(text,
            { { 6, 100, linked(QStringLiteral("a")) }, { -3, 5, bold() },
                { 4, 4, linked(QStringLiteral("b")) }, { 2, 2, bold() }, { 9, -4, bold() } });
        const QList<QWTextRun> expected { { 0, 4, bold() }, { 4, 4, linked(QStringLiteral("b")) },
            { 8, 3, linked(QStringLiteral("a")) } };
        QCOMPARE(messy.runs(), expected);
        QCOMPARE(messy, QWAttributedString(text, expected));
        QVERIFY(messy != QWAttributedString(text));

        // Gaps carry no attributes and the same text built in pieces compares equal.
        const QWAttributedString gaps(text, { { 2, 1, bold() } });
        QCOMPARE(gaps.runs().size(), 3);
        QWMutableAttributedString pieces;
        pieces.appendString(QStringLiteral("he"));
        pieces.appendString(QStringLiteral("l"), bold());
        pieces.appendString(QStringLiteral("lo"));
        pieces.appendString(QStringLiteral(" world"));
        QCOMPARE(pieces.attributedString(), gaps);

        QCOMPARE(gaps.attributesAtIndex(2), bold());
        QCOMPARE(gaps.attributesAtIndex(3), QWTextAttributes());
        QCOMPARE(gaps.runAtIndex(7).location, 3);
        QCOMPARE(gaps.runAtIndex(7).length, 8);
        QCOMPARE(gaps.attributesAtIndex(-1), QWTextAttributes());
        QCOMPARE(gaps.runAtIndex(text.size()).length, 0);
        QVERIFY(QWAttributedString().runs().isEmpty());
        QVERIFY(QWAttributedString(QString(), bold()).runs().isEmpty());
    }

    void substringsAndEditing()
    {
        const QWAttributedString text(
            QStringLiteral("abcdef"), { { 0, 2, bold() }, { 2, 4, linked(QStringLiteral("x")) } });
        const QWAttributedString middle = text.attributedSubstringFromRange(1, 3);
        QCOMPARE(middle.string(), QStringLiteral("bcd"));
        QCOMPARE(middle.runs(),
            (QList<QWTextRun> { { 0, 1, bold() }, { 1, 2, linked(QStringLiteral("x")) } }));
        QCOMPARE(text.attributedSubstringFromRange(-5, 100), text);
        QVERIFY(text.attributedSubstringFromRange(4, -1).isEmpty());
        QVERIFY(
            text.attributedSubstringFromRange(std::numeric_limits<qsizetype>::max(), 9).isEmpty());

        QWMutableAttributedString edit(text);
        edit.modifyAttributesRange(1, 2, [](QWTextAttributes &a) { a.setTagName(u"#t"_s); });
        QCOMPARE(edit.runs().size(), 4);
        QCOMPARE(edit.attributesAtIndex(2).link(), QStringLiteral("x"));
        QCOMPARE(edit.attributesAtIndex(2).tagName(), QStringLiteral("#t"));
        QVERIFY(edit.attributesAtIndex(1).isBold());
        // Typing at the end of a run continues it; replacing takes the replaced attributes.
        edit.replaceCharactersInRangeWithString(2, 0, QStringLiteral("++"));
        QCOMPARE(edit.string(), QStringLiteral("ab++cdef"));
        QCOMPARE(edit.runs().size(), 4);
        QCOMPARE(edit.attributesAtIndex(3), edit.attributesAtIndex(1));
        edit.replaceCharactersInRangeWithString(0, 1, QStringLiteral("Z"));
        QCOMPARE(edit.attributesAtIndex(0), bold());
        // Undoing the changes gives back the original, runs merged again.
        edit.deleteCharactersInRange(2, 2);
        edit.replaceCharactersInRangeWithString(0, 1, QStringLiteral("a"));
        edit.modifyAttributesRange(0, 100, [](QWTextAttributes &a) { a.setTagName({}); });
        QCOMPARE(edit.attributedString(), text);
        edit.setAttributesRange(QWTextAttributes(), -10, 1000);
        QCOMPARE(edit.attributedString(), QWAttributedString(QStringLiteral("abcdef")));
        edit.replaceCharactersInRangeWithAttributedString(99, 0, middle);
        QCOMPARE(edit.attributedString().attributedSubstringFromRange(6, 3), middle);
    }

    void documentRoundTrip_data()
    {
        QTest::addColumn<QWTextAttributes>("attributes");
        QTest::addColumn<int>("qtUnderline");

        QWTextAttributes a;
        a.setFontFamily(QStringLiteral("Helvetica Neue"));
        a.setFontSize(13.5);
        QTest::newRow("family and size") << a << int(QTextCharFormat::NoUnderline);
        QTest::newRow("bold") << bold() << int(QTextCharFormat::NoUnderline);
        a = {};
        a.setItalic(true);
        QTest::newRow("italic") << a << int(QTextCharFormat::NoUnderline);
        a = {};
        a.setForegroundColor(QWColor(0.123456789012345, 2.0 / 3.0, 0.999999, 0.5));
        a.setStrokeColor(QWColor(0.1, 0.2, 0.3));
        QTest::newRow("exact colours") << a << int(QTextCharFormat::NoUnderline);
        a = {};
        a.setStrikethroughStyle(A::LineStyleThick | A::LinePatternDash);
        a.setLink(QStringLiteral("https://example.org/a?b=c"));
        a.setTagName(QStringLiteral("#work"));
        QTest::newRow("strike, link, tag") << a << int(QTextCharFormat::NoUnderline);

        const std::pair<int, QTextCharFormat::UnderlineStyle> underlines[] = {
            { A::LineStyleSingle, QTextCharFormat::SingleUnderline },
            { A::LineStyleThick, QTextCharFormat::SingleUnderline },
            { A::LineStyleDouble, QTextCharFormat::SingleUnderline },
            { A::LineStyleSingle | A::LinePatternDot, QTextCharFormat::DotLine },
            { A::LineStyleSingle | A::LinePatternDash, QTextCharFormat::DashUnderline },
            { A::LineStyleDouble | A::LinePatternDashDot, QTextCharFormat::DashDotLine },
            { A::LineStyleSingle | A::LinePatternDashDotDot, QTextCharFormat::DashDotDotLine },
            { A::LineStyleSingle | A::LinePatternWave, QTextCharFormat::WaveUnderline },
            { A::LineStyleSingle | A::LineByWord, QTextCharFormat::SingleUnderline },
        };
        for (const auto &[style, qtStyle] : underlines) {
            a = {};
            a.setUnderlineStyle(style);
            QTest::addRow("underline 0x%x", style) << a << int(qtStyle);
        }
    }

    void documentRoundTrip()
    {
        QFETCH(QWTextAttributes, attributes);
        QFETCH(int, qtUnderline);
        const QWAttributedString text(
            QStringLiteral("plain styled plain"), { { 6, 6, attributes } });
        QTextDocument document;
        text.toTextDocument(document);
        QCOMPARE(QWAttributedString::fromTextDocument(document), text);

        // What the editor shows, not only what it remembers.
        QTextCursor cursor(&document);
        cursor.setPosition(8);
        const QTextCharFormat shown = cursor.charFormat();
        QCOMPARE(int(shown.underlineStyle()), qtUnderline);
        QCOMPARE(shown.fontWeight() >= QFont::Bold, attributes.isBold());
        QCOMPARE(shown.fontItalic(), attributes.isItalic());
        QCOMPARE(shown.fontStrikeOut(), attributes.strikethroughStyle() != 0);
        QCOMPARE(shown.anchorHref(), attributes.link());
        if (attributes.fontSize() > 0)
            QCOMPARE(shown.fontPointSize(), attributes.fontSize());
        if (!attributes.fontFamily().isEmpty())
            QCOMPARE(shown.fontFamilies().toStringList().value(0), attributes.fontFamily());
        if (attributes.foregroundColor())
            QCOMPARE(shown.foreground().color(), attributes.foregroundColor()->toQColor());
    }

    void paragraphsAndSeparators()
    {
        QCOMPARE(throughDocument(QWAttributedString()), QWAttributedString());

        QTextDocument document;
        QWAttributedString(QStringLiteral("a\r\nb\rc\u2029d\ne\u2028f\n\n"))
            .toTextDocument(document);
        QCOMPARE(document.blockCount(), 7);
        QCOMPARE(QWAttributedString::fromTextDocument(document).string(),
            QStringLiteral("a\nb\nc\nd\ne\u2028f\n\n"));

        // The separators keep their own attributes, even a "\r\n" split across two runs.
        const QWAttributedString styled(
            QStringLiteral("one\ntwo\n\nthree"), { { 3, 1, bold() }, { 7, 1, linked(u"l"_s) } });
        QCOMPARE(throughDocument(styled), styled);
        const QWAttributedString split(
            QStringLiteral("x\r\ny"), { { 1, 1, bold() }, { 2, 1, linked(u"l"_s) } });
        QCOMPARE(throughDocument(split),
            QWAttributedString(QStringLiteral("x\ny"), { { 1, 1, bold() } }));
    }

    void attachments()
    {
        QWTextAttributes red;
        red.setAttachment(pngBytes(Qt::red, 5));
        red.setAttachmentFileName(QStringLiteral("red.png"));
        QWTextAttributes blue = red;
        blue.setAttachment(pngBytes(Qt::blue, 7));
        blue.setAttachmentFileName({});
        blue.setBold(true);
        const QWAttributedString text(QStringLiteral("\uFFFC and \uFFFC\uFFFC\n\uFFFC"),
            { { 0, 1, red }, { 6, 1, blue }, { 7, 1, red } });
        QCOMPARE(throughDocument(text), text);

        // A pasted image is a QImage resource; it comes back as PNG of the same picture.
        QTextDocument document;
        QImage image(6, 4, QImage::Format_ARGB32);
        image.fill(Qt::green);
        document.addResource(
            QTextDocument::ImageResource, QUrl(u"pasted"_s), QVariant::fromValue(image));
        QTextCursor cursor(&document);
        cursor.insertText(QStringLiteral("x"));
        cursor.insertImage(QStringLiteral("pasted"));
        cursor.insertText(QStringLiteral("y"));
        // Text can share the format of an image; only U+FFFC is the image.
        QTextImageFormat sameFormat;
        sameFormat.setName(QStringLiteral("pasted"));
        cursor.insertText(QStringLiteral("z\uFFFC"), sameFormat);
        const QWAttributedString read = QWAttributedString::fromTextDocument(document);
        QCOMPARE(read.string(), QStringLiteral("x\uFFFCyz\uFFFC"));
        QVERIFY(!read.attributesAtIndex(2).hasAttachment());
        QVERIFY(!read.attributesAtIndex(3).hasAttachment());
        QCOMPARE(read.attributesAtIndex(4), read.attributesAtIndex(1));
        const QByteArray bytes = read.attributesAtIndex(1).attachment();
        QVERIFY(bytes.startsWith("\x89PNG"));
        QCOMPARE(QImage::fromData(bytes).convertToFormat(image.format()), image);
    }

    void editorChangesWin()
    {
        QWTextAttributes a;
        a.setForegroundColor(QWColor(0.123456789, 0.5, 0.25));
        a.setUnderlineStyle(A::LineStyleDouble | A::LinePatternDot);
        a.setStrikethroughStyle(A::LineStyleThick);
        QTextDocument document;
        QWAttributedString(QStringLiteral("abc"), a).toTextDocument(document);

        QTextCursor cursor(&document);
        cursor.setPosition(0);
        cursor.setPosition(1, QTextCursor::KeepAnchor);
        QTextCharFormat recolour;
        recolour.setForeground(QColor(Qt::red));
        recolour.setFontUnderline(false);
        recolour.setFontStrikeOut(false);
        cursor.mergeCharFormat(recolour);
        cursor.setPosition(1);
        cursor.setPosition(2, QTextCursor::KeepAnchor);
        QTextCharFormat plainUnderline;
        plainUnderline.setUnderlineStyle(QTextCharFormat::SingleUnderline);
        cursor.mergeCharFormat(plainUnderline);

        const QWAttributedString read = QWAttributedString::fromTextDocument(document);
        QCOMPARE(read.attributesAtIndex(0).foregroundColor(), QWColor::fromQColor(Qt::red));
        QCOMPARE(read.attributesAtIndex(0).underlineStyle(), 0);
        QCOMPARE(read.attributesAtIndex(0).strikethroughStyle(), 0);
        QCOMPARE(read.attributesAtIndex(1).underlineStyle(), int(A::LineStyleSingle));
        QCOMPARE(read.attributesAtIndex(1).foregroundColor(), a.foregroundColor());
        QCOMPARE(read.attributesAtIndex(2), a);
    }

    void archiveRoundTrip()
    {
        QWTextAttributes all;
        all.setFont(QWFont(QStringLiteral("Menlo"), 11.25, true, true));
        all.setForegroundColor(QWColor(0.1, 0.2, 0.3, 0.4));
        all.setUnderlineStyle(A::LineStyleSingle | A::LinePatternDot);
        all.setStrikethroughStyle(A::LineStyleSingle);
        all.setStrokeColor(QWColor(1.0 / 3.0, 0.0, 1.0));
        all.setLink(QStringLiteral("#tag"));
        all.setTagName(QStringLiteral("#tag"));
        QWTextAttributes image;
        image.setAttachment(pngBytes(Qt::black, 2));
        image.setAttachmentFileName(QStringLiteral("dot.png"));
        const QWAttributedString text(
            QStringLiteral("#tag \uFFFC fin"), { { 0, 4, all }, { 5, 1, image } });
        const QByteArray data = text.archivedData();
        QCOMPARE(QWAttributedString::fromArchivedData(data), text);
        QCOMPARE(QWAttributedString::fromArchivedData(QWAttributedString().archivedData()),
            QWAttributedString());

        // Plain text is readable as such, and unset attributes are not written.
        const QWArchiveValue root = QWKeyedUnarchiver::parse(data).root;
        QCOMPARE(root.valueForKey(u"string")->toString(), text.string());
        const QWArchiveValue::Array &runs = root.valueForKey(u"runs")->toArray();
        QCOMPARE(runs.size(), size_t(4));
        QCOMPARE(runs.at(0).className(), QStringLiteral("QWTextRun"));
        QCOMPARE(runs.at(0).entries().size(), size_t(12));
        QCOMPARE(runs.at(1).entries().size(), size_t(2));
        QCOMPARE(runs.at(2).valueForKey(u"attachment")->toData(), image.attachment());
    }

    void hostileArchives()
    {
        using V = QWArchiveValue;
        const QString text = QStringLiteral("abcdef");
        constexpr qint64 huge = std::numeric_limits<qint64>::max();
        constexpr qint64 tiny = std::numeric_limits<qint64>::min();
        const V::Array runs {
            runValue(V::fromInteger(3), V::fromInteger(huge), { { u"bold"_s, V::fromBool(true) } }),
            runValue(V::fromInteger(tiny), V::fromInteger(huge)),
            runValue(V::fromInteger(huge), V::fromInteger(huge)),
            runValue(V::fromInteger(-2), V::fromInteger(3), { { u"italic"_s, V::fromBool(true) } }),
            runValue(V::fromInteger(2), V::fromInteger(tiny)),
            runValue(V::fromString(u"1"_s), V::fromInteger(1)),
            runValue(V::fromInteger(1), V::fromDouble(1.0)),
            V::fromString(u"not a run"_s),
            V::fromObject(u"NSObject"_s, {}),
            runValue(V::fromInteger(2), V::fromInteger(1),
                { { u"fontSize"_s, V::fromDouble(std::numeric_limits<double>::quiet_NaN()) },
                    { u"fontFamily"_s, V::fromInteger(7) },
                    { u"underlineStyle"_s, V::fromInteger(qint64(1) << 40) },
                    { u"strikethroughStyle"_s, V::fromString(u"1"_s) },
                    { u"foregroundColor"_s, V::fromString(u"red"_s) },
                    { u"link"_s, V::fromData("x") } }),
        };
        QWTextAttributes italic;
        italic.setItalic(true);
        const std::optional<QWAttributedString> read = decodeRoot(
            { { u"string"_s, V::fromString(text) }, { u"runs"_s, V::fromArray(runs) } });
        QVERIFY(read);
        QCOMPARE(*read, QWAttributedString(text, { { 0, 1, italic }, { 3, 3, bold() } }));

        QCOMPARE(decodeRoot({ { u"string"_s, V::fromString(text) },
                     { u"runs"_s, V::fromString(u"oops"_s) } }),
            QWAttributedString(text));
        QVERIFY(!decodeRoot({ { u"runs"_s, V::fromArray(runs) } }));
        QVERIFY(!decodeRoot({ { u"string"_s, V::fromData("abc") } }));
        QVERIFY(!QWAttributedString::fromArchivedData(QByteArray()));
        QVERIFY(!QWAttributedString::fromArchivedData("\xd9\xd9\xf7\xa1garbage"));
        // A truncated archive never reads as a string it does not hold.
        const QByteArray whole = QWAttributedString(text, bold()).archivedData();
        for (qsizetype size = 0; size < whole.size(); ++size) {
            const auto partial = QWAttributedString::fromArchivedData(whole.first(size));
            QVERIFY(!partial || text.startsWith(partial->string()));
        }
    }
};

QTEST_MAIN(TestQWAttributedString)
#include "TestQWAttributedString.moc"
