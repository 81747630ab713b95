#include "SNNotesTestSupport.h"
#include "kit/QWClock.h"
#include "support/QWTestEnvironment.h"

using namespace Qt::Literals::StringLiterals;
using namespace SNNotesTest;

// Deleted notes through the store: kept 30 days with their last version, listed newest first,
// brought back as they were. That the list is the same after a restart, from the journal or the
// compacted files, is checked by the store's replay test and the crash test.
class TestSNRecentlyDeleted final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_now = QDateTime(QDate(2026, 3, 1), QTime(9, 0), Qt::UTC);
        QWClock::setCurrentDateTimeProvider([this] { return m_now; });
    }

    void cleanup()
    {
        QWClock::setCurrentDateTimeProvider({});
        forgetAllTags();
        m_environment.reset();
    }

    void deletedNotesComeBackAsTheyWere()
    {
        SNStickyNoteManager store(folder());
        const qsizetype welcome = store.notesArray().size();
        removeAll(store);
        const std::shared_ptr<SNStickyNote> keep = noteWithText(u"keep"_s);
        store.addNote(keep);
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"\n  Shopping #list\nmilk"_s);
        note->setThemeName(u"SNGreenTheme"_s);
        note->setWindowFrame(u"{{40, 50}, {260, 190}}"_s);
        const std::shared_ptr<SNTag> tag = SNTag::tagWithNameColor(u"#list"_s, QWColor::black());
        note->setTags(SNTagManager::sharedManager().addTags({ tag }));
        store.addNote(note);
        const QUuid id = note->uuid();
        QVERIFY(store.save());
        m_now = m_now.addSecs(60);
        store.removeNote(note);
        store.removeNote(keep);
        store.addNote(keep); // added back at once: not listed as deleted
        store.addNote(noteWithText(u"   "_s));
        store.removeNote(store.notesArray().last()); // blank: nothing to keep
        QVERIFY(!SNTagManager::sharedManager().tagWithName(u"#list"_s));
        QVERIFY(store.save());

        const QList<SNDeletedNote> deleted = store.recentlyDeletedNotes();
        QCOMPARE(deleted.size(), welcome + 1);
        QCOMPARE(deleted[0].uuid, id);
        QCOMPARE(deleted[0].title, u"Shopping #list"_s);
        QCOMPARE(deleted[0].dateDeleted, m_now);

        QVERIFY(!store.restoreDeletedNote(QUuid::createUuid()));
        QCOMPARE(store.restoreDeletedNote(id), note);
        QCOMPARE(store.notesArray(), (QList<std::shared_ptr<SNStickyNote>> { keep, note }));
        QCOMPARE(store.recentlyDeletedNotes().size(), welcome);
        QVERIFY(SNTagManager::sharedManager().tagWithName(u"#list"_s)); // its tags know it again
        QVERIFY(store.save());
        const SNStickyNoteManager reloaded(folder());
        QCOMPARE(reloaded.notesArray().size(), 2);
        const std::shared_ptr<SNStickyNote> reread = reloaded.notesArray().last();
        QCOMPARE(reread->uuid(), id);
        QCOMPARE(textOf(*reread), u"\n  Shopping #list\nmilk"_s);
        QCOMPARE(reread->themeName(), u"SNGreenTheme"_s);
        QCOMPARE(reread->windowFrame(), u"{{40, 50}, {260, 190}}"_s);
    }

    // After 30 days a deleted note is no longer listed nor brought back, and compaction drops
    // it from the file.
    void deletedNotesGoAfterThirtyDays()
    {
        SNStickyNoteManager store(folder());
        const QList<std::shared_ptr<SNStickyNote>> welcome = store.notesArray();
        store.removeNote(welcome.value(0));
        m_now = m_now.addDays(20);
        store.removeNote(welcome.value(1));
        QVERIFY(store.compact());
        QCOMPARE(store.recentlyDeletedNotes().size(), 2);
        QCOMPARE(store.recentlyDeletedNotes().value(0).uuid, welcome.value(1)->uuid());

        m_now = m_now.addDays(11); // the first is 31 days gone, the second 11
        QCOMPARE(store.recentlyDeletedNotes().size(), 1);
        QVERIFY(!store.restoreDeletedNote(welcome.value(0)->uuid()));
        QVERIFY(store.compact());
        m_now = m_now.addDays(-20); // even a clock set back does not bring it back
        QCOMPARE(SNStickyNoteManager(folder()).recentlyDeletedNotes().size(), 1);
    }

private:
    QString folder() const { return m_environment->dataHome() + u"/Vellumo"_s; }

    std::unique_ptr<QWTestEnvironment> m_environment;
    QDateTime m_now;
};

QTEST_GUILESS_MAIN(TestSNRecentlyDeleted)
#include "TestSNRecentlyDeleted.moc"
