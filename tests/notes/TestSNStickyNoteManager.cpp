#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QDir>
#include <QProcess>
#include <QSaveFile>
#include <QTest>

namespace {

std::shared_ptr<SNStickyNote> noteWithText(const QString &text)
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    return note;
}

QStringList textsInFile(const QString &path, bool *complete = nullptr)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(file.readAll());
    if (complete)
        *complete = result.isComplete();
    QStringList texts;
    for (const QWArchiveValue &note : result.root.toArray()) {
        const QWKeyedUnarchiver::ParseResult text
            = QWKeyedUnarchiver::parse(note.valueForKey(u"data")->toData());
        texts.append(text.root.valueForKey(u"string")->toString());
    }
    return texts;
}

// A device that takes the first bytes and then fails, as a full disk does.
class FailingSaveFile final : public QSaveFile
{
public:
    FailingSaveFile(const QString &path, qint64 capacity)
        : QSaveFile(path), m_capacity(capacity) { }

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        if (m_written + length > m_capacity)
            return -1;
        m_written += length;
        return QSaveFile::writeData(data, length);
    }

private:
    qint64 m_capacity;
    qint64 m_written = 0;
};

} // namespace

class TestSNStickyNoteManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void firstStartSeedsTheWelcomeNotes();
    void blankNotesAreNotSaved();
    void addRemoveAndSnapshots();
    void changesOfOneTurnMakeOneSave();
    void exportReplacesAnExistingFileAtomically();
    void damagedFileIsMovedAsideAndReplaced();
    void unfinishedSavesAreRemovedAtLoad();
    void failedWriteKeepsTheOldFile();
    void backgroundSavesFinishAndKeepTheNewest();
    void readableByAnotherCborDecoder();

private:
    // Lets the save the store scheduled run, and waits for it.
    void settle(SNStickyNoteManager &store);
    QString folder() const { return m_environment->dataHome() + QStringLiteral("/Vellumo/"); }
    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNoteManager::init()
{
    m_environment = std::make_unique<QWTestEnvironment>();
    m_scheduler = std::make_unique<QWManualScheduler>();
}

void TestSNStickyNoteManager::cleanup()
{
    for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
        SNTagManager::sharedManager().removeTag(tag);
    m_scheduler.reset();
    m_environment.reset();
}

void TestSNStickyNoteManager::settle(SNStickyNoteManager &store)
{
    m_scheduler->advanceBy(0);
    store.waitForBackgroundSaves();
}

void TestSNStickyNoteManager::firstStartSeedsTheWelcomeNotes()
{
    QFile resource(SNStickyNoteManager::defaultDatabaseResource);
    QVERIFY(resource.open(QIODevice::ReadOnly));
    const QWKeyedUnarchiver::ParseResult welcome = QWKeyedUnarchiver::parse(resource.readAll());
    QVERIFY2(welcome.isComplete(), qPrintable(welcome.error));
    const qsizetype welcomeCount = qsizetype(welcome.root.toArray().size());
    QVERIFY(welcomeCount >= 3 && welcomeCount <= 4);

    QVERIFY(!QDir(folder()).exists());
    SNStickyNoteManager store(folder());
    QVERIFY(QFile::exists(folder() + QStringLiteral("stickies.db")));
    QCOMPARE(store.notesArray().size(), welcomeCount);
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray()) {
        QVERIFY(note->hasContent());
        QVERIFY(!note->windowFrame().isEmpty());
    }
    // The welcome notes show hashtags at work.
    QVERIFY(SNTagManager::sharedManager().count() > 0);
    // The copy is the user's own, writable file.
    QVERIFY(QFileInfo(store.databasePath()).isWritable());
    QVERIFY(store.save());

    // An existing file is never seeded again, even when it holds no notes.
    store.loadDatabase();
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
    settle(store);
    SNStickyNoteManager again(folder());
    QVERIFY(again.notesArray().isEmpty());
}

void TestSNStickyNoteManager::blankNotesAreNotSaved()
{
    SNStickyNoteManager store(folder());
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
    store.addNote(noteWithText(QStringLiteral("keep me")));
    store.addNote(noteWithText(QStringLiteral("  \n\t \n")));
    store.addNote(SNStickyNote::note()); // never typed into
    QCOMPARE(store.notesArray().size(), 3); // still in memory and in their windows
    QVERIFY(store.save());
    QCOMPARE(textsInFile(store.databasePath()), QStringList { QStringLiteral("keep me") });
    SNStickyNoteManager reloaded(folder());
    QCOMPARE(reloaded.notesArray().size(), 1);
}

void TestSNStickyNoteManager::addRemoveAndSnapshots()
{
    SNStickyNoteManager store(folder());
    const QList<std::shared_ptr<SNStickyNote>> before = store.notesArray();
    const std::shared_ptr<SNStickyNote> added = noteWithText(QStringLiteral("added"));
    store.addNote(added);
    store.addNote(nullptr);
    QVERIFY(!before.contains(added)); // a snapshot does not change
    QCOMPARE(store.notesArray().size(), before.size() + 1);
    settle(store);
    QVERIFY(textsInFile(store.databasePath()).contains(QStringLiteral("added")));

    // Removing a note that is not in the list still tells it and saves.
    const std::shared_ptr<SNTag> tag
        = SNTag::tagWithNameColor(QStringLiteral("#outsider"), QWColor::black());
    SNTagManager::sharedManager().addTag(tag);
    const std::shared_ptr<SNStickyNote> outsider = noteWithText(QStringLiteral("outsider"));
    outsider->setTags({ tag });
    QFile::remove(store.databasePath());
    store.removeNote(outsider);
    settle(store);
    QVERIFY(QFile::exists(store.databasePath()));
    QVERIFY(
        !SNTagManager::sharedManager().tagWithName(QStringLiteral("#outsider"))); // didDelete ran

    store.removeNote(added);
    QVERIFY(!store.notesArray().contains(added));
    settle(store);
    QVERIFY(!textsInFile(store.databasePath()).contains(QStringLiteral("added")));
}

void TestSNStickyNoteManager::changesOfOneTurnMakeOneSave()
{
    SNStickyNoteManager store(folder());
    QVERIFY(store.save());
    const auto note = noteWithText(QStringLiteral("edited"));
    store.addNote(note);
    note->setThemeName(QStringLiteral("SNUserTheme-Work"));
    store.noteDidChange(note);
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        SNStickyNote::themeNameDidChangeNotification, nullptr,
        { { QStringLiteral("oldName"), QStringLiteral("SNUserTheme-Work") },
            { QStringLiteral("newName"), QStringLiteral("SNUserTheme-Play") } });
    QVERIFY(store.hasPendingSave());
    QVERIFY(!textsInFile(store.databasePath()).contains(QStringLiteral("edited")));
    settle(store);
    QVERIFY(!store.hasPendingSave());
    SNStickyNoteManager reread(folder());
    QCOMPARE(reread.notesArray().constLast()->themeName(), QStringLiteral("SNUserTheme-Play"));

    // A save on request takes the place of the scheduled one; one still scheduled when the
    // store goes is written then.
    store.noteDidChange(note);
    QVERIFY(store.save());
    QVERIFY(!store.hasPendingSave());
    {
        SNStickyNoteManager leaving(folder());
        leaving.addNote(noteWithText(QStringLiteral("last words")));
    }
    QVERIFY(textsInFile(store.databasePath()).contains(QStringLiteral("last words")));
}

void TestSNStickyNoteManager::exportReplacesAnExistingFileAtomically()
{
    SNStickyNoteManager store(folder());
    const QString exported = m_environment->dataHome() + QStringLiteral("/export.db");
    QVERIFY(store.exportDatabaseToPath(exported));
    QCOMPARE(textsInFile(exported), textsInFile(store.databasePath()));

    // The user has agreed to replace the earlier export.
    store.addNote(noteWithText(QStringLiteral("newer")));
    settle(store);
    QVERIFY(store.exportDatabaseToPath(exported));
    bool complete = false;
    const QStringList replaced = textsInFile(exported, &complete);
    QVERIFY(complete);
    QCOMPARE(replaced, textsInFile(store.databasePath()));
    QVERIFY(replaced.contains(QStringLiteral("newer")));

    // A write that fails half-way leaves that export whole, with no temporary file beside it.
    store.addNote(noteWithText(QStringLiteral("newest")));
    store.setSaveFileFactory(
        [](const QString &path) { return std::make_unique<FailingSaveFile>(path, 64); });
    m_environment->clearMessages();
    QVERIFY(!store.exportDatabaseToPath(exported));
    QCOMPARE(textsInFile(exported, &complete), replaced);
    QVERIFY(complete);
    QCOMPARE(QDir(m_environment->dataHome()).entryList(QDir::Files),
        QStringList { QStringLiteral("export.db") });
    const QStringList messages = m_environment->messages();
    QCOMPARE(messages.size(), 1);
    QVERIFY2(
        messages.first().startsWith(QStringLiteral("[DEBUG] Could not save because of error: ")),
        qPrintable(messages.first()));
}

void TestSNStickyNoteManager::damagedFileIsMovedAsideAndReplaced()
{
    QDir().mkpath(folder());
    const QString path = folder() + QStringLiteral("stickies.db");
    {
        SNStickyNoteManager store(folder());
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
            store.removeNote(note);
        store.addNote(noteWithText(QStringLiteral("first")));
        store.addNote(noteWithText(QStringLiteral("second")));
    }
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray intact = file.readAll();
    file.close();
    const QByteArray damaged = intact.left(intact.size() - 40); // cut off inside the second note
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(damaged);
    file.close();

    SNStickyNoteManager store(folder());
    // The damaged file is kept aside, byte for byte; the complete note is still there.
    const QString aside = store.movedAsidePath();
    QVERIFY(aside.startsWith(path + QStringLiteral(".damaged-")));
    QFile kept(aside);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), damaged);
    QVERIFY(!QFile::exists(path));
    QVERIFY(!store.notesArray().isEmpty());
    QCOMPARE(store.notesArray().first()->attributedString()->string(), QStringLiteral("first"));

    QVERIFY(store.save());
    bool complete = false;
    QCOMPARE(textsInFile(path, &complete).value(0), QStringLiteral("first"));
    QVERIFY(complete);

    // Not an archive at all: moved aside too, and the store starts empty.
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("{\\rtf1 not notes}");
    file.close();
    SNStickyNoteManager other(folder()); // within the same second as the first
    QVERIFY(other.notesArray().isEmpty());
    QVERIFY(QFile::exists(other.movedAsidePath()));
    QCOMPARE(other.movedAsidePath(), aside + QStringLiteral("-2"));
    QVERIFY(QFile::exists(aside)); // the earlier copy is still there
}

void TestSNStickyNoteManager::unfinishedSavesAreRemovedAtLoad()
{
    QDir().mkpath(folder());
    const QStringList leftovers
        = { QStringLiteral("stickies.db.AbC123"), QStringLiteral("stickies.db.x9Y8z7") };
    const QStringList kept = { QStringLiteral("stickies.db.damaged-20261121-101500"),
        QStringLiteral("stickies.db.bak"), QStringLiteral("stickies.db.AbC1234"),
        QStringLiteral("Themes.db.AbC123") };
    for (const QString &name : leftovers + kept) {
        QFile file(folder() + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("partial");
    }
    SNStickyNoteManager store(folder());
    for (const QString &name : leftovers)
        QVERIFY2(!QFile::exists(folder() + name), qPrintable(name));
    for (const QString &name : kept)
        QVERIFY2(QFile::exists(folder() + name), qPrintable(name));
    QVERIFY(!store.notesArray().isEmpty());
}

void TestSNStickyNoteManager::failedWriteKeepsTheOldFile()
{
    SNStickyNoteManager store(folder());
    QVERIFY(store.save());
    const QStringList before = textsInFile(store.databasePath());
    store.setSaveFileFactory(
        [](const QString &path) { return std::make_unique<FailingSaveFile>(path, 64); });
    store.addNote(noteWithText(QString(5000, QLatin1Char('x'))));
    QVERIFY(!store.save());
    bool complete = false;
    QCOMPARE(textsInFile(store.databasePath(), &complete), before);
    QVERIFY(complete);
    const QStringList leftovers = QDir(folder()).entryList(QDir::Files);
    QCOMPARE(leftovers, QStringList { QStringLiteral("stickies.db") }); // no temporary file left

    store.setSaveFileFactory({});
    QVERIFY(store.save());
    QCOMPARE(textsInFile(store.databasePath()).size(), before.size() + 1);
}

void TestSNStickyNoteManager::backgroundSavesFinishAndKeepTheNewest()
{
    SNStickyNoteManager store(folder());
    const std::shared_ptr<SNStickyNote> note = noteWithText(QStringLiteral("v0"));
    store.addNote(note);
    for (int version = 1; version <= 50; ++version) {
        note->setAttributedString(QWAttributedString(QStringLiteral("v%1").arg(version)));
        store.saveInBackground();
    }
    store.waitForBackgroundSaves();
    // Whatever order the workers finished in, the file holds the last version.
    QVERIFY(textsInFile(store.databasePath()).contains(QStringLiteral("v50")));
}

void TestSNStickyNoteManager::readableByAnotherCborDecoder()
{
    SNStickyNoteManager store(folder());
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
    auto note = noteWithText(QStringLiteral("Grüße #cbor"));
    note->setWindowFrame(QStringLiteral("{{10, 20}, {300, 200}}"));
    note->setWindowAlpha(0.85);
    note->setPinState(1);
    const std::shared_ptr<SNTag> tag
        = SNTag::tagWithNameColor(QStringLiteral("#cbor"), QWColor(0.5, 0.25, 1.0));
    SNTagManager::sharedManager().addTag(tag);
    note->setTags({ tag });
    store.addNote(note);
    settle(store);

    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { QStringLiteral(VELLUMO_TEST_DATA_DIR "/read_notes.py"), store.databasePath() });
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitCode() == 0, qPrintable(QString::fromUtf8(python.readAllStandardError())));
    const QStringList lines = QString::fromUtf8(python.readAllStandardOutput())
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.value(0), QStringLiteral("notes 1"));
    QCOMPARE(lines.value(1),
        QStringLiteral("keys data dateCreated dateModified windowFrame isCollapsed "
                       "collapsedWindowFrame pinState windowAlpha tags themeName countState"));
    QCOMPARE(lines.value(2), QStringLiteral("text Grüße #cbor"));
    QCOMPARE(lines.value(3),
        QStringLiteral("frame {{10, 20}, {300, 200}} pin 1 alpha 0.8500000238418579"));
    QCOMPARE(lines.value(4), QStringLiteral("tag #cbor 0.5 0.25 1.0"));
    QCOMPARE(lines.value(5), QStringLiteral("theme SNYellowPadTheme"));
}

QTEST_MAIN(TestSNStickyNoteManager)
#include "TestSNStickyNoteManager.moc"
