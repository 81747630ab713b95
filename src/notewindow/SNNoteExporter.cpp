#include "notewindow/SNNoteExporter.h"

#include "kit/QWAttributedString.h"
#include "kit/QWDebouncer.h"
#include "kit/rtf/QWRtfWriter.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNWindowLevel.h"
#include "tags/SNHashtagScanner.h"
#include "themes/SNTheme.h"

#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace {

const QString rtfExtension = QStringLiteral("rtf");

// A file name may not contain the path separator; a title may.
QString proposedFileName(const QString &title)
{
    QString name = title;
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    return name.trimmed();
}

} // namespace

SNNoteExporter::SNNoteExporter(QWidget *window, const std::shared_ptr<SNStickyNote> &note,
    SNStickyNoteManager &store, const std::shared_ptr<SNModalPresenter> &presenter,
    std::function<QWAttributedString()> storedText, QObject *parent)
    : QObject(parent),
      m_window(window),
      m_note(note),
      m_store(store),
      m_presenter(presenter),
      m_storedText(std::move(storedText)),
      m_exportDelayTimer(std::make_unique<QWDebouncer>(exportDelay, [this] { saveNote(); }))
{ }

SNNoteExporter::~SNNoteExporter()
{
    m_exportDelayTimer->cancel();
}

void SNNoteExporter::setNoteWasRemovedHandler(std::function<void()> handler)
{
    m_noteWasRemoved = std::move(handler);
}

qint64 SNNoteExporter::pinState() const
{
    return m_note ? m_note->pinState() : 0;
}

bool SNNoteExporter::shouldCloseAfterExportQuestion()
{
    QMessageBox alert(m_window);
    alert.setIcon(QMessageBox::Warning);
    alert.setWindowTitle(QGuiApplication::applicationDisplayName());
    alert.setText(tr("Would you like to export this note?"));
    alert.setInformativeText(
        tr("If you do not export this note, its contents will be permanently lost."));
    QPushButton *exportButton = alert.addButton(tr("Export"), QMessageBox::AcceptRole);
    QPushButton *cancelButton = alert.addButton(tr("Cancel"), QMessageBox::RejectRole);
    alert.addButton(tr("Delete Note"), QMessageBox::DestructiveRole);
    alert.setDefaultButton(exportButton);
    alert.setEscapeButton(cancelButton);
    SNWindowLevel::applyDialogLevel(&alert, pinState());

    const QAbstractButton *answer = m_presenter->runAlert(alert);
    if (answer == cancelButton)
        return false;
    if (answer == exportButton) {
        // Once the question has gone, so that the save panel does not open over it.
        m_exportDelayTimer->restart();
        return false;
    }
    return true;
}

void SNNoteExporter::saveNote(QObject *)
{
    saveNoteShouldRemove(false);
}

void SNNoteExporter::saveNote()
{
    saveNoteShouldRemove(true);
}

void SNNoteExporter::saveNoteShouldRemove(bool shouldRemove)
{
    if (!m_window)
        return;
    QFileDialog panel(m_window, tr("Export Note"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::Accept, tr("Choose"));
    panel.setNameFilter(tr("Rich Text (*.rtf)"));
    panel.setDefaultSuffix(rtfExtension);
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.selectFile(proposedFileName(m_window->windowTitle()));
    SNWindowLevel::applyDialogLevel(&panel, pinState());

    const QString path = m_presenter->runSavePanel(panel);
    if (path.isEmpty())
        return;
    if (!writeRtfToPath(path)) {
        showExportFailure();
        return;
    }
    if (!shouldRemove)
        return;
    m_store.removeNote(m_note);
    if (m_noteWasRemoved)
        m_noteWasRemoved();
}

bool SNNoteExporter::writeRtfToPath(const QString &path) const
{
    QWRtfWriter writer;
    if (const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr)
        writer.setDefaultFontFamily(theme->defaultFont().family());
    const QByteArray rtf = writer.write(SNHashtagScanner::taggedString(m_storedText()));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    const bool written = file.write(rtf) == rtf.size();
    file.close();
    return written && file.error() == QFileDevice::NoError;
}

void SNNoteExporter::showExportFailure()
{
    QMessageBox alert(m_window);
    alert.setIcon(QMessageBox::Warning);
    alert.setWindowTitle(QGuiApplication::applicationDisplayName());
    alert.setText(tr("Could not export note"));
    alert.setInformativeText(
        tr("An error occured when trying to export this note.\nPlease try again"));
    alert.setStandardButtons(QMessageBox::Ok);
    SNWindowLevel::applyDialogLevel(&alert, pinState());
    m_presenter->runAlert(alert);
}
