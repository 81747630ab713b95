#include "SNNotesTestSupport.h"
#include "kit/QWClock.h"
#include "notes/SNBackupShelf.h"
#include "support/QWTestEnvironment.h"

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

// The daily backups: made by the first compaction of a day, 7 days and 4 weeks kept, and a
// restore that brings back what is missing, never twice, and deletes nothing. Restoring a
// backup of one's own is checked through its pane, in TestBackupsPreferencesViewController.
class TestSNBackupShelf final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_now = QDateTime(QDate(2026, 1, 1), QTime(10, 0), Qt::UTC);
        QWClock::setCurrentDateTimeProvider([this] { return m_now; });
    }

    void cleanup()
    {
        QWClock::setCurrentDateTimeProvider({});
        m_environment.reset();
    }

    void oneBackupADaySevenDaysAndFourWeeksKept()
    {
        SNStickyNoteManager store(folder());
        const std::shared_ptr<SNStickyNote> note = store.notesArray().value(0);
        for (int day = 0; day < 60; ++day) {
            // Two edits a day, each compacted: the day's first makes its backup.
            for (int edit = 0; edit < 2; ++edit) {
                note->setAttributedString(
                    QWAttributedString(u"day %1 edit %2"_s.arg(day).arg(edit)));
                store.noteDidChange(note);
                QVERIFY(store.compact());
            }
            m_now = m_now.addDays(1);
        }
        const QList<SNBackup> backups = store.backups();
        QStringList dates;
        for (const SNBackup &backup : backups)
            dates.append(backup.date.toString(Qt::ISODate));
        // 1 March 2026 back: seven days, then the newest kept copy of four weeks before them.
        QCOMPARE(dates,
            (QStringList { u"2026-03-01"_s, u"2026-02-28"_s, u"2026-02-27"_s, u"2026-02-26"_s,
                u"2026-02-25"_s, u"2026-02-24"_s, u"2026-02-23"_s, u"2026-02-22"_s, u"2026-02-15"_s,
                u"2026-02-08"_s, u"2026-02-01"_s }));
        QCOMPARE(backups.value(0).noteCount, store.notesArray().size());
        QCOMPARE(textsOf(SNBackupShelf::notesInArchive(backups.value(0).path)).value(0),
            u"day 59 edit 0"_s);

        // Backing up now replaces the copy of the day with the newest notes.
        note->setAttributedString(QWAttributedString(u"now"_s));
        store.noteDidChange(note);
        QVERIFY(store.backUpNow());
        QCOMPARE(store.backups().size(), 11);
        QCOMPARE(textsOf(SNBackupShelf::notesInArchive(store.backups().value(0).path)).value(0),
            u"now"_s);
    }

    // Listing the backups makes no notes of them, so no tag of an old copy joins the index. The
    // notes of another computer's backup are added once; a file that cannot be read adds nothing
    // and says why.
    void restoringAddsWhatIsMissingOnce()
    {
        SNStickyNoteManager store(folder());
        QVERIFY(store.backUpNow());
        const QList<std::shared_ptr<SNStickyNote>> welcome = store.notesArray();
        for (const std::shared_ptr<SNStickyNote> &note : welcome)
            note->setTags({});
        QCOMPARE(SNTagManager::sharedManager().count(), 0);
        QCOMPARE(store.backups().value(0).noteCount, welcome.size());
        QCOMPARE(SNTagManager::sharedManager().count(), 0);
        QVERIFY(store.restoreBackup(store.backups().value(0).path).isEmpty());

        const QString otherFolder = m_environment->dataHome() + u"/other/"_s;
        {
            SNStickyNoteManager other(otherFolder);
            other.addNote(noteWithText(u"from the laptop"_s));
            QVERIFY(other.backUpNow());
        }
        const QString theirBackup
            = SNBackupShelf(otherFolder + u"Backups"_s).backups().value(0).path;
        QCOMPARE(textsOf(store.restoreBackup(theirBackup)), QStringList { u"from the laptop"_s });
        QVERIFY(store.restoreBackup(theirBackup).isEmpty());
        QVERIFY(store.save());
        QCOMPARE(SNStickyNoteManager(folder()).notesArray().size(), welcome.size() + 1);

        QString error;
        QVERIFY(store.restoreBackup(folder() + u"nothing.db"_s, &error).isEmpty());
        QVERIFY(!error.isEmpty());
    }

private:
    QString folder() const { return m_environment->dataHome() + u"/Vellumo/"_s; }

    std::unique_ptr<QWTestEnvironment> m_environment;
    QDateTime m_now;
};

QTEST_GUILESS_MAIN(TestSNBackupShelf)
#include "TestSNBackupShelf.moc"
