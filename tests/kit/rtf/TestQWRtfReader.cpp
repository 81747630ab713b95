#include "../QWRichTextDump.h"
#include "kit/rtf/QWRtfReader.h"

#include <QProcess>
#include <QTest>

namespace {

using Error = QWRtfReadResult::Error;

const QString dataFolder = QStringLiteral(VELLUMO_TEST_DATA_DIR "/");

QString textOf(const QByteArray &rtf)
{
    return QWRtfReader().read(rtf).text.string();
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
    // Each folder of data/cases holds a document, input.rtf, and read.txt, what it reads as: the
    // runs with their attributes. libreoffice and pandoc were written by those programs (see
    // data/README.md), the others by hand. VELLUMO_UPDATE_GOLDEN=1 writes read.txt anew.
    void readsAsExpected_data() { QWRichTextDump::addCaseRows(dataFolder + u"cases"_s); }

    void readsAsExpected()
    {
        QFETCH(QString, folder);
        const QWRtfReadResult result = QWRtfReader().read(fileBytes(folder + u"/input.rtf"_s));
        QCOMPARE(result.errorString(), QString());
        QWRichTextDump::compareWithFile(
            folder + u"/read.txt"_s, QWRichTextDump::describe(result.text).toUtf8());
    }

    // Every byte of both tables, against Python's codecs.
    void codePageTables()
    {
        QByteArray bytes;
        for (int byte = 0x80; byte <= 0xFF; ++byte)
            bytes += "\\'" + QByteArray::number(byte, 16);
        QCOMPARE(textOf("{\\rtf1\\mac " + bytes + '}'), pythonDecoding(u"mac_roman"_s));
        QString windows = textOf("{\\rtf1\\ansi " + bytes + '}');
        QCOMPARE(windows.size(), 128);
        // Python leaves out the five bytes that Windows-1252 does not define.
        windows.removeIf([](QChar c) { return c.unicode() >= 0x80 && c.unicode() <= 0x9F; });
        QCOMPARE(windows, pythonDecoding(u"cp1252"_s));
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
        QTest::newRow("extra closing braces") << "{\\rtf1 abc}}}}x"_ba << Error::None << u"abc"_s;
        QTest::newRow("huge bin") << "{\\rtf1 a\\bin999999999999 xyz}"_ba << Error::Truncated
                                  << u"a"_s;
        QTest::newRow("negative bin") << "{\\rtf1 a\\bin-5 b}"_ba << Error::None << u"ab"_s;
        QTest::newRow("huge numbers") << "{\\rtf1\\cf99999999999\\f-99999999999\\deff99999999999 "
                                         "a\\u99999999999?b\\uc99999999999}"_ba
                                      << Error::None << u"ab"_s;
        QTest::newRow("nul bytes") << "{\\rtf1 a\0b}"_ba << Error::None << u"ab"_s;
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
        QCOMPARE(result.errorString().isEmpty(), error == Error::None);
        QCOMPARE(QWRtfReader::isRtf(rtf), error != Error::NotRtf);
    }

    // A real document cut anywhere, in a word, an escape or a picture, is truncated and reads
    // as a prefix of its text, never more. The small one is cut everywhere; the large one where
    // words and escapes begin and every few bytes, which keeps the test quick under the
    // sanitizers.
    void truncatedDocuments()
    {
        for (const QString &name : { u"pandoc"_s, u"libreoffice"_s }) {
            const QByteArray whole = fileBytes(dataFolder + u"cases/%1/input.rtf"_s.arg(name));
            QVERIFY(!whole.isEmpty());
            const QString text = textOf(whole);
            const bool everywhere = whole.size() < 2000;
            const qsizetype end = whole.lastIndexOf('}');
            for (qsizetype size = 0; size < end; ++size) {
                const bool inWord = whole.first(size).right(3).contains('\\');
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
};

QTEST_APPLESS_MAIN(TestQWRtfReader)
#include "TestQWRtfReader.moc"
