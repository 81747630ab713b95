#include "app/SNImportPanel.h"

#include "import/SNNoteImporter.h"
#include "ui_SNImportPanel.h"

SNImportPanel::SNImportPanel(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::SNImportPanel>())
{
    m_ui->setupUi(this);
    m_ui->reportView->hide();
    m_ui->programList->hide();
    m_ui->importButton->setEnabled(false);
    connect(m_ui->importButton, &QPushButton::clicked, this, &SNImportPanel::importRequested);
    connect(m_ui->programList, &QListWidget::itemChanged, this, &SNImportPanel::updateImportButton);
}

SNImportPanel::~SNImportPanel() = default;

void SNImportPanel::showSearching()
{
    m_ui->statusLabel->setText(tr("Looking for the notes of other notes programs…"));
    m_ui->importButton->setEnabled(false);
}

void SNImportPanel::showSources(
    const QList<SNImportSource> &sources, const ImportedBefore &importedBefore)
{
    m_sources = sources;
    const QSignalBlocker blocker(m_ui->programList);
    m_ui->programList->clear();
    for (const SNImportSource &source : sources) {
        const qsizetype count = source.result.notes.size();
        const qsizetype before = importedBefore ? importedBefore(source) : 0;
        QString text = tr("%1 — %2").arg(source.programName, SNNoteImporter::noteCount(count));
        if (before > 0)
            text += tr(", %1 imported before").arg(before);
        if (!source.result.problems.isEmpty())
            text += tr(", %1 unreadable").arg(source.result.problems.size());
        auto *item = new QListWidgetItem(text, m_ui->programList);
        item->setToolTip(source.path);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        item->setCheckState(count > before ? Qt::Checked : Qt::Unchecked);
    }
    m_ui->programList->setVisible(!sources.isEmpty());
    m_ui->statusLabel->setText(sources.isEmpty()
            ? tr("No notes of other notes programs were found.")
            : tr("Vellumo found the notes of these programs. Tick the ones to bring in; their "
                 "files are only read, never changed."));
    updateImportButton();
}

QList<SNImportSource> SNImportPanel::tickedSources() const
{
    QList<SNImportSource> ticked;
    for (int row = 0; row < m_ui->programList->count() && row < m_sources.size(); ++row) {
        if (m_ui->programList->item(row)->checkState() == Qt::Checked)
            ticked.append(m_sources[row]);
    }
    return ticked;
}

void SNImportPanel::showReport(const QString &report)
{
    m_ui->reportView->setPlainText(report);
    m_ui->reportView->show();
}

void SNImportPanel::updateImportButton()
{
    m_ui->importButton->setEnabled(!tickedSources().isEmpty());
}
