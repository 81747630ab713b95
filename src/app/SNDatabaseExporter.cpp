#include "app/SNDatabaseExporter.h"

#include "app/QWWorkspace.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QStandardPaths>

QString SNDatabaseExporter::exportFailedMessage()
{
    return tr("Could not export the database");
}

QString SNDatabaseExporter::exportFailedInformativeText()
{
    return tr("An error occured when trying to export the database.\nPlease try again.");
}

SNDatabaseExporter::SNDatabaseExporter(
    SNStickyNoteManager &store, std::shared_ptr<SNModalPresenter> presenter, QObject *parent)
    : QObject(parent), m_store(store), m_presenter(std::move(presenter))
{ }

SNDatabaseExporter::~SNDatabaseExporter() = default;

void SNDatabaseExporter::exportDatabase(QObject *)
{
    QFileDialog panel(nullptr, tr("Export All Notes"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::Accept, tr("Choose"));
    panel.setNameFilter(tr("Notes archive (*.db)"));
    panel.setDefaultSuffix(QStringLiteral("db"));
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.selectFile(SNStickyNoteManager::databaseFileName);

    const QString path = m_presenter->runSavePanel(panel);
    if (path.isEmpty())
        return;
    if (m_store.exportDatabaseToPath(path)) {
        QWWorkspace::selectFileInFileViewerRootedAtPath(path, QString());
        return;
    }
    QMessageBox alert(QMessageBox::Warning, QCoreApplication::applicationName(),
        exportFailedMessage(), QMessageBox::Ok);
    alert.setInformativeText(exportFailedInformativeText());
    m_presenter->runAlert(alert);
}
