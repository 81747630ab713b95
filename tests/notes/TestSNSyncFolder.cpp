#include "SNNotesTestSupport.h"
#include "notes/SNJournal.h"
#include "notes/SNSyncFolder.h"

#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

namespace {

QByteArray journalOf(const QList<QByteArray> &records)
{
    QByteArray bytes = SNJournal::header;
    for (const QByteArray &record : records)
        bytes += SNJournal::frame(record);
    return bytes;
}

} // namespace

// The folder as sync tools leave it: files of other computers arriving whole, half, damaged,
// as conflict copies, or not at all.
class TestSNSyncFolder final : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString otherDevice(const QString &file = QString()) const
    {
        return m_folder->filePath(u"Vellumo/devices/other"_s)
            + (file.isEmpty() ? QString() : u"/"_s + file);
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void readsWhatArrivesOnceAndSkipsWhatIsNotWhole()
    {
        SNSyncFolder folder(m_folder->path(), u"mine"_s);
        QVERIFY(folder.writeDescription(u"Desk"_s, u"machine-1"_s));
        QVERIFY(folder.rewriteOwnJournal(
            [](const QList<QByteArray> &) { return QList<QByteArray> { "own" }; }));
        QVERIFY(writeFile(otherDevice(u"stickies-1.journal"_s), journalOf({ "one", "two" })));
        // Half-arrived files under the tools' temporary names, and a stray file.
        QVERIFY(
            writeFile(otherDevice(u".syncthing.stickies-2.journal.tmp"_s), journalOf({ "tmp" })));
        QVERIFY(writeFile(otherDevice(u"~stickies-2.journal"_s), journalOf({ "tilde" })));
        QVERIFY(writeFile(otherDevice(u"stickies-2.journal.part"_s), journalOf({ "part" })));
        QVERIFY(writeFile(otherDevice(u"notes.txt"_s), "hello"));
        // A conflict copy is more records of that computer.
        QVERIFY(
            writeFile(otherDevice(u"stickies-1.sync-conflict-20261124-101010-ABCDEFG.journal"_s),
                journalOf({ "copy" })));

        SNSyncFolder::Reading reading = folder.readNewRecords();
        QCOMPARE(reading.records, (QList<QByteArray> { "own", "one", "two", "copy" }));
        QVERIFY(reading.waiting.isEmpty());
        QVERIFY(folder.readNewRecords().records.isEmpty());

        // Appends are read from where reading stopped.
        QVERIFY(folder.appendOwn({ "own2" }));
        QCOMPARE(folder.readNewRecords().records, QList<QByteArray> { "own2" });
    }

    // A damaged record ends the reading of its file until the file changes; the records
    // before it count, and once the whole file arrives the rest is read.
    void damagedRecordWaitsForTheFileToChange()
    {
        SNSyncFolder folder(m_folder->path(), u"mine"_s);
        const QString path = otherDevice(u"stickies-1.journal"_s);
        QByteArray bytes = journalOf({ "first", "second", "third" });
        QByteArray damaged = bytes;
        damaged[damaged.size() - 2] = 'X';
        QVERIFY(writeFile(path, damaged));
        SNSyncFolder::Reading reading = folder.readNewRecords();
        QCOMPARE(reading.records, (QList<QByteArray> { "first", "second" }));
        QCOMPARE(reading.waiting, QStringList { path });
        reading = folder.readNewRecords();
        QVERIFY(reading.records.isEmpty());
        QCOMPARE(reading.waiting, QStringList { path });

        // The tool delivers the file again, whole and a record longer.
        bytes += SNJournal::frame("fourth");
        QTest::qWait(20); // a new modification time on coarse file systems
        QVERIFY(writeFile(path, bytes));
        reading = folder.readNewRecords();
        QCOMPARE(reading.records, (QList<QByteArray> { "third", "fourth" }));
        QVERIFY(reading.waiting.isEmpty());
    }

    // A journal written anew under the next name is read from its start; the old one vanishes
    // and nothing is lost or held against it. A vanished folder is no reading at all. (A folder
    // not mounted is never made: TestSNSyncController.)
    void rewrittenAndVanishedFiles()
    {
        SNSyncFolder writer(m_folder->path(), u"other"_s);
        QVERIFY(writer.writeDescription(u"Laptop"_s, u"machine-2"_s));
        QVERIFY(writer.rewriteOwnJournal([](const QList<QByteArray> &) {
            return QList<QByteArray> { "a", "b" };
        }));
        SNSyncFolder reader(m_folder->path(), u"mine"_s);
        QCOMPARE(reader.readNewRecords().records, (QList<QByteArray> { "a", "b" }));
        QVERIFY(writer.rewriteOwnJournal([](const QList<QByteArray> &old) {
            return QList<QByteArray> { old.last(), "c" };
        }));
        QVERIFY(!QFileInfo::exists(otherDevice(u"stickies-1.journal"_s)));
        QCOMPARE(reader.readNewRecords().records, (QList<QByteArray> { "b", "c" }));
        QVERIFY(writer.appendOwn({ "d" }));
        QCOMPARE(reader.readNewRecords().records, QList<QByteArray> { "d" });

        QVERIFY(QDir(m_folder->filePath(u"Vellumo"_s)).removeRecursively());
        QVERIFY(reader.isReachable());
        QVERIFY(reader.readNewRecords().records.isEmpty());
        QVERIFY(reader.devices().isEmpty());
        // The own journal is not made again behind the user's back.
        QVERIFY(!writer.appendOwn({ "e" }));
    }
};

QTEST_GUILESS_MAIN(TestSNSyncFolder)
#include "TestSNSyncFolder.moc"
