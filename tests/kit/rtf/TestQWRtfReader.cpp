#include "kit/rtf/QWRtfReader.h"
#include "support/QWTestImages.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

using A = QWTextAttributes;
using Error = QWRtfReadResult::Error;

const QString dataFolder = QStringLiteral(VELLUMO_TEST_DATA_DIR "/rtf/");

QByteArray fixture(const QString &name)
{
    QFile file(dataFolder + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    return file.readAll();
}

QWAttributedString read(const QByteArray &rtf)
{
    return QWRtfReader().read(rtf).text;
}

// The body of a document: wraps text in the smallest RTF document.
QByteArray document(const QByteArray &body)
{
    return "{\\rtf1\\ansi " + body + '}';
}

QString textOf(const QByteArray &body)
{
    return read(document(body)).string();
}

// The attributes of the first occurrence of word, which must be formatted alike throughout.
A attributesOf(const QWAttributedString &text, const QString &word)
{
    const qsizetype at = text.string().indexOf(word);
    if (at < 0)
        qFatal("\"%s\" is not in the text", qPrintable(word));
    const QWTextRun run = text.runAtIndex(at);
    if (run.end() < at + word.size())
        qFatal("\"%s\" is not formatted alike throughout", qPrintable(word));
    return run.attributes;
}

A attributesIn(const QByteArray &body, const QString &word)
{
    return attributesOf(read(document(body)), word);
}

A underlined(int style)
{
    A attributes;
    attributes.setUnderlineStyle(style);
    return attributes;
}

QByteArray pngBytes()
{
    QFile file(dataFolder + u"package.rtfd/red square.png"_s);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

QByteArray jpegBytes()
{
    return imageFileBytes(Qt::blue, QSize(5, 3), "JPEG");
}

// The Unicode text Python's own codec makes of the bytes 0x80 to 0xFF, undefined ones left out.
QString pythonDecoding(const QString &codec)
{
    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { u"-c"_s,
            u"import sys; sys.stdout.buffer.write(bytes(range(0x80, 0x100)).decode('%1', "
            u"'ignore').encode('utf-8'))"_s.arg(codec) });
    if (!python.waitForFinished() || python.exitCode() != 0)
        qFatal("python3 failed");
    return QString::fromUtf8(python.readAllStandardOutput());
}

} // namespace

class TestQWRtfReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsLibreOfficeDocument()
    {
        const QWRtfReadResult result = QWRtfReader().read(fixture(u"libreoffice.rtf"_s));
        QCOMPARE(result.error, Error::None);
        const QWAttributedString &text = result.text;
        const QStringList lines = text.string().split(u'\n');
        QCOMPARE(lines.size(), 16);
        QCOMPARE(lines[0], u"Plain bold italic both"_s);
        QCOMPARE(lines[1], u"single double thick dotted dash dotdash dotdotdash wave by words"_s);
        QCOMPARE(lines[2], u"struck twice"_s);
        QCOMPARE(lines[3], u"red blue large small serif"_s);
        QCOMPARE(lines[4], u"Visit the site today"_s);
        QCOMPARE(lines[5], u"Grüße, naïve café — “quoted” € ≠ 日本語 😀"_s);
        QCOMPARE(lines[6], u"one\u2028two\tthree"_s);
        // List numbers and table cells are kept as text.
        QCOMPARE(lines[7].trimmed(), u"•\tFirst bullet"_s);
        QCOMPARE(lines[8].trimmed(), u"•\tSecond bullet"_s);
        QCOMPARE(lines[9].trimmed(), u"1.\tFirst number"_s);
        QCOMPARE(lines[10].trimmed(), u"2.\tSecond number"_s);
        QCOMPARE(lines[11], u"A1\tB1"_s);
        QCOMPARE(lines[12], u"A2\tB2"_s);
        QCOMPARE(lines[13], u"Image \uFFFC here"_s);
        QCOMPARE(lines[14], u"The end"_s);

        const A plain = attributesOf(text, u"Plain"_s);
        QCOMPARE(plain.fontFamily(), u"DejaVu Sans"_s);
        QCOMPARE(plain.fontSize(), 12.0);
        QVERIFY(!plain.isBold() && !plain.isItalic() && !plain.foregroundColor());
        QVERIFY(attributesOf(text, u"bold"_s).isBold());
        QVERIFY(!attributesOf(text, u"bold"_s).isItalic());
        QVERIFY(attributesOf(text, u"italic"_s).isItalic());
        QVERIFY(attributesOf(text, u"both"_s).isBold() && attributesOf(text, u"both"_s).isItalic());

        const QList<std::pair<QString, int>> underlines {
            { u"single"_s, A::LineStyleSingle },
            { u"double"_s, A::LineStyleDouble },
            { u"thick"_s, A::LineStyleThick },
            { u"dotted"_s, A::LineStyleSingle | A::LinePatternDot },
            { u"dash "_s, A::LineStyleSingle | A::LinePatternDash },
            { u"dotdash"_s, A::LineStyleSingle | A::LinePatternDashDot },
            { u"dotdotdash"_s, A::LineStyleSingle | A::LinePatternDashDotDot },
            { u"wave"_s, A::LineStyleSingle | A::LinePatternWave },
            { u"by words"_s, A::LineStyleSingle | A::LineByWord },
        };
        for (const auto &[word, style] : underlines)
            QCOMPARE(attributesOf(text, word.trimmed()).underlineStyle(), style);
        QCOMPARE(attributesOf(text, u"struck"_s).strikethroughStyle(), int(A::LineStyleSingle));
        QCOMPARE(attributesOf(text, u"twice"_s).strikethroughStyle(), int(A::LineStyleDouble));

        QCOMPARE(attributesOf(text, u"red"_s).foregroundColor(), QWColor(1, 0, 0));
        QCOMPARE(attributesOf(text, u"blue"_s).foregroundColor(),
            QWColor(0x33 / 255.0, 0x66 / 255.0, 0xcc / 255.0));
        QCOMPARE(attributesOf(text, u"large"_s).fontSize(), 18.0);
        QCOMPARE(attributesOf(text, u"small"_s).fontSize(), 9.0);
        QCOMPARE(attributesOf(text, u"serif"_s).fontFamily(), u"DejaVu Serif"_s);

        const A link = attributesOf(text, u"the site"_s);
        QCOMPARE(link.link(), u"https://example.org/vellumo?a=1&b=2"_s);
        QCOMPARE(link.underlineStyle(), int(A::LineStyleSingle));
        QVERIFY(attributesOf(text, u"Visit"_s).link().isEmpty());
        QVERIFY(attributesOf(text, u" today"_s).link().isEmpty());

        // Only the PNG is read; the metafile copy for older readers is not.
        const A image = text.attributesAtIndex(text.string().indexOf(u'\uFFFC'));
        QCOMPARE(image.attachment(), pngBytes());
        QCOMPARE(text.string().count(u'\uFFFC'), 1);
    }

    void readsPandocDocument()
    {
        const QWRtfReadResult result = QWRtfReader().read(fixture(u"pandoc.rtf"_s));
        QCOMPARE(result.error, Error::None);
        const QWAttributedString &text = result.text;
        QCOMPARE(text.string(),
            u"Plain bold italic both underlined struck\n"
            "Visit the site today\n"
            "Grüße, naïve café — “quoted” € ≠ 日本語 😀\n"
            "•\tFirst bullet\n•\tSecond bullet\n1.\tFirst number\n2.\tSecond number\n"
            "Left\tRight\nA1\tB1\nA2\tB2\n\nThe end\n"_s);
        QCOMPARE(attributesOf(text, u"Plain"_s).fontFamily(), u"Helvetica"_s);
        QVERIFY(attributesOf(text, u"bold"_s).isBold());
        QVERIFY(attributesOf(text, u"italic"_s).isItalic());
        QVERIFY(attributesOf(text, u"both"_s).isBold() && attributesOf(text, u"both"_s).isItalic());
        QCOMPARE(attributesOf(text, u"underlined"_s).underlineStyle(), int(A::LineStyleSingle));
        QCOMPARE(attributesOf(text, u"struck"_s).strikethroughStyle(), int(A::LineStyleSingle));
        QCOMPARE(
            attributesOf(text, u"the site"_s).link(), u"https://example.org/vellumo?a=1&b=2"_s);
        QVERIFY(attributesOf(text, u" today"_s).link().isEmpty());
    }

    void codePages_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<QString>("text");
        QTest::newRow("Windows-1252")
            << "{\\rtf1\\ansi Caf\\'e9 \\'93q\\'94 \\'80\\'8e}"_ba << u"Café “q” €Ž"_s;
        QTest::newRow("Mac Roman")
            << "{\\rtf1\\mac Caf\\'8e \\'d2q\\'d3 \\'db\\'a5}"_ba << u"Café “q” €•"_s;
        QTest::newRow("ansicpg10000") << "{\\rtf1\\ansi\\ansicpg10000 Caf\\'8e}"_ba << u"Café"_s;
        QTest::newRow("8-bit bytes") << "{\\rtf1\\mac Caf\x8e}"_ba << u"Café"_s;
        QTest::newRow("font charsets")
            << "{\\rtf1\\ansi{\\fonttbl{\\f0 A;}{\\f1\\fcharset77 B;}}\\'8e\\f1 \\'8e\\f0 \\'8e}"_ba
            << u"ŽéŽ"_s;
        QTest::newRow("font code page")
            << "{\\rtf1\\ansi{\\fonttbl{\\f0\\fcharset0\\cpg10000 A;}}\\f0 \\'8e}"_ba << u"é"_s;
        QTest::newRow("default font's charset")
            << "{\\rtf1\\ansi\\deff1{\\fonttbl{\\f0 A;}{\\f1\\fcharset77 B;}}\\'8e}"_ba << u"é"_s;
        QTest::newRow("font name") << "{\\rtf1\\mac{\\fonttbl{\\f0 Caf\\'8e;}}\\f0 x}"_ba << u"x"_s;
    }

    void codePages()
    {
        QFETCH(QByteArray, rtf);
        QFETCH(QString, text);
        QCOMPARE(read(rtf).string(), text);
    }

    // Every byte of both tables, against Python's codecs.
    void codePageTables()
    {
        QByteArray bytes;
        for (int byte = 0x80; byte <= 0xFF; ++byte)
            bytes += "\\'" + QByteArray::number(byte, 16);
        QCOMPARE(read("{\\rtf1\\mac " + bytes + '}').string(), pythonDecoding(u"mac_roman"_s));
        const QString windows = read("{\\rtf1\\ansi " + bytes + '}').string();
        QString defined = windows;
        // Python leaves out the five bytes that Windows-1252 does not define.
        defined.removeIf([](QChar c) { return c.unicode() >= 0x80 && c.unicode() <= 0x9F; });
        QCOMPARE(defined, pythonDecoding(u"cp1252"_s));
        QCOMPARE(windows.size(), 128);
        QCOMPARE(read("{\\rtf1\\mac{\\fonttbl{\\f0 Caf\\'8e;}}\\f0 x}")
                     .runs()
                     .first()
                     .attributes.fontFamily(),
            u"Café"_s);
    }

    void unicode_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        QTest::newRow("one fallback character") << "\\u233?x"_ba << u"éx"_s;
        QTest::newRow("hex fallback") << "\\u233\\'e9x"_ba << u"éx"_s;
        QTest::newRow("no fallback") << "\\uc0\\u233 x"_ba << u"éx"_s;
        QTest::newRow("two fallback characters") << "\\uc2\\u233\\'e9\\'e9x"_ba << u"éx"_s;
        QTest::newRow("negative") << "\\u-1793?"_ba << u"\uF8FF"_s;
        QTest::newRow("surrogate pair") << "\\u-10179?\\u-8704?"_ba << u"😀"_s;
        QTest::newRow("surrogate pair, positive") << "\\u55357?\\u56832?"_ba << u"😀"_s;
        QTest::newRow("control word as fallback") << "\\u8220\\lquote x"_ba << u"“x"_s;
        QTest::newRow("fallback cut by a group") << "\\uc3\\u233{x}y"_ba << u"éxy"_s;
        QTest::newRow("skip count is per group") << "{\\uc0\\u233 }\\u233?"_ba << u"éé"_s;
        QTest::newRow("out of range") << "\\u70000?x"_ba << u"x"_s;
        QTest::newRow("control character") << "a\\u7?b"_ba << u"ab"_s;
        QTest::newRow("symbols and escapes")
            << "\\{\\}\\\\\\~\\_\\-\\emdash\\endash\\bullet\\lquote\\rquote\\ldblquote\\rdblquote"_ba
            << u"{}\\\u00A0\u2011—–•‘’“”"_s;
        QTest::newRow("breaks") << "a\\line b\\tab c\\par d\\\ne\tf\r\ng"_ba
                                << u"a\u2028b\tc\nd\ne\tfg"_s;
        QTest::newRow("binary data outside pictures") << "a\\bin3 x}zb"_ba << u"ab"_s;
    }

    void unicode()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        QCOMPARE(textOf(body), text);
    }

    void underlineKeywords_data()
    {
        QTest::addColumn<QByteArray>("keyword");
        QTest::addColumn<int>("style");
        QTest::newRow("ul") << "\\ul"_ba << int(A::LineStyleSingle);
        QTest::newRow("ulw") << "\\ulw"_ba << (A::LineStyleSingle | A::LineByWord);
        QTest::newRow("uldb") << "\\uldb"_ba << int(A::LineStyleDouble);
        QTest::newRow("ulth") << "\\ulth"_ba << int(A::LineStyleThick);
        QTest::newRow("uld") << "\\uld"_ba << (A::LineStyleSingle | A::LinePatternDot);
        QTest::newRow("uldash") << "\\uldash"_ba << (A::LineStyleSingle | A::LinePatternDash);
        QTest::newRow("ulldash") << "\\ulldash"_ba << (A::LineStyleSingle | A::LinePatternDash);
        QTest::newRow("uldashd") << "\\uldashd"_ba << (A::LineStyleSingle | A::LinePatternDashDot);
        QTest::newRow("uldashdd") << "\\uldashdd"_ba
                                  << (A::LineStyleSingle | A::LinePatternDashDotDot);
        QTest::newRow("ulwave") << "\\ulwave"_ba << (A::LineStyleSingle | A::LinePatternWave);
        QTest::newRow("ulthd") << "\\ulthd"_ba << (A::LineStyleThick | A::LinePatternDot);
        QTest::newRow("ulthdashdd")
            << "\\ulthdashdd"_ba << (A::LineStyleThick | A::LinePatternDashDotDot);
        QTest::newRow("ulhwave") << "\\ulhwave"_ba << (A::LineStyleThick | A::LinePatternWave);
        QTest::newRow("ululdbwave")
            << "\\ululdbwave"_ba << (A::LineStyleDouble | A::LinePatternWave);
    }

    void underlineKeywords()
    {
        QFETCH(QByteArray, keyword);
        QFETCH(int, style);
        QCOMPARE(attributesIn("{" + keyword + " x}y", u"x"_s), underlined(style));
        QCOMPARE(attributesIn(keyword + " a" + keyword + "0 x", u"x"_s), A());
        QCOMPARE(attributesIn(keyword + " a\\ulnone x", u"x"_s), A());
    }

    void characterFormatting()
    {
        QVERIFY(attributesIn("\\b a\\b0 x", u"a"_s).isBold());
        QCOMPARE(attributesIn("\\b a\\b0 x", u"x"_s), A());
        QVERIFY(attributesIn("\\i a\\i0 x", u"a"_s).isItalic());
        QCOMPARE(attributesIn("\\i a\\i0 x", u"x"_s), A());
        QCOMPARE(attributesIn("\\strike a\\strike0 x", u"a"_s).strikethroughStyle(),
            int(A::LineStyleSingle));
        QCOMPARE(attributesIn("\\strike a\\strike0 x", u"x"_s), A());
        QCOMPARE(attributesIn("\\striked1 a\\striked0 x", u"a"_s).strikethroughStyle(),
            int(A::LineStyleDouble));
        QCOMPARE(attributesIn("\\striked1 a\\striked0 x", u"x"_s), A());
        // A group keeps its formatting to itself.
        QVERIFY(attributesIn("{\\b a}x", u"a"_s).isBold());
        QCOMPARE(attributesIn("{\\b a}x", u"x"_s), A());

        const QByteArray everything = "{\\fonttbl{\\f0 Sans;}{\\f1 Serif;}}"
                                      "{\\colortbl;\\red255\\green0\\blue0;}"
                                      "\\f1\\fs40\\b\\i\\ul\\strike\\cf1 a";
        const A all = attributesIn(everything + "\\pard x", u"ax"_s);
        QCOMPARE(all.fontFamily(), u"Serif"_s);
        QCOMPARE(all.fontSize(), 20.0);
        QVERIFY(all.isBold() && all.isItalic());
        QCOMPARE(all.underlineStyle(), int(A::LineStyleSingle));
        QCOMPARE(all.strikethroughStyle(), int(A::LineStyleSingle));
        QCOMPARE(all.foregroundColor(), QWColor(1, 0, 0));
        QCOMPARE(attributesIn(everything + "\\plain x", u"x"_s), A());

        // Font sizes: half points, bounded, and nonsense ignored.
        QCOMPARE(attributesIn("\\fs21 x", u"x"_s).fontSize(), 10.5);
        QCOMPARE(attributesIn("\\fs99999999999999999999 x", u"x"_s).fontSize(),
            QWRtfReader::maximumHalfPoints / 2.0);
        QCOMPARE(attributesIn("\\fs30\\fs0 x", u"x"_s).fontSize(), 15.0);
        QCOMPARE(attributesIn("\\fs30\\fs-8 x", u"x"_s).fontSize(), 15.0);
        // A font number that is not in the table names no font.
        QCOMPARE(attributesIn("{\\fonttbl{\\f0 Sans;}}\\f9 x", u"x"_s), A());
        // Font tables without a group per font, and a name cut by the end of the entry.
        const QByteArray fonts = "{\\fonttbl\\f0\\fswiss Helvetica;\\f1\\froman Times;}"
                                 "{\\fonttbl{\\f2 Unfinished}}";
        QCOMPARE(attributesIn(fonts + "\\f1 x", u"x"_s).fontFamily(), u"Times"_s);
        QCOMPARE(attributesIn(fonts + "\\f2 x", u"x"_s).fontFamily(), u"Unfinished"_s);
        QCOMPARE(attributesIn("{\\fonttbl{\\f0 Odd\\u59?Name{\\*\\falt Other};}}\\f0 x", u"x"_s)
                     .fontFamily(),
            u"Odd;Name"_s);
        // The default font shows, but is not written into the text.
        QCOMPARE(attributesIn("\\deff0{\\fonttbl{\\f0 Sans;}}x", u"x"_s), A());

        // Colour entry 0 is the automatic colour; background colours are not kept.
        const QByteArray colors = "{\\colortbl;\\red0\\green128\\blue255;\\red999\\blue-4;}";
        QCOMPARE(
            attributesIn(colors + "\\cf1 x", u"x"_s).foregroundColor(), QWColor(0, 128 / 255.0, 1));
        QCOMPARE(attributesIn(colors + "\\cf2 x", u"x"_s).foregroundColor(), QWColor(1, 0, 0));
        QCOMPARE(attributesIn(colors + "\\cf1\\cf0 x", u"x"_s), A());
        QCOMPARE(attributesIn(colors + "\\cf7 x", u"x"_s), A());
        QCOMPARE(attributesIn(colors + "\\cb1\\highlight1 x", u"x"_s), A());

        // Hidden text is not read.
        QCOMPARE(textOf("a{\\v hidden}b\\v c\\v0 d"), u"abd"_s);
    }

    void destinations_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        QTest::newRow("unknown, ignorable") << "a{\\*\\unknown x{y}}b"_ba << u"ab"_s;
        QTest::newRow("unknown word") << "a{\\unknownword x}b"_ba << u"axb"_s;
        QTest::newRow("star not after a brace") << "a\\*\\unknown b"_ba << u"ab"_s;
        QTest::newRow("skipped") << "a{\\info{\\title T}}b{\\stylesheet{\\s0 Normal;}}c{\\header H}"
                                    "d{\\footnote F}e{\\*\\generator G}f{\\listtable x}g"_ba
                                 << u"abcdefg"_s;
        QTest::newRow("Unicode pair") << "{\\upr{a}{\\*\\ud{b}}}"_ba << u"b"_s;
        QTest::newRow("list text") << "{\\*\\pn\\pnlvlblt{\\pntxtb x}}{\\pntext 1.\\tab}Item\\par"
                                      "{\\listtext\\'95\\tab}Next\\par"_ba
                                   << u"1.\tItem\n•\tNext\n"_s;
        QTest::newRow("table")
            << "\\trowd\\cellx1\\cellx2\\cellx3\\pard\\intbl a\\cell\\cell c\\cell"
               "\\row\\pard d"_ba
            << u"a\t\tc\nd"_s;
        QTest::newRow("paragraphs in cells")
            << "\\pard\\intbl a\\par b\\par\\cell c\\par\\cell\\row\\pard\\intbl e\\cell\\row"_ba
            << u"a\nb\tc\ne\n"_s;
        QTest::newRow("other field") << "{\\field{\\*\\fldinst PAGE}{\\fldrslt 3}}"_ba << u"3"_s;
        QTest::newRow("field without result") << "a{\\field{\\*\\fldinst PAGE}}b"_ba << u"ab"_s;
        QTest::newRow("result of an object")
            << "{\\object{\\*\\objdata 0102}{\\result R}}"_ba << u"R"_s;
    }

    void destinations()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, text);
        QCOMPARE(textOf(body), text);
    }

    void links_data()
    {
        QTest::addColumn<QByteArray>("instruction");
        QTest::addColumn<QString>("link");
        QTest::newRow("quoted") << R"(HYPERLINK "https://a.example/x?y=1")"_ba
                                << u"https://a.example/x?y=1"_s;
        QTest::newRow("bare") << "HYPERLINK https://a.example/"_ba << u"https://a.example/"_s;
        QTest::newRow("lower case")
            << R"(hyperlink "https://a.example/")"_ba << u"https://a.example/"_s;
        QTest::newRow("in groups")
            << R"({\b HYPER}{LINK "https://a.example/"})"_ba << u"https://a.example/"_s;
        QTest::newRow("switches") << R"(HYPERLINK \\t "_blank" "https://a.example/" \\o "tip")"_ba
                                  << u"https://a.example/"_s;
        QTest::newRow("bookmark") << R"(HYPERLINK \\l "part")"_ba << u"#part"_s;
        QTest::newRow("page and bookmark")
            << R"(HYPERLINK "https://a.example/" \\l "part")"_ba << u"https://a.example/#part"_s;
        QTest::newRow("escapes") << R"(HYPERLINK "C:\\\\x\\"y\\"")"_ba << u"C:\\x\"y\""_s;
        QTest::newRow("non-ASCII")
            << R"(HYPERLINK "https://b\u252?cher.example/")"_ba << u"https://bücher.example/"_s;
        QTest::newRow("not a link") << "PAGE \\\\* MERGEFORMAT"_ba << QString();
    }

    void links()
    {
        QFETCH(QByteArray, instruction);
        QFETCH(QString, link);
        const QWAttributedString text
            = read(document("a{\\field{\\*\\fldinst{" + instruction + "}}{\\fldrslt{\\b b}c}}d"));
        QCOMPARE(text.string(), u"abcd"_s);
        QCOMPARE(attributesOf(text, u"b"_s).link(), link);
        QVERIFY(attributesOf(text, u"b"_s).isBold());
        QCOMPARE(attributesOf(text, u"c"_s).link(), link);
        QVERIFY(attributesOf(text, u"a"_s).link().isEmpty());
        QVERIFY(attributesOf(text, u"d"_s).link().isEmpty());
    }

    void pictures()
    {
        const QByteArray png = pngBytes();
        const QByteArray jpeg = jpegBytes();
        const QByteArray named = "{\\*\\picprop{\\sp{\\sn wzDescription}{\\sv tip}}"
                                 "{\\sp{\\sn wzName}{\\sv red \\u233?.png}}}";
        const QWAttributedString text
            = read(document("a{\\b{\\pict" + named + "\\picw6\\pich4\\pngblip\n" + png.toHex()
                + "\n}}" + "b{\\*\\shppict{\\pict{\\*\\blipuid 00ff}\\jpegblip\\bin"
                + QByteArray::number(jpeg.size()) + ' ' + jpeg + "}}{\\nonshppict{\\pict\\pngblip "
                + png.toHex() + "}}c{\\pict\\wmetafile8 0100090000}d{\\v{\\pict\\pngblip "
                + png.toHex() + "}}e"));
        QCOMPARE(text.string(), u"a\uFFFCb\uFFFCcde"_s);

        A first;
        first.setBold(true);
        first.setAttachment(png);
        first.setAttachmentFileName(u"red é.png"_s);
        QCOMPARE(text.attributesAtIndex(1), first);
        A second;
        second.setAttachment(jpeg);
        QCOMPARE(text.attributesAtIndex(3), second);

        // Declared formats do not count, the bytes do; an odd digit at the end is dropped.
        QCOMPARE(textOf("{\\pict\\pngblip " + jpeg.toHex() + "f}"), u"\uFFFC"_s);
        QCOMPARE(textOf("{\\pict\\pngblip 00" + png.toHex() + "}"), QString());
    }

    void damagedInput_data()
    {
        QTest::addColumn<QByteArray>("rtf");
        QTest::addColumn<Error>("error");
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QByteArray() << Error::NotRtf << QString();
        QTest::newRow("plain text") << "Hello"_ba << Error::NotRtf << QString();
        QTest::newRow("HTML") << "<html><body>{\\rtf1 x}</body></html>"_ba << Error::NotRtf
                              << QString();
        QTest::newRow("almost") << "{\\rtx1 x}"_ba << Error::NotRtf << QString();
        QTest::newRow("leading white space and BOM")
            << "\xEF\xBB\xBF \r\n{\\rtf1 x}"_ba << Error::None << u"x"_s;
        QTest::newRow("unclosed groups")
            << "{\\rtf1 abc{\\b def"_ba << Error::Truncated << u"abcdef"_s;
        QTest::newRow("cut in a word") << "{\\rtf1 a\\u23"_ba << Error::Truncated << u"a"_s;
        QTest::newRow("cut after a minus") << "{\\rtf1 a\\fi-"_ba << Error::Truncated << u"a"_s;
        QTest::newRow("cut in an escape") << "{\\rtf1 a\\'e"_ba << Error::Truncated << u"a"_s;
        QTest::newRow("cut after a backslash") << "{\\rtf1 a\\"_ba << Error::Truncated << u"a"_s;
        QTest::newRow("extra closing braces") << "{\\rtf1 abc}}}}x"_ba << Error::None << u"abc"_s;
        QTest::newRow("huge bin") << "{\\rtf1 a\\bin999999999999 xyz}"_ba << Error::Truncated
                                  << u"a"_s;
        QTest::newRow("negative bin") << "{\\rtf1 a\\bin-5 b}"_ba << Error::None << u"ab"_s;
        QTest::newRow("huge numbers") << "{\\rtf1\\cf99999999999\\f-99999999999\\deff99999999999 "
                                         "a\\u99999999999?b\\uc99999999999}"_ba
                                      << Error::None << u"ab"_s;
        QTest::newRow("nul bytes") << "{\\rtf1 a\0b}"_ba << Error::None << u"ab"_s;
        QTest::newRow("picture cut off")
            << "{\\rtf1 a{\\pict\\pngblip 89504e470d0a1a0a00"_ba << Error::Truncated << u"a"_s;
        const QByteArray deep = QByteArray(100000, '{') + 'b' + QByteArray(100000, '}');
        QTest::newRow("deep nesting")
            << "{\\rtf1 a" + deep + "c}" << Error::NestingTooDeep << u"a"_s;
        QTest::newRow("deep nesting in a skipped group")
            << "{\\rtf1 a{\\*\\x" + deep + "}c}" << Error::NestingTooDeep << u"a"_s;
        const int allowed = QWRtfReader::maximumGroupDepth - 1;
        QTest::newRow("nesting at the limit")
            << "{\\rtf1 a" + QByteArray(allowed, '{') + 'b' + QByteArray(allowed, '}') + "c}"
            << Error::None << u"abc"_s;
    }

    void damagedInput()
    {
        QFETCH(QByteArray, rtf);
        QFETCH(Error, error);
        QFETCH(QString, text);
        const QWRtfReadResult result = QWRtfReader().read(rtf);
        QCOMPARE(result.error, error);
        QCOMPARE(result.text.string(), text);
        QCOMPARE(result.isOk(), error == Error::None);
        QCOMPARE(result.errorString().isEmpty(), error == Error::None);
    }

    // A real document cut anywhere reads as a prefix of its text, never more. The small one is
    // cut everywhere; the large one where words and escapes begin and every few bytes, which
    // keeps the test quick under the sanitizers.
    void truncatedDocuments()
    {
        for (const QString &name : { u"pandoc.rtf"_s, u"libreoffice.rtf"_s }) {
            const QByteArray whole = fixture(name);
            const QString text = read(whole).string();
            const bool everywhere = whole.size() < 2000;
            const qsizetype end = whole.lastIndexOf('}');
            for (qsizetype size = 0; size < end; ++size) {
                const bool inWord = (size >= 1 && whole[size - 1] == '\\')
                    || (size >= 2 && whole[size - 2] == '\\');
                if (!everywhere && !inWord && size % 13 != 0)
                    continue;
                const QWRtfReadResult partial = QWRtfReader().read(whole.first(size));
                QCOMPARE(partial.error, size < 5 ? Error::NotRtf : Error::Truncated);
                if (!text.startsWith(partial.text.string()))
                    QFAIL(qPrintable(u"%1 cut at %2 reads as \"%3\""_s.arg(name).arg(size).arg(
                        partial.text.string())));
            }
        }
    }

    // However many characters "\\ucN" claims, the document after a "\\uN" is not swallowed.
    void fallbackIsBounded()
    {
        const QString text = textOf("\\uc999999999\\u233 " + QByteArray(100, 'a') + "xyz");
        QVERIFY(text.startsWith(u"éa"_s));
        QVERIFY(text.endsWith(u"axyz"_s));
    }

    void recognisesRtf()
    {
        QVERIFY(QWRtfReader::isRtf("{\\rtf1}"));
        QVERIFY(QWRtfReader::isRtf("\n\t {\\rtf"));
        QVERIFY(!QWRtfReader::isRtf("{\\rt"));
        QVERIFY(!QWRtfReader::isRtf("x{\\rtf1}"));
        QVERIFY(!QWRtfReader::isRtf(fixture(u"pandoc.md"_s)));
        QVERIFY(QWRtfReader::isRtf(fixture(u"pandoc.rtf"_s)));
    }
};

QTEST_MAIN(TestQWRtfReader)
#include "TestQWRtfReader.moc"
