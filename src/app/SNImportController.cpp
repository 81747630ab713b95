#include "app/SNImportController.h"

#include "app/SNImportCommandRunner.h"
#include "app/SNImportPanel.h"
#include "app/SNImportWindowController.h"
#include "import/SNImportCatalog.h"
#include "import/SNImportFinder.h"
#include "import/SNImportLedger.h"
#include "import/SNImportReader.h"
#include "import/SNMarkdownExporter.h"
#include "import/SNNoteImporter.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeManager.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QThread>

using namespace Qt::Literals::StringLiterals;

SNImportController::SNImportController(SNStickyNoteManager &store, SNNoteWindowSet &noteWindows,
    std::shared_ptr<SNModalPresenter> presenter, QObject *parent)
    : QObject(parent),
      m_store(store),
      m_noteWindows(noteWindows),
      m_presenter(std::move(presenter)),
      m_environment(SNImportEnvironment::current())
{ }

SNImportController::~SNImportController()
{
    // A search still reading must not outlive what it reports to.
    for (const QPointer<QThread> &thread : std::as_const(m_searches)) {
        if (thread) {
            thread->wait();
            delete thread;
        }
    }
}

SNImportCommand::Result SNImportController::run(const SNImportCommand &command)
{
    if (command.kind == SNImportCommand::Kind::ExportMarkdown)
        m_noteWindows.flushEveryNote(false);
    SNImportCommandRunner runner(m_store, SNThemeManager::sharedManager(),
        SNTagManager::sharedManager(),
        [this](const std::shared_ptr<SNStickyNote> &note) { m_noteWindows.openNote(note, true); });
    runner.setEnvironment(m_environment);
    return runner.run(command);
}

void SNImportController::showImportWindow()
{
    const bool isNew = !m_window;
    if (isNew)
        m_window = std::make_unique<SNImportWindowController>();
    m_window->showWindow();
    if (isNew) {
        connect(m_window->importPanel(), &SNImportPanel::importRequested, this,
            [this] { importTicked(m_window->importPanel()); });
        connect(m_window.get(), &SNImportWindowController::otherFolderRequested, this,
            &SNImportController::chooseOtherHome);
    }
    search(m_window->importPanel(), m_environment, false);
}

void SNImportController::offerIn(SNImportPanel *panel)
{
    panel->hide();
    connect(panel, &SNImportPanel::importRequested, this, [this, panel] { importTicked(panel); });
    search(panel, m_environment, true);
}

void SNImportController::search(
    SNImportPanel *panel, const SNImportEnvironment &environment, bool hideIfNone)
{
    panel->showSearching();
    // Reading a program's folder may take a while: the window stays alive meanwhile.
    auto found = std::make_shared<QList<SNImportSource>>();
    QThread *thread = QThread::create(
        [found, environment] { *found = SNImportFinder::findSources(environment); });
    const QPointer<SNImportPanel> target(panel);
    m_searches.append(thread);
    connect(thread, &QThread::finished, this, [this, thread, found, target, hideIfNone] {
        m_searches.removeAll(thread);
        thread->deleteLater();
        if (!target)
            return;
        showFound(target, *found);
        if (hideIfNone)
            target->setVisible(target->hasSources());
        Q_EMIT searchFinished();
    });
    thread->start();
}

void SNImportController::showFound(SNImportPanel *panel, const QList<SNImportSource> &sources)
{
    const SNImportLedger ledger(m_store.baseDatabasePath());
    panel->showSources(sources, [&ledger](const SNImportSource &source) {
        return ledger.countImported(source.programId, source.result.notes);
    });
}

void SNImportController::importTicked(SNImportPanel *panel)
{
    SNImportLedger ledger(m_store.baseDatabasePath());
    // The welcome window keeps every note hidden until it closes and then gives each note its
    // window; the import window opens them at once.
    const bool show = m_window && panel == m_window->importPanel();
    SNNoteImporter importer(m_store, SNThemeManager::sharedManager(), SNTagManager::sharedManager(),
        ledger, [this, show](const std::shared_ptr<SNStickyNote> &note) {
            if (show)
                m_noteWindows.openNote(note, true);
            else
                m_store.addNote(note);
        });
    QStringList reports;
    for (const SNImportSource &source : panel->tickedSources()) {
        const std::unique_ptr<SNImportReader> reader
            = SNImportCatalog::readerWithId(source.programId);
        if (reader)
            reports.append(importer.importNotes(*reader, source.path, source.result).text());
    }
    panel->showReport(reports.join(u"\n\n"_s));
    // What came in now counts as imported before: nothing is ticked twice.
    showFound(panel, panel->sources());
}

void SNImportController::chooseOtherHome()
{
    QFileDialog panel(m_window ? m_window->window() : nullptr,
        tr("Choose the home folder that holds the other program's notes"));
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    const QString folder = m_presenter->runSavePanel(panel);
    if (folder.isEmpty() || !m_window)
        return;
    search(m_window->importPanel(), SNImportEnvironment::underHome(folder), false);
}

void SNImportController::exportMarkdown(QWidget *parentWindow)
{
    QFileDialog panel(parentWindow, tr("Export All Notes as Markdown"));
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    panel.setLabelText(QFileDialog::Accept, tr("Export"));
    const QString folder = m_presenter->runSavePanel(panel);
    if (folder.isEmpty())
        return;
    // Whatever the windows hold goes out, not only what was saved last.
    m_noteWindows.flushEveryNote(false);
    const SNMarkdownExportResult result
        = SNMarkdownExporter::exportNotes(m_store.notesArray(), folder);
    QMessageBox alert(result.problems.isEmpty() ? QMessageBox::Information : QMessageBox::Warning,
        tr("Export All Notes as Markdown"), result.text(), QMessageBox::Ok, parentWindow);
    m_presenter->runAlert(alert);
}
