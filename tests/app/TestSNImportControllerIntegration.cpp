#include "SNAppTestSupport.h"
#include "app/SNImportController.h"
#include "app/SNImportPanel.h"
#include "app/SNImportWindowController.h"
#include "notewindow/SNTextView.h"

#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// A home folder as xpad left it, written by xpad itself: two pads.
const QString xpadHome = importGolden(u"xpad/formatted/home"_s);
constexpr int xpadNotes = 2;

} // namespace

// The notes of another program as a user meets them: offered in the welcome window on the
// first start, imported with one click, reported, and not offered twice.
class TestSNImportControllerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_app = std::make_unique<TestApplication>();
        // A first start, unless a test says otherwise.
        m_app->defaults->userDefaults().remove(QWWelcomeWindowController::wasShownKey());
    }

    void cleanup()
    {
        m_app.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void theFirstStartOffersTheNotesOfOtherPrograms()
    {
        QTemporaryDir xpadUser;
        copyFolder(xpadHome, xpadUser.path());
        m_app->delegate->importer().setEnvironment(SNImportEnvironment::underHome(xpadUser.path()));
        QSignalSpy searches(&m_app->delegate->importer(), &SNImportController::searchFinished);
        const qsizetype before = m_app->notes.store.notesArray().size();

        m_app->launch();
        QWWelcomeWindowController *welcome = m_app->delegate->welcomeWindowController();
        QVERIFY(welcome->window()->isVisible());
        QVERIFY(searches.wait());
        SNImportPanel *panel = welcome->importPanel();
        QVERIFY(panel->isVisible());
        auto *list = panel->findChild<QListWidget *>();
        QCOMPARE(list->count(), 1);
        QCOMPARE(list->item(0)->text(), u"xpad — %1 notes"_s.arg(xpadNotes));
        QCOMPARE(list->item(0)->checkState(), Qt::Checked);

        QCOMPARE(visibleNotes(), 0);
        QPushButton *importButton = panel->findChild<QPushButton *>(u"importButton"_s);
        QTest::mouseClick(importButton, Qt::LeftButton);
        auto *report = panel->findChild<QPlainTextEdit *>();
        QVERIFY(report->isVisible());
        QVERIFY2(report->toPlainText().startsWith(u"xpad: %1 notes imported"_s.arg(xpadNotes)),
            qPrintable(report->toPlainText()));
        QCOMPARE(m_app->notes.store.notesArray().size(), before + xpadNotes);
        // Imported once: the program is no longer ticked, and its notes wait for the welcome
        // window to close like every other note.
        QCOMPARE(list->item(0)->checkState(), Qt::Unchecked);
        QVERIFY(!importButton->isEnabled());
        QCOMPARE(visibleNotes(), 0);
        welcome->window()->close();
        QTRY_COMPARE(visibleNotes(), m_app->notes.store.notesArray().size());

        // The tray's "Import Notes…" finds them again, as imported before.
        QVERIFY(m_app->triggerTrayItem(u"Import Notes…"_s));
        QVERIFY(searches.wait());
        QWidget *window = m_app->delegate->importer().importWindowController()->window();
        QVERIFY(window->isVisible());
        auto *again = window->findChild<QListWidget *>();
        QCOMPARE(again->item(0)->text(), u"xpad — %1 notes, %1 imported before"_s.arg(xpadNotes));
        QCOMPARE(again->item(0)->checkState(), Qt::Unchecked);

        // And the command line adds nothing twice either.
        const SNImportCommand::Result result = m_app->delegate->handleImportCommand(
            { SNImportCommand::Kind::Import, u"xpad"_s, QString() });
        QVERIFY(result.succeeded());
        QVERIFY2(result.output.startsWith(
                     u"xpad: 0 notes imported\n  %1 notes imported before"_s.arg(xpadNotes)),
            qPrintable(result.output));
        QCOMPARE(m_app->notes.store.notesArray().size(), before + xpadNotes);
    }

    void anotherHomeFolderIsSearchedOnRequest()
    {
        // Nothing in this home: the welcome window says nothing of other programs.
        const QTemporaryDir empty;
        m_app->delegate->importer().setEnvironment(SNImportEnvironment::underHome(empty.path()));
        QSignalSpy searches(&m_app->delegate->importer(), &SNImportController::searchFinished);
        m_app->launch();
        QVERIFY(searches.wait());
        QVERIFY(!m_app->delegate->welcomeWindowController()->importPanel()->isVisible());
        m_app->delegate->welcomeWindowController()->window()->close();

        // The import window looks in a copy of an old computer's home when asked to.
        QTemporaryDir old;
        copyFolder(xpadHome, old.path());
        m_app->delegate->importer().showImportWindow();
        QVERIFY(searches.wait());
        QWidget *window = m_app->delegate->importer().importWindowController()->window();
        QCOMPARE(window->findChild<QListWidget *>()->count(), 0);
        m_app->presenter->savePath = old.path();
        window->findChild<QPushButton *>(u"chooseFolderButton"_s)->click();
        QVERIFY(searches.wait());
        QCOMPARE(window->findChild<QListWidget *>()->item(0)->text(),
            u"xpad — %1 notes"_s.arg(xpadNotes));
    }

    void everyNoteGoesOutAsMarkdownWithWhatItsWindowHolds()
    {
        m_app->defaults->userDefaults().setValue(QWWelcomeWindowController::wasShownKey(), true);
        m_app->launch();
        // Typed a moment ago, not saved yet: the export takes it all the same.
        SNStickyNoteWindowController *typed = m_app->delegate->noteWindows().controllers().first();
        typed->textView()->setPlainText(u"Typed just now\nwith **stars**"_s);
        QTemporaryDir out;
        m_app->presenter->savePath = out.path();
        QVERIFY(m_app->triggerTrayItem(u"Export All Notes as Markdown…"_s));
        const qsizetype notes = m_app->notes.store.notesArray().size();
        QCOMPARE(m_app->presenter->alerts,
            QStringList {
                u"%1 notes exported as Markdown into “%2”."_s.arg(notes).arg(out.path()) });
        QVERIFY2(fileBytes(out.filePath(u"Typed just now.md"_s)).contains("with \\*\\*stars\\*\\*"),
            "the text is escaped");
        // The command line writes the same into another folder; a file there stays.
        QTemporaryDir again;
        writtenFile(again.filePath(u"Typed just now.md"_s), "mine");
        const SNImportCommand::Result result = m_app->delegate->handleImportCommand(
            { SNImportCommand::Kind::ExportMarkdown, QString(), again.path() });
        QVERIFY2(result.succeeded(), qPrintable(result.error));
        QVERIFY(QFileInfo::exists(again.filePath(u"Typed just now 2.md"_s)));
    }

private:
    qsizetype visibleNotes() const { return m_app->notes.visibleCount(); }

    std::unique_ptr<TestApplication> m_app;
};

QTEST_MAIN(TestSNImportControllerIntegration)
#include "TestSNImportControllerIntegration.moc"
