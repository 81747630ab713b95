#include "SNNotesTestSupport.h"
#include "notes/SNJournal.h"

#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

namespace {

const QList<QByteArray> records = { "first"_ba, QByteArray(300, 'b'), "third"_ba };

} // namespace

class TestSNJournal final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_path = m_folder.filePath(u"stickies.journal"_s); }
    void cleanup() { QFile::remove(m_path); }

    // A journal cut at any byte reads as the records that were whole before the cut; a flipped
    // byte ends the reading at its record.
    void cutOrDamagedJournalsReadUpToTheDamage()
    {
        SNJournal journal(m_path);
        QVERIFY(journal.append(records.mid(0, 2)));
        QVERIFY(journal.append(records.mid(2)));
        const QByteArray whole = fileBytes(m_path);
        QCOMPARE(SNJournal::read(m_path).records, records);
        QCOMPARE(SNJournal::read(m_path).validLength, whole.size());

        const qsizetype firstEnd = SNJournal::header.size() + 8 + records[0].size();
        const qsizetype secondEnd = firstEnd + 8 + records[1].size();
        for (qsizetype cut = 0; cut < whole.size(); ++cut) {
            QVERIFY(writeFile(m_path, whole.left(cut)));
            const SNJournal::Contents contents = SNJournal::read(m_path);
            const qsizetype wholeRecords = cut >= secondEnd ? 2 : cut >= firstEnd ? 1 : 0;
            QCOMPARE(contents.records, records.mid(0, wholeRecords));
            // Only a file cut exactly between records, or before anything, is complete.
            const bool atABoundary = cut == 0 || cut == SNJournal::header.size() || cut == firstEnd
                || cut == secondEnd;
            QVERIFY2(contents.isComplete() == atABoundary, qPrintable(QString::number(cut)));
        }

        QByteArray flipped = whole;
        flipped[firstEnd + 8 + 100] = flipped[firstEnd + 8 + 100] ^ 0x01;
        QVERIFY(writeFile(m_path, flipped));
        QCOMPARE(SNJournal::read(m_path).records, records.mid(0, 1));
        QCOMPARE(SNJournal::read(m_path).validLength, firstEnd);

        // A length no record could have is damage, not a reason to allocate it.
        QByteArray huge = whole.left(firstEnd) + "\xff\xff\xff\xff\0\0\0\0"_ba;
        QVERIFY(writeFile(m_path, huge));
        QCOMPARE(SNJournal::read(m_path).records, records.mid(0, 1));
        QVERIFY(!SNJournal::read(m_path).isComplete());

        QVERIFY(writeFile(m_path, "something else entirely"_ba));
        QVERIFY(SNJournal::read(m_path).records.isEmpty());
        QVERIFY(!SNJournal::read(m_path).isComplete());
        QFile::remove(m_path);
        QVERIFY(SNJournal::read(m_path).isComplete());
    }

    // An append that fails at any byte leaves the journal as it was, so the next append lands
    // after the last whole record.
    void failedAppendsLeaveNoTornRecord()
    {
        SNJournal journal(m_path);
        QVERIFY(journal.append(records.mid(0, 1)));
        const QByteArray before = fileBytes(m_path);
        const qint64 appendSize = SNJournal::frame(records[1]).size();
        for (qint64 room = 0; room < appendSize; room += 37) {
            journal.setFileFactory([room](const QString &path) {
                return std::make_unique<FailingFile<QFile>>(path, room);
            });
            QString error;
            QVERIFY(!journal.append(records.mid(1, 1), &error));
            QVERIFY(!error.isEmpty());
            QCOMPARE(fileBytes(m_path), before);
        }
        journal.setFileFactory({});
        QVERIFY(journal.append(records.mid(1)));
        QCOMPARE(SNJournal::read(m_path).records, records);

        // A failure on the very first append leaves no journal at all.
        QFile::remove(m_path);
        journal.setFileFactory(
            [](const QString &path) { return std::make_unique<FailingFile<QFile>>(path, 5); });
        QVERIFY(!journal.append(records));
        QVERIFY(!QFile::exists(m_path));
    }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

QTEST_APPLESS_MAIN(TestSNJournal)
#include "TestSNJournal.moc"
