#include "app/SNNoteFileReader.h"
#include "kit/rtf/QWRtfdPackage.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestSNNoteFileReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void rtfFilesKeepTheirFormatting();
    void plainTextIsReadAsUtf8();
    void rtfdFoldersAreRead();
    void whatHoldsNoTextGivesNothing();

private:
    QString write(const QString &name, const QByteArray &bytes);
    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSNNoteFileReader::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString TestSNNoteFileReader::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_folder->filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Could not write %s", qUtf8Printable(path));
    return path;
}

void TestSNNoteFileReader::rtfFilesKeepTheirFormatting()
{
    const auto text = SNNoteFileReader::attributedStringWithContentsOfPath(
        write(QStringLiteral("a.rtf"), "{\\rtf1\\ansi Plain {\\i slanted}\\par next}"));
    QVERIFY(text);
    QCOMPARE(text->string(), QStringLiteral("Plain slanted\nnext"));
    QVERIFY(!text->attributesAtIndex(0).isItalic());
    QVERIFY(text->attributesAtIndex(7).isItalic());

    // A damaged document still gives what could be read.
    const auto damaged = SNNoteFileReader::attributedStringWithContentsOfPath(
        write(QStringLiteral("b.rtf"), "{\\rtf1\\ansi cut off {\\b here"));
    QVERIFY(damaged);
    QCOMPARE(damaged->string(), QStringLiteral("cut off here"));
}

void TestSNNoteFileReader::plainTextIsReadAsUtf8()
{
    const auto text = SNNoteFileReader::attributedStringWithContentsOfPath(
        write(QStringLiteral("list.txt"), QStringLiteral("Grüße\n– eggs").toUtf8()));
    QVERIFY(text);
    QCOMPARE(text->string(), QStringLiteral("Grüße\n– eggs"));
    QVERIFY(!text->attributesAtIndex(0).hasFont());
}

void TestSNNoteFileReader::rtfdFoldersAreRead()
{
    const QString package = m_folder->filePath(QStringLiteral("Note.rtfd"));
    write(QStringLiteral("Note.rtfd/TXT.rtf"), "{\\rtf1\\ansi From a {\\b package}}");
    const auto text = SNNoteFileReader::attributedStringWithContentsOfPath(package);
    QVERIFY(text);
    QCOMPARE(text->string(), QStringLiteral("From a package"));
    QVERIFY(text->attributesAtIndex(7).isBold());
}

void TestSNNoteFileReader::whatHoldsNoTextGivesNothing()
{
    QVERIFY(!SNNoteFileReader::attributedStringWithContentsOfPath(
        m_folder->filePath(QStringLiteral("missing.rtf"))));
    // Not valid UTF-8, and NUL bytes: a picture is not a note.
    QVERIFY(!SNNoteFileReader::attributedStringWithContentsOfPath(
        write(QStringLiteral("p.png"), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16))));
    QVERIFY(!SNNoteFileReader::attributedStringWithContentsOfPath(
        write(QStringLiteral("nul.txt"), QByteArray("text\0more", 9))));
    // A folder without the text file of a package.
    QDir().mkpath(m_folder->filePath(QStringLiteral("Empty.rtfd")));
    QVERIFY(!SNNoteFileReader::attributedStringWithContentsOfPath(
        m_folder->filePath(QStringLiteral("Empty.rtfd"))));
}

QTEST_GUILESS_MAIN(TestSNNoteFileReader)
#include "TestSNNoteFileReader.moc"
