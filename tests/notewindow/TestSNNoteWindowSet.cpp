#include "SNNoteWindowTestSupport.h"
#include "kit/QWColor.h"
#include "kit/widgets/QWWindowManager.h"
#include "notewindow/SNMergedTextLoader.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNTextView.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <mutex>

using namespace Qt::StringLiterals;

// Which note windows there are and which show: one window per stored note, the tag filter of a
// note's menu, and tag browsing put back as it was.
class TestSNNoteWindowSet final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        f.init();
        m_store = std::make_unique<SNStickyNoteManager>(f.environment.dataHome() + u"/set"_s);
        for (const auto &note : m_store->notesArray())
            m_store->removeNote(note);
        m_windows = std::make_unique<QWWindowManager>();
        m_set = std::make_unique<SNNoteWindowSet>(*m_store, *m_windows);
        m_tag = SNTag::tagWithNameColor(u"#work"_s, QWColor::black());
        SNTagManager::sharedManager().addTag(m_tag);
        for (const QString &text : { u"#work report"_s, u"#work meeting"_s, u"home"_s }) {
            auto note = noteWithText(text);
            if (text.startsWith(QLatin1Char('#')))
                note->setTags({ m_tag });
            m_store->addNote(note);
        }
    }

    void cleanup()
    {
        for (SNStickyNoteWindowController *controller : m_set->controllers()) {
            // Closing at the end of a test only flushes the note.
            controller->setIsTerminating(true);
            controller->window()->close();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (const auto &note : m_store->notesArray())
            note->setTags({});
        SNTagManager::sharedManager().removeTag(m_tag);
        m_set.reset();
        m_windows.reset();
        m_store.reset();
        f.cleanup();
    }

    void showAllNotesGivesEachNoteOneWindow()
    {
        // Shown, hidden and shown again: the same windows come back; a note stored meanwhile
        // (opened from a file) gets a window of its own. The tray's test hides and shows them all.
        m_set->showAllNotes(true);
        m_set->hideAllNotes();
        m_store->addNote(noteWithText(u"from a file"_s));
        m_set->showAllNotes(true);
        QCOMPARE(m_set->controllers().size(), 4);
        QCOMPARE(visibility(), (QList<bool> { true, true, true, true }));
        for (const auto &note : m_store->notesArray())
            QCOMPARE(m_set->controllerForNote(note.get())->note(), note);

        // A new note is stored and opened in one step.
        auto fresh = SNStickyNote::note();
        SNStickyNoteWindowController *opened = m_set->openNote(fresh, false);
        QVERIFY(m_store->notesArray().contains(fresh));
        QCOMPARE(m_set->controllerForNote(fresh.get()), opened);
    }

    void noteMenuShowsOnlyTheNotesOfItsTag()
    {
        m_set->showAllNotes(true);
        const QList<SNStickyNoteWindowController *> controllers = m_set->controllers();
        for (SNStickyNoteWindowController *controller : controllers)
            controller->setModalPresenter(f.presenter);

        QAction item;
        item.setData(u"#work"_s);
        controllers[2]->showTagsWithItem(&item);
        // The note asking stays in front even without the tag.
        QCOMPARE(visibility(), (QList<bool> { true, true, true }));
        controllers[0]->showTagsWithItem(&item);
        QCOMPARE(visibility(), (QList<bool> { true, true, false }));
        QCOMPARE(f.presenter->beeps, 0);

        item.setData(u"#nosuchtag"_s);
        controllers[0]->showTagsWithItem(&item);
        QCOMPARE(f.presenter->beeps, 1);
        QCOMPARE(visibility(), (QList<bool> { true, true, false }));
    }

    void tagBrowsingPutsBackWhatItHid()
    {
        m_set->showAllNotes(true);
        QWidget browser;
        const QList<SNStickyNoteWindowController *> controllers = m_set->controllers();
        controllers[1]->window()->hide();

        // Nothing picked: every note as it was.
        m_set->beginTagBrowsing();
        QCOMPARE(visibility(), (QList<bool> { false, false, false }));
        m_set->showOnlyNotesWithTags({}, &browser);
        QVERIFY(m_set->notesShownForTags().isEmpty());
        m_set->endTagBrowsing();
        QCOMPARE(visibility(), (QList<bool> { true, false, true }));
        QVERIFY(!controllers[0]->window()->testAttribute(Qt::WA_ShowWithoutActivating));

        // A pick: the notes of the tag stay, the others stay hidden.
        m_set->beginTagBrowsing();
        m_set->showOnlyNotesWithTags({ m_tag }, &browser);
        QCOMPARE(m_set->notesShownForTags(), controllers.mid(0, 2));
        QCOMPARE(visibility(), (QList<bool> { true, true, false }));
        m_set->endTagBrowsing();
        QCOMPARE(visibility(), (QList<bool> { true, true, false }));
    }

    // What another computer changed reaches the windows: a new note opens, a deleted one closes
    // without asking, and the note being typed into shows the other text with the cursor on the
    // same characters, without the change counting as an edit of this computer.
    void mergeReachesTheWindowsWithoutDisturbingTheTyping()
    {
        m_set->showAllNotes(true);
        const QList<SNStickyNoteWindowController *> controllers = m_set->controllers();
        controllers[2]->setModalPresenter(f.presenter);
        const auto typedInto = controllers[0]->note();
        const auto deleted = controllers[2]->note();
        SNTextView *editor = controllers[0]->textView();
        select(editor, 6, 6); // "#work |report"
        m_store->save();
        const SNNoteVersion before = typedInto->version();

        const auto elsewhere = noteWithText(u"Today: #work report"_s);
        typedInto->takeTextOf(*elsewhere);
        m_store->removeMergedNote(deleted);
        const auto arrived = noteWithText(u"made on the laptop"_s);
        m_store->addMergedNote(arrived);
        SNRecordMerger::Result result;
        result.changed = { typedInto };
        result.removed = { deleted };
        result.added = { arrived };
        m_set->notesDidMerge(result);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        QCOMPARE(editor->toPlainText(), u"Today: #work report"_s);
        QCOMPARE(editor->textCursor().position(), 13);
        QVERIFY(!m_set->controllerForNote(deleted.get()));
        QVERIFY(m_set->controllerForNote(arrived.get())->window()->isVisible());
        QVERIFY(f.presenter->alerts.isEmpty());
        QVERIFY(!m_store->notesArray().contains(deleted));

        // Saving the window takes nothing from it: the merged text was no edit here.
        controllers[0]->save();
        m_store->save();
        QCOMPARE(typedInto->version().textEdits, before.textEdits);
        QCOMPARE(typedInto->attributedString()->string(), u"Today: #work report"_s);

        // Where a cursor goes when the text changes around it.
        QCOMPARE(SNMergedTextLoader::mapPosition(u"abcdef"_s, u"abXcdef"_s, 1), 1);
        QCOMPARE(SNMergedTextLoader::mapPosition(u"abcdef"_s, u"abXcdef"_s, 4), 5);
        QCOMPARE(SNMergedTextLoader::mapPosition(u"abcdef"_s, u"af"_s, 3), 1);
        QCOMPARE(SNMergedTextLoader::mapPosition(u"abcdef"_s, u""_s, 6), 0);
    }

    // Before each merge every window hands its typing to its note: only a note typed into is saved
    // again, since each save is a change for other computers to read, and their reading leads to
    // more merges here.
    void flushingEveryNoteSavesOnlyTheTypedOne()
    {
        m_set->showAllNotes(true);
        m_store->save();
        std::mutex recordsMutex;
        qsizetype records = 0;
        m_store->setOwnRecordsHandler([&](const QList<QByteArray> &saved) {
            std::lock_guard lock(recordsMutex);
            records += saved.size();
        });
        const auto forget = qScopeGuard([this] { m_store->setOwnRecordsHandler({}); });

        m_set->flushEveryNote(false);
        m_store->save();
        QCOMPARE(records, 0);

        m_set->controllers().constFirst()->textView()->insertPlainText(u"Today: "_s);
        m_set->flushEveryNote(false);
        m_store->save();
        QCOMPARE(records, 1);
    }

private:
    QList<bool> visibility() const
    {
        QList<bool> visible;
        for (const auto &note : m_store->notesArray())
            visible.append(m_set->controllerForNote(note.get())->window()->isVisible());
        return visible;
    }

    NoteWindowFixture f;
    std::unique_ptr<SNStickyNoteManager> m_store;
    std::unique_ptr<QWWindowManager> m_windows;
    std::unique_ptr<SNNoteWindowSet> m_set;
    std::shared_ptr<SNTag> m_tag;
};

QTEST_MAIN(TestSNNoteWindowSet)
#include "TestSNNoteWindowSet.moc"
