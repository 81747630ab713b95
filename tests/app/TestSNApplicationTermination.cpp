#include "SNAppTestSupport.h"
#include "app/SNApplicationTermination.h"
#include "notewindow/SNTextView.h"

#include <QCloseEvent>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

// A window that may refuse to close, as one with unsaved work does.
class RefusingWindow final : public QWidget
{
public:
    bool refuses = true;

protected:
    void closeEvent(QCloseEvent *event) override { event->setAccepted(!refuses); }
};

} // namespace

class TestSNApplicationTermination final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_notes = std::make_unique<TestNotes>();
        m_notes->store.setSaveFileFactory([this](const QString &path) {
            if (path.endsWith(SNStickyNoteManager::databaseFileName))
                ++m_archiveWrites;
            return std::make_unique<QSaveFile>(path);
        });
        m_termination
            = std::make_unique<SNApplicationTermination>(m_notes->windows, m_notes->store);
        m_notes->windows.showAllNotes(true);
        // A note window that asked whether to export would be answered at once, not wait.
        m_presenter = std::make_shared<RecordingPresenter>();
        for (SNStickyNoteWindowController *controller : m_notes->windows.controllers())
            controller->setModalPresenter(m_presenter);
        m_archiveWrites = 0;
    }

    void cleanup()
    {
        m_termination.reset();
        m_notes.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void refusedQuitLeavesEveryNoteAsItWas()
    {
        const QList<SNStickyNoteWindowController *> notes = m_notes->windows.controllers();
        RefusingWindow other;
        other.show();
        QSignalSpy told(m_termination.get(), &SNApplicationTermination::terminatingDidChange);

        QEvent quit(QEvent::Quit);
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(other.isVisible());
        QCOMPARE(m_notes->visibleCount(), notes.size());
        QVERIFY(std::none_of(notes.cbegin(), notes.cend(),
            [](const SNStickyNoteWindowController *note) { return note->isTerminating(); }));
        QCOMPARE(told, (QList<QVariantList> { { true }, { false } }));
        QCOMPARE(m_archiveWrites, 0);
        // Closing a note is deleting it again: the export question comes.
        notes.constFirst()->close();
        QCOMPARE(m_presenter->alerts.size(), 1);
        QCOMPARE(m_notes->windows.controllers().size(), notes.size() - 1);

        other.refuses = false;
        QCoreApplication::sendEvent(qApp, &quit);
        QVERIFY(!other.isVisible());
        QCOMPARE(m_notes->visibleCount(), 0);
        QVERIFY(m_termination->isTerminating());
        QCOMPARE(m_archiveWrites, 1);
    }

    void sessionEndSavesAndNotesStayDeletable()
    {
        m_termination->commitDataRequest();
        QCOMPARE(m_archiveWrites, 1);
        // The user may cancel the logout and go on deleting notes.
        m_notes->windows.controllers().constFirst()->close();
        QCOMPARE(m_presenter->alerts.size(), 1);
    }

    // These run the event loop to its end: last.
    void quitKeepsEveryNoteWithItsLastEditAndWritesOnce()
    {
        const QList<std::shared_ptr<SNStickyNote>> notes = m_notes->store.notesArray();
        auto *edited = m_notes->windows.controllerForNote(notes.constFirst().get());
        edited->textView()->setPlainText(QStringLiteral("typed just before the end"));

        // Qt closes every window when asked to quit; closing a note window must not delete it.
        // The quit request and the end of the event loop both end the program: one save.
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
        QCOMPARE(m_notes->visibleCount(), 0);
        QCOMPARE(m_notes->store.notesArray(), notes);
        QVERIFY(m_presenter->alerts.isEmpty());
        QCOMPARE(m_archiveWrites, 1);
        const SNStickyNoteManager reread(m_notes->folder.path());
        QCOMPARE(reread.notesArray().size(), notes.size());
        QCOMPARE(
            textOf(reread.notesArray().constFirst()), QStringLiteral("typed just before the end"));
    }

    void terminationSignalEndsTheProgramWhateverItsWindowsSay()
    {
        RefusingWindow other;
        other.show();
        QTimer::singleShot(
            0, m_termination.get(), &SNApplicationTermination::applicationMustTerminate);
        QTimer refused; // the loop would run on
        refused.callOnTimeout([] { QCoreApplication::exit(1); });
        refused.start(3000);
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(m_archiveWrites, 1);
    }

private:
    std::unique_ptr<TestNotes> m_notes;
    std::shared_ptr<RecordingPresenter> m_presenter;
    std::unique_ptr<SNApplicationTermination> m_termination;
    int m_archiveWrites = 0;
};

QTEST_MAIN(TestSNApplicationTermination)
#include "TestSNApplicationTermination.moc"
