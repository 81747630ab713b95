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

using namespace Qt::Literals::StringLiterals;

namespace {

std::shared_ptr<SNStickyNote> noteWithText(const QString &text)
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    return note;
}

// The texts of the notes in an archive; "(incomplete)" last when it is not whole.
QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList textsInFile(const QString &path)
{
    const QWKeyedUnarchiver::ParseResult result = QWKeyedUnarchiver::parse(fileBytes(path));
    QStringList texts;
    for (const QWArchiveValue &note : result.root.toArray()) {
        texts.append(QWKeyedUnarchiver::parse(note.valueForKey(u"data")->toData())
                         .root.valueForKey(u"string")
                         ->toString());
    }
    if (!result.isComplete())
        texts.append(u"(incomplete)"_s);
    return texts;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// A device that takes the first bytes and then fails, as a full disk does.
class FailingSaveFile final : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        if (m_written + length > 64)
            return -1;
        m_written += length;
        return QSaveFile::writeData(data, length);
    }

private:
    qint64 m_written = 0;
};

} // namespace

class TestSNStickyNoteManager final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_environment = std::make_unique<QWTestEnvironment>();
        m_scheduler = std::make_unique<QWManualScheduler>();
    }

    void cleanup()
    {
        for (const std::shared_ptr<SNTag> &tag : SNTagManager::sharedManager().tags())
            SNTagManager::sharedManager().removeTag(tag);
        m_scheduler.reset();
        m_environment.reset();
    }

    void firstStartSeedsTheWelcomeNotes()
    {
        QFile resource(SNStickyNoteManager::defaultDatabaseResource);
        QVERIFY(resource.open(QIODevice::ReadOnly));
        const QWKeyedUnarchiver::ParseResult welcome = QWKeyedUnarchiver::parse(resource.readAll());
        QVERIFY2(welcome.isComplete(), qPrintable(welcome.error));

        QVERIFY(!QDir(folder()).exists());
        SNStickyNoteManager store(folder());
        QCOMPARE(store.notesArray().size(), qsizetype(welcome.root.toArray().size()));
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
            QVERIFY(note->hasContent() && !note->windowFrame().isEmpty());
        // The welcome notes show hashtags at work, and the copy is the user's own file.
        QVERIFY(SNTagManager::sharedManager().count() > 0);
        QVERIFY(QFileInfo(store.databasePath()).isWritable());

        // An existing file is never seeded again, even when it holds no notes.
        removeAll(store);
        settle(store);
        QVERIFY(SNStickyNoteManager(folder()).notesArray().isEmpty());
    }

    void addRemoveAndBlankNotes()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        const std::shared_ptr<SNStickyNote> added = noteWithText(u"added"_s);
        const QList<std::shared_ptr<SNStickyNote>> before = store.notesArray();
        store.addNote(added);
        store.addNote(nullptr);
        store.addNote(noteWithText(u"  \n\t \n"_s));
        store.addNote(SNStickyNote::note()); // never typed into
        QVERIFY(before.isEmpty()); // a snapshot does not change
        QCOMPARE(store.notesArray().size(), 3); // blank notes stay in memory and their windows
        settle(store);
        QCOMPARE(textsInFile(store.databasePath()), QStringList { u"added"_s });

        // Removing a note that is not in the list still tells it and saves.
        const std::shared_ptr<SNTag> tag
            = SNTag::tagWithNameColor(u"#outsider"_s, QWColor::black());
        SNTagManager::sharedManager().addTag(tag);
        const std::shared_ptr<SNStickyNote> outsider = noteWithText(u"outsider"_s);
        outsider->setTags({ tag });
        QFile::remove(store.databasePath());
        store.removeNote(outsider);
        settle(store);
        QVERIFY(QFile::exists(store.databasePath()));
        QCOMPARE(SNTagManager::sharedManager().count(), 0); // didDelete ran

        store.removeNote(added);
        settle(store);
        QCOMPARE(textsInFile(store.databasePath()), QStringList());
    }

    // Changes told to the store become one save in the background on the next turn of the
    // event loop; a save on request takes its place, and the store's end writes one still due.
    void changesOfOneTurnMakeOneSave()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        QVERIFY(store.save());
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"edited"_s);
        store.addNote(note);
        note->setThemeName(u"SNUserTheme-Work"_s);
        store.noteDidChange(note);
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            SNStickyNote::themeNameDidChangeNotification, nullptr,
            { { u"oldName"_s, u"SNUserTheme-Work"_s }, { u"newName"_s, u"SNUserTheme-Play"_s } });
        QVERIFY(store.hasPendingSave());
        QCOMPARE(textsInFile(store.databasePath()), QStringList());
        settle(store);
        QVERIFY(!store.hasPendingSave());
        QCOMPARE(SNStickyNoteManager(folder()).notesArray().value(0)->themeName(),
            u"SNUserTheme-Play"_s);

        store.noteDidChange(note);
        QVERIFY(store.save());
        QVERIFY(!store.hasPendingSave());
        {
            SNStickyNoteManager leaving(folder());
            leaving.addNote(noteWithText(u"last words"_s));
        }
        QCOMPARE(textsInFile(store.databasePath()), (QStringList { u"edited"_s, u"last words"_s }));
    }

    // A write that fails half-way leaves the file it replaces whole, with no temporary file
    // beside it; so does an export over an earlier export.
    void failedWritesKeepTheOldFile()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        store.addNote(noteWithText(u"older"_s));
        settle(store);
        const QString exported = m_environment->dataHome() + u"/export.db"_s;
        QVERIFY(store.exportDatabaseToPath(exported));
        store.addNote(noteWithText(u"newer"_s));
        settle(store);
        QVERIFY(store.exportDatabaseToPath(exported)); // the user agreed to replace it
        QCOMPARE(textsInFile(exported), (QStringList { u"older"_s, u"newer"_s }));

        store.setSaveFileFactory(
            [](const QString &path) { return std::make_unique<FailingSaveFile>(path); });
        store.addNote(noteWithText(QString(5000, u'x')));
        m_environment->clearMessages();
        QVERIFY(!store.exportDatabaseToPath(exported));
        QVERIFY(!store.save());
        QCOMPARE(textsInFile(exported), (QStringList { u"older"_s, u"newer"_s }));
        QCOMPARE(textsInFile(store.databasePath()), (QStringList { u"older"_s, u"newer"_s }));
        QCOMPARE(
            QDir(m_environment->dataHome()).entryList(QDir::Files), QStringList { u"export.db"_s });
        QCOMPARE(QDir(folder()).entryList(QDir::Files), QStringList { u"stickies.db"_s });
        QVERIFY2(m_environment->messages().value(0).startsWith(
                     u"[DEBUG] Could not save because of error: "_s),
            qPrintable(m_environment->messages().join(u'\n')));

        store.setSaveFileFactory({});
        QVERIFY(store.save());
        QCOMPARE(textsInFile(store.databasePath()).size(), 3);
    }

    void damagedFileIsMovedAsideAndReplaced()
    {
        const QString path = folder() + u"stickies.db"_s;
        {
            SNStickyNoteManager store(folder());
            removeAll(store);
            store.addNote(noteWithText(u"first"_s));
            store.addNote(noteWithText(u"second"_s));
        }
        const QByteArray damaged = fileBytes(path).chopped(40); // cut inside the second note
        writeFile(path, damaged);

        SNStickyNoteManager store(folder());
        // The damaged file is kept aside, byte for byte; what it still held is read, and saved
        // whole.
        const QString aside = store.movedAsidePath();
        QVERIFY(aside.startsWith(path + u".damaged-"_s));
        QCOMPARE(fileBytes(aside), damaged);
        QVERIFY(!QFile::exists(path));
        QVERIFY(store.save());
        QCOMPARE(textsInFile(path), (QStringList { u"first"_s, u"second"_s }));

        // Not an archive at all: moved aside too, within the same second, beside the first copy.
        writeFile(path, "{\\rtf1 not notes}");
        SNStickyNoteManager other(folder());
        QVERIFY(other.notesArray().isEmpty());
        QCOMPARE(other.movedAsidePath(), aside + u"-2"_s);
        QCOMPARE(fileBytes(aside), damaged);
    }

    void unfinishedSavesAreRemovedAtLoad()
    {
        QDir().mkpath(folder());
        const QStringList leftovers = { u"stickies.db.AbC123"_s, u"stickies.db.x9Y8z7"_s };
        const QStringList kept = { u"stickies.db.damaged-20261121-101500"_s, u"stickies.db.bak"_s,
            u"stickies.db.AbC1234"_s, u"Themes.db.AbC123"_s };
        for (const QString &name : leftovers + kept)
            writeFile(folder() + name, "partial");
        SNStickyNoteManager store(folder());
        for (const QString &name : leftovers)
            QVERIFY2(!QFile::exists(folder() + name), qPrintable(name));
        for (const QString &name : kept)
            QVERIFY2(QFile::exists(folder() + name), qPrintable(name));
    }

    void backgroundSavesFinishAndKeepTheNewest()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"v0"_s);
        store.addNote(note);
        for (int version = 1; version <= 50; ++version) {
            note->setAttributedString(QWAttributedString(u"v%1"_s.arg(version)));
            store.saveInBackground();
        }
        store.waitForBackgroundSaves();
        // Whatever order the workers finished in, the file holds the last version.
        QCOMPARE(textsInFile(store.databasePath()), QStringList { u"v50"_s });
    }

    // What cbor2, a CBOR decoder that is not ours, finds in the notes file: the header, the keys
    // in the order written, text, a date, the float widened, the text's own archive and tags.
    void readableByAnotherCborDecoder()
    {
        SNStickyNoteManager store(folder());
        removeAll(store);
        auto note = noteWithText(u"Grüße #cbor"_s);
        note->setDateCreated(QDateTime::fromMSecsSinceEpoch(1700000000123LL, Qt::UTC));
        note->setWindowFrame(u"{{10, 20}, {300, 200}}"_s);
        note->setWindowAlpha(0.85);
        note->setPinState(1);
        const std::shared_ptr<SNTag> tag
            = SNTag::tagWithNameColor(u"#cbor"_s, QWColor(0.5, 0.25, 1.0));
        SNTagManager::sharedManager().addTag(tag);
        note->setTags({ tag });
        store.addNote(note);
        settle(store);

        QProcess python;
        python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
            { QStringLiteral(VELLUMO_TEST_DATA_DIR "/read_notes.py"), store.databasePath() });
        QVERIFY(python.waitForFinished(60000));
        QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
        QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()),
            u"archiver QWKeyedArchiver 1\nnotes 1\nkeys data dateCreated dateModified "
            "windowFrame isCollapsed collapsedWindowFrame pinState windowAlpha tags themeName "
            "countState\ntext Grüße #cbor\ncreated 2023-11-14T22:13:20.123000+00:00\nframe {{10, "
            "20}, {300, 200}} pin 1 alpha 0.8500000238418579\n"
            "tag #cbor 0.5 0.25 1.0\ntheme SNYellowPadTheme\n"_s);
    }

private:
    // Lets the save the store scheduled run, and waits for it.
    void settle(SNStickyNoteManager &store)
    {
        m_scheduler->advanceBy(0);
        store.waitForBackgroundSaves();
    }
    QString folder() const { return m_environment->dataHome() + u"/Vellumo/"_s; }
    // Without the welcome notes.
    static void removeAll(SNStickyNoteManager &store)
    {
        for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
            store.removeNote(note);
    }

    std::unique_ptr<QWTestEnvironment> m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

// An event loop of its own: the store schedules its saves on it.
QTEST_GUILESS_MAIN(TestSNStickyNoteManager)
#include "TestSNStickyNoteManager.moc"
