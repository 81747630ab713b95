#pragma once

#include "app/SNImportCommand.h"
#include "import/SNImportEnvironment.h"
#include "import/SNNoteImporter.h"

#include <QCoreApplication>

class SNStickyNoteManager;
class SNTagManager;
class SNThemeManager;

// Carries out import and Markdown commands on a note store. The running program hands in how a
// new note is put in place (its window opens); without that, notes go into the store.
class SNImportCommandRunner final
{
    Q_DECLARE_TR_FUNCTIONS(SNImportCommandRunner)

public:
    SNImportCommandRunner(SNStickyNoteManager &store, SNThemeManager &themes, SNTagManager &tags,
        SNNoteImporter::AddNote addNote = nullptr);

    void setEnvironment(const SNImportEnvironment &environment) { m_environment = environment; }

    SNImportCommand::Result run(const SNImportCommand &command);

private:
    SNImportCommand::Result listPrograms() const;
    SNImportCommand::Result import(const QString &program, const QString &path);
    SNImportCommand::Result exportMarkdown(const QString &folder) const;

    SNStickyNoteManager &m_store;
    SNThemeManager &m_themes;
    SNTagManager &m_tags;
    SNNoteImporter::AddNote m_addNote;
    SNImportEnvironment m_environment;
};
