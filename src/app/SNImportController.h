#pragma once

#include "app/SNImportCommand.h"
#include "import/SNImportEnvironment.h"
#include "import/SNImportFinder.h"

#include <QCoreApplication>
#include <QObject>
#include <QPointer>

#include <memory>

class QThread;
class QWidget;
class SNImportPanel;
class SNImportWindowController;
class SNModalPresenter;
class SNNoteWindowSet;
class SNStickyNoteManager;

// Everything about other notes programs in the running program: it looks for their notes in
// the background and shows them in an import panel (the "Import Notes" window's, or the welcome
// window's), imports what the user ticks, each note opening in its window, writes every note
// as Markdown, and carries out the same as commands from the command line.
class SNImportController final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNImportController)

public:
    SNImportController(SNStickyNoteManager &store, SNNoteWindowSet &noteWindows,
        std::shared_ptr<SNModalPresenter> presenter, QObject *parent = nullptr);
    ~SNImportController() override;

    // Where the programs' folders are looked for; tests hand in a home of their own.
    void setEnvironment(const SNImportEnvironment &environment) { m_environment = environment; }

    SNImportCommand::Result run(const SNImportCommand &command);

    // Opens the "Import Notes" window and looks for notes again.
    void showImportWindow();
    SNImportWindowController *importWindowController() const { return m_window.get(); }
    // Lists in the panel what the search finds, and imports from it; the panel shows itself
    // only when there is something to import.
    void offerIn(SNImportPanel *panel);

    // Asks for a folder and writes every note into it as Markdown.
    void exportMarkdown(QWidget *parentWindow);

Q_SIGNALS:
    // A search has shown its finding in its panel.
    void searchFinished();

private:
    void search(SNImportPanel *panel, const SNImportEnvironment &environment, bool hideIfNone);
    void showFound(SNImportPanel *panel, const QList<SNImportSource> &sources);
    void importTicked(SNImportPanel *panel);
    void chooseOtherHome();

    SNStickyNoteManager &m_store;
    SNNoteWindowSet &m_noteWindows;
    std::shared_ptr<SNModalPresenter> m_presenter;
    SNImportEnvironment m_environment;
    std::unique_ptr<SNImportWindowController> m_window;
    QList<QPointer<QThread>> m_searches; // still reading
};
