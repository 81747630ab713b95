#include "app/SNSyncController.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "notes/SNSyncSession.h"
#include "preferences/SNPreferencesTestSupport.h"
#include "settings/SNUserDefaults.h"
#include "support/QWTestEnvironment.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace {

// One computer: its notes in a home of its own, its own id, and the program's sharing. The
// settings file is the test's, shared by every computer of the test: they all choose the same
// folder anyway.
struct Computer
{
    QTemporaryDir home;
    SNStickyNoteManager store { home.path(), QUuid::createUuid().toString(QUuid::WithoutBraces) };
    std::unique_ptr<SNUserDefaults> defaults = GVUserDefaults::make<SNUserDefaults>();
    SNSyncController controller;

    explicit Computer(const std::shared_ptr<SNModalPresenter> &presenter)
        : controller(*defaults, store, presenter)
    {
        controller.start();
    }

    std::shared_ptr<SNStickyNote> add(const QString &text)
    {
        auto note = SNStickyNote::note();
        note->setAttributedString(QWAttributedString(text));
        store.addNote(note);
        return note;
    }

    QStringList texts() const
    {
        QStringList texts;
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
            texts.append(note->attributedString().value_or(QWAttributedString()).string());
        return texts;
    }

    void mergeNow() const
    {
        QVERIFY(controller.session());
        controller.session()->mergeNow();
    }
};

} // namespace

class TestSNSyncController final : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<PreferencesFixture> m_fixture;
    std::unique_ptr<QTemporaryDir> m_folder;

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_fixture = std::make_unique<PreferencesFixture>();
        m_folder = std::make_unique<QTemporaryDir>();
    }

    void cleanup()
    {
        m_fixture.reset();
        m_environment.reset();
    }

    void sharesWhileAFolderIsChosen()
    {
        Computer desk(m_fixture->presenter);
        QVERIFY(!desk.controller.session());
        int flushes = 0;
        desk.controller.setBeforeMerge([&flushes] { ++flushes; });

        desk.defaults->setSyncFolder(m_folder->path());
        QVERIFY(desk.controller.session());
        // The session that the folder started took what is typed in the windows first.
        QVERIFY(flushes > 0);
        // The same folder written again changes nothing.
        SNSyncSession *running = desk.controller.session();
        desk.defaults->setSyncFolder(m_folder->path());
        QCOMPARE(desk.controller.session(), running);

        // Turned off, nothing more of this computer goes into the folder.
        const QString journals = SNSyncFolder(m_folder->path(), desk.store.device()).ownPath();
        const auto sizes = [&journals] {
            qint64 total = 0;
            for (const QFileInfo &file : QDir(journals).entryInfoList(QDir::Files))
                total += file.size();
            return total;
        };
        const qint64 before = sizes();
        desk.defaults->setSyncFolder(QString());
        QVERIFY(!desk.controller.session() && !desk.controller.state().session());
        desk.add(u"Only on the desk"_s);
        QVERIFY(desk.store.save());
        QCOMPARE(sizes(), before);
    }

    void aLargeDeletionIsAskedAbout_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("deleted");
        QTest::newRow("keep") << u"Keep Them"_s << false;
        QTest::newRow("delete") << u"Delete Them"_s << true;
    }

    void aLargeDeletionIsAskedAbout()
    {
        QFETCH(QString, answer);
        QFETCH(bool, deleted);
        Computer desk(m_fixture->presenter);
        Computer laptop(m_fixture->presenter);
        desk.defaults->setSyncFolder(m_folder->path());
        laptop.defaults->setSyncFolder(m_folder->path());
        QList<std::shared_ptr<SNStickyNote>> notes;
        for (int index = 0; index < 11; ++index)
            notes.append(desk.add(u"Shopping list %1"_s.arg(index)));
        desk.store.save();
        laptop.mergeNow();
        QVERIFY(laptop.texts().contains(u"Shopping list 10"_s));
        QVERIFY(m_fixture->presenter->asked.isEmpty());

        for (const std::shared_ptr<SNStickyNote> &note : std::as_const(notes))
            desk.store.removeNote(note);
        desk.store.save();
        m_fixture->presenter->answers.append({ answer });
        laptop.mergeNow();
        QCOMPARE(
            m_fixture->presenter->asked, QStringList { u"Another computer deleted 11 notes."_s });
        QCOMPARE(!laptop.texts().contains(u"Shopping list 3"_s), deleted);
    }

    void aMissingFolderIsLookedForAgain()
    {
        Computer desk(m_fixture->presenter);
        const QString later = m_folder->filePath(u"Sync"_s);
        desk.defaults->setSyncFolder(later);
        QVERIFY(!desk.controller.session());
        QVERIFY2(desk.controller.state().problem().contains(later),
            qPrintable(desk.controller.state().problem()));
        m_fixture->time.advanceBy(SNSyncSession::rescanSeconds);
        QVERIFY(!desk.controller.session());
        QVERIFY(!QFileInfo::exists(later));

        // The disk is mounted: the next look finds it.
        QVERIFY(QDir().mkpath(later));
        m_fixture->time.advanceBy(SNSyncSession::rescanSeconds);
        QVERIFY(desk.controller.session());
        QVERIFY(desk.controller.state().problem().isEmpty());
        QVERIFY(SNSyncFolder(later, desk.store.device()).hasOwnJournal());
    }

    void aCopiedHomeTakesANewId()
    {
        Computer copy(m_fixture->presenter);
        const QString copied = copy.store.device();
        // The computer the home came from writes under that id.
        QVERIFY(SNSyncFolder(m_folder->path(), copied)
                    .writeDescription(u"Old desk"_s, u"another machine"_s));
        copy.defaults->setSyncFolder(m_folder->path());
        QVERIFY(copy.controller.session());
        QVERIFY(copy.store.device() != copied);
        QCOMPARE(copy.defaults->deviceIdentifier(), copy.store.device());
        QVERIFY(SNSyncFolder(m_folder->path(), copy.store.device()).hasOwnJournal());
        QCOMPARE(SNSyncFolder(m_folder->path(), copied).describedMachine(), u"another machine"_s);
        QVERIFY(!SNSyncFolder(m_folder->path(), copied).hasOwnJournal());
    }
};

QTEST_MAIN(TestSNSyncController)
#include "TestSNSyncController.moc"
