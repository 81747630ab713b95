#include "SNAppTestSupport.h"
#include "app/AppDelegate.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWWelcomeWindowController.h"
#include "app/SNImportController.h"
#include "app/SNImportPanel.h"
#include "app/SNImportWindowController.h"
#include "import/SNImportFinder.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "notewindow/SNTextView.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"

#include <QApplication>
#include <QDirIterator>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// A home folder as xpad left it, written by xpad itself.
QString copyXpadHome(const QString &to)
{
    const QString from
        = QStringLiteral(VELLUMO_TEST_DATA_DIR "/../../import/data/golden/xpad/formatted/home");
    if (!QFileInfo::exists(from))
        return {};
    QDirIterator it(from, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + path.mid(from.size());
        QDir().mkpath(QFileInfo(target).path());
        QFile::copy(path, target);
    }
    return to;
}

} // namespace

// The notes of another program as a user meets them: offered in the welcome window on the
// first start, imported with one click, reported, and not offered twice.
class TestSNImportControllerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_scheduler = std::make_unique<QWManualScheduler>();
        m_defaults = GVUserDefaults::make<SNUserDefaults>();
        m_defaults->userDefaults().clear();
        m_notes = std::make_unique<TestNotes>();
        m_hotKeys = std::make_unique<QWHotKeyHelper>(std::make_unique<RecordingGrabber>());
        m_presenter = std::make_shared<RecordingPresenter>();
        m_delegate = std::make_unique<AppDelegate>(AppDelegate::Services { m_defaults.get(),
            &m_notes->store, &m_notes->windowManager, m_hotKeys.get(), m_presenter });
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }

    void cleanup()
    {
        m_delegate.reset();
        m_notes.reset();
        m_hotKeys.reset();
        m_defaults.reset();
        m_scheduler.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void theFirstStartOffersTheNotesOfOtherPrograms()
    {
        QVERIFY(!copyXpadHome(m_home->path()).isEmpty());
        const SNImportEnvironment home = SNImportEnvironment::underHome(m_home->path());
        const QList<SNImportSource> found = SNImportFinder::findSources(home);
        QCOMPARE(found.size(), 1);
        const qsizetype xpadNotes = found.first().result.notes.size();
        QVERIFY(xpadNotes > 0);
        m_delegate->importer().setEnvironment(home);
        QSignalSpy searches(&m_delegate->importer(), &SNImportController::searchFinished);
        const qsizetype before = m_notes->store.notesArray().size();

        m_delegate->applicationWillFinishLaunching();
        m_delegate->applicationDidFinishLaunching();
        QWWelcomeWindowController *welcome = m_delegate->welcomeWindowController();
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
        QCOMPARE(m_notes->store.notesArray().size(), before + xpadNotes);
        // Imported once: the program is no longer ticked, and its notes wait for the welcome
        // window to close like every other note.
        QCOMPARE(list->item(0)->checkState(), Qt::Unchecked);
        QVERIFY(!importButton->isEnabled());
        QCOMPARE(visibleNotes(), 0);
        welcome->window()->close();
        QTRY_COMPARE(visibleNotes(), m_notes->store.notesArray().size());

        // The tray's "Import Notes…" finds them again, as imported before.
        QAction *item = nullptr;
        for (QAction *action : m_delegate->statusItemMenu()->actions())
            item = action->text() == u"Import Notes…"_s ? action : item;
        QVERIFY(item);
        item->trigger();
        QVERIFY(searches.wait());
        QWidget *window = m_delegate->importer().importWindowController()->window();
        QVERIFY(window->isVisible());
        auto *again = window->findChild<QListWidget *>();
        QCOMPARE(again->item(0)->text(), u"xpad — %1 notes, %1 imported before"_s.arg(xpadNotes));
        QCOMPARE(again->item(0)->checkState(), Qt::Unchecked);

        // And the command line adds nothing twice either.
        const SNImportCommand::Result result = m_delegate->handleImportCommand(
            { SNImportCommand::Kind::Import, u"xpad"_s, QString() });
        QVERIFY(result.succeeded());
        QVERIFY2(result.output.startsWith(
                     u"xpad: 0 notes imported\n  %1 notes imported before"_s.arg(xpadNotes)),
            qPrintable(result.output));
        QCOMPARE(m_notes->store.notesArray().size(), before + xpadNotes);
    }

    void anotherHomeFolderIsSearchedOnRequest()
    {
        // Nothing in this home: the welcome window says nothing of other programs.
        m_delegate->importer().setEnvironment(SNImportEnvironment::underHome(m_home->path()));
        QSignalSpy searches(&m_delegate->importer(), &SNImportController::searchFinished);
        m_delegate->applicationWillFinishLaunching();
        m_delegate->applicationDidFinishLaunching();
        QVERIFY(searches.wait());
        QVERIFY(!m_delegate->welcomeWindowController()->importPanel()->isVisible());
        m_delegate->welcomeWindowController()->window()->close();

        // The import window looks in a copy of an old computer's home when asked to.
        QTemporaryDir old;
        QVERIFY(!copyXpadHome(old.path()).isEmpty());
        m_delegate->importer().showImportWindow();
        QVERIFY(searches.wait());
        QWidget *window = m_delegate->importer().importWindowController()->window();
        QCOMPARE(window->findChild<QListWidget *>()->count(), 0);
        m_presenter->savePath = old.path();
        window->findChild<QPushButton *>(u"chooseFolderButton"_s)->click();
        QVERIFY(searches.wait());
        QCOMPARE(window->findChild<QListWidget *>()->item(0)->text(), u"xpad — 2 notes"_s);
    }

    void everyNoteGoesOutAsMarkdownWithWhatItsWindowHolds()
    {
        launchBefore();
        // Typed a moment ago, not saved yet: the export takes it all the same.
        SNStickyNoteWindowController *typed = m_delegate->noteWindows().controllers().first();
        typed->textView()->setPlainText(u"Typed just now\nwith **stars**"_s);
        QTemporaryDir out;
        m_presenter->savePath = out.path();
        QAction *item = nullptr;
        for (QAction *action : m_delegate->statusItemMenu()->actions())
            item = action->text() == u"Export All Notes as Markdown…"_s ? action : item;
        QVERIFY(item);
        item->trigger();
        const qsizetype notes = m_notes->store.notesArray().size();
        QCOMPARE(m_presenter->alerts,
            QStringList {
                u"%1 notes exported as Markdown into “%2”."_s.arg(notes).arg(out.path()) });
        QFile file(out.filePath(u"Typed just now.md"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(file.readAll().contains("with \\*\\*stars\\*\\*"), "the text is escaped");
        // The command line writes the same into another folder; a file there stays.
        QTemporaryDir again;
        writeFile(again.filePath(u"Typed just now.md"_s), "mine");
        const SNImportCommand::Result result = m_delegate->handleImportCommand(
            { SNImportCommand::Kind::ExportMarkdown, QString(), again.path() });
        QVERIFY2(result.succeeded(), qPrintable(result.error));
        QVERIFY(QFileInfo::exists(again.filePath(u"Typed just now 2.md"_s)));
    }

private:
    void launchBefore()
    {
        m_defaults->userDefaults().setValue(QWWelcomeWindowController::wasShownKey(), true);
        m_delegate->applicationWillFinishLaunching();
        m_delegate->applicationDidFinishLaunching();
    }

    qsizetype visibleNotes() const
    {
        const QList<SNStickyNoteWindowController *> all = m_delegate->noteWindows().controllers();
        return std::count_if(all.cbegin(), all.cend(), [](SNStickyNoteWindowController *note) {
            return note->isWindowLoaded() && note->window()->isVisible();
        });
    }

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<SNUserDefaults> m_defaults;
    std::unique_ptr<TestNotes> m_notes;
    std::unique_ptr<QWHotKeyHelper> m_hotKeys;
    std::shared_ptr<RecordingPresenter> m_presenter;
    std::unique_ptr<AppDelegate> m_delegate;
};

QTEST_MAIN(TestSNImportControllerIntegration)
#include "TestSNImportControllerIntegration.moc"
