#include "SNImportTestSupport.h"
#include "import/SNImportFile.h"
#include "import/SNXpadReader.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: files too large to commit, and links out of the folder,
// which their copy of the home folder would follow.
class TestSNXpadReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void skipsWhatItMustNotRead();
};

void TestSNXpadReader::skipsWhatItMustNotRead()
{
    QTemporaryDir home;
    QVERIFY(home.isValid());
    const QDir xpad(home.filePath(u"xpad"_s));
    QVERIFY(writeImportFile(home.filePath(u"secret"_s), "not a pad"));

    QVERIFY(writeImportFile(xpad.filePath(u"info-Good"_s), "content content-Good\n"));
    QVERIFY(writeImportFile(xpad.filePath(u"content-Good"_s), "kept"));
    QVERIFY(writeImportFile(xpad.filePath(u"info-Link"_s), "content content-Link\n"));
    QVERIFY(QFile::link(home.filePath(u"secret"_s), xpad.filePath(u"content-Link"_s)));
    QVERIFY(writeImportFile(xpad.filePath(u"info-Huge"_s), "content content-Huge\n"));
    QFile huge(xpad.filePath(u"content-Huge"_s));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(SNImportFile::maximumFileSize + 1));
    huge.close();

    const SNImportReadResult result = SNXpadReader().read(xpad.path());
    QCOMPARE(result.notes.size(), 1);
    QCOMPARE(result.notes[0].text.string(), u"kept"_s);
    QCOMPARE(result.problems.size(), 2);
    QCOMPARE(result.problems[0].item, u"info-Huge"_s);
    QVERIFY(result.problems[0].reason.contains(u"larger than"_s));
    QCOMPARE(result.problems[1].item, u"info-Link"_s);
    QVERIFY(result.problems[1].reason.contains(u"link"_s));
}

QTEST_APPLESS_MAIN(TestSNXpadReader)
#include "TestSNXpadReader.moc"
