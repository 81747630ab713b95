#include "preferences/BackupsPreferencesViewController.h"

#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "ui_BackupsPreferencesViewController.h"

#include <QDesktopServices>
#include <QDir>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace {

constexpr int pathRole = Qt::UserRole;

// Without a translation loaded, tr()'s plural forms would show as "note(s)".
QString noteCount(qsizetype count)
{
    return count == 1 ? BackupsPreferencesViewController::tr("1 note")
                      : BackupsPreferencesViewController::tr("%1 notes").arg(count);
}

} // namespace

BackupsPreferencesViewController::BackupsPreferencesViewController(
    SNStickyNoteManager &store, NotesOpener opener, QObject *parent)
    : QWModuleViewController(parent),
      m_store(store),
      m_opener(std::move(opener)),
      m_presenter(SNModalPresenter::defaultPresenter())
{ }

BackupsPreferencesViewController::~BackupsPreferencesViewController() = default;

QString BackupsPreferencesViewController::moduleTitle() const
{
    return tr("Backups");
}

void BackupsPreferencesViewController::setModalPresenter(
    const std::shared_ptr<SNModalPresenter> &presenter)
{
    m_presenter = presenter ? presenter : SNModalPresenter::defaultPresenter();
}

QString BackupsPreferencesViewController::backupsFolder() const
{
    return QDir::cleanPath(m_store.baseDatabasePath() + SNStickyNoteManager::backupsFolderName);
}

std::unique_ptr<QWidget> BackupsPreferencesViewController::loadView()
{
    auto view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::BackupsPreferencesViewController>();
    m_ui->setupUi(view.get());
    return view;
}

void BackupsPreferencesViewController::qw_viewDidLoad()
{
    QHeaderView *header = m_ui->backupList->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    header->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_ui->folderLabel->setText(QDir::toNativeSeparators(backupsFolder()));
    m_ui->folderLabel->setToolTip(m_ui->folderLabel->text());

    connect(m_ui->backUpNowButton, &QPushButton::clicked, this,
        &BackupsPreferencesViewController::backUpNow);
    connect(m_ui->restoreButton, &QPushButton::clicked, this,
        &BackupsPreferencesViewController::restoreSelectedBackup);
    connect(m_ui->openFolderButton, &QPushButton::clicked, this,
        &BackupsPreferencesViewController::openBackupsFolder);
    connect(m_ui->backupList, &QTreeWidget::itemSelectionChanged, this,
        &BackupsPreferencesViewController::updateButtons);
    reloadBackups();
}

void BackupsPreferencesViewController::qw_viewWillAppear()
{
    QWModuleViewController::qw_viewWillAppear();
    // A daily copy may have come since the page was last shown.
    reloadBackups();
}

void BackupsPreferencesViewController::reloadBackups()
{
    if (!m_ui)
        return;
    QTreeWidget *list = m_ui->backupList;
    const QString selected
        = list->currentItem() ? list->currentItem()->data(0, pathRole).toString() : QString();
    list->clear();
    const QLocale locale;
    for (const SNBackup &backup : m_store.backups()) {
        auto *item = new QTreeWidgetItem(list);
        item->setText(0, locale.toString(backup.date, QLocale::LongFormat));
        item->setData(0, pathRole, backup.path);
        item->setText(1, backup.noteCount < 0 ? tr("unreadable") : noteCount(backup.noteCount));
        if (backup.noteCount < 0)
            item->setFlags(item->flags() & ~Qt::ItemIsEnabled);
        if (backup.path == selected)
            list->setCurrentItem(item);
    }
    if (!list->currentItem() && list->topLevelItemCount() > 0)
        list->setCurrentItem(list->topLevelItem(0));
    if (list->topLevelItemCount() == 0) {
        auto *item = new QTreeWidgetItem(list, { tr("No backups yet") });
        item->setFlags(Qt::NoItemFlags);
    }
    updateButtons();
}

void BackupsPreferencesViewController::selectBackupAtRow(int row)
{
    if (m_ui)
        m_ui->backupList->setCurrentItem(m_ui->backupList->topLevelItem(row));
}

void BackupsPreferencesViewController::updateButtons()
{
    const QTreeWidgetItem *current = m_ui->backupList->currentItem();
    m_ui->restoreButton->setEnabled(current && current->isSelected()
        && (current->flags() & Qt::ItemIsEnabled)
        && !current->data(0, pathRole).toString().isEmpty());
}

void BackupsPreferencesViewController::showStatus(const QString &text)
{
    if (m_ui)
        m_ui->statusLabel->setText(text);
}

QString BackupsPreferencesViewController::statusText() const
{
    return m_ui ? m_ui->statusLabel->text() : QString();
}

void BackupsPreferencesViewController::backUpNow()
{
    QString error;
    if (m_store.backUpNow(&error)) {
        const QList<SNBackup> backups = m_store.backups();
        const qsizetype count = backups.isEmpty() ? 0 : backups.constFirst().noteCount;
        showStatus(tr("Backed up %1.").arg(noteCount(count)));
    } else {
        showStatus(tr("Could not back up the notes: %1").arg(error));
    }
    reloadBackups();
    selectBackupAtRow(0);
}

bool BackupsPreferencesViewController::restoreSelectedBackup()
{
    const QTreeWidgetItem *current = m_ui ? m_ui->backupList->currentItem() : nullptr;
    const QString path = current ? current->data(0, pathRole).toString() : QString();
    if (path.isEmpty())
        return false;
    QMessageBox question(QMessageBox::Question, moduleTitle(),
        tr("Restore the backup of %1?").arg(current->text(0)), QMessageBox::NoButton,
        parentWindow());
    question.setInformativeText(
        tr("The backup's notes come back beside today's notes, and nothing is deleted."));
    QPushButton *restore = question.addButton(tr("Restore"), QMessageBox::AcceptRole);
    question.addButton(QMessageBox::Cancel);
    question.setDefaultButton(restore);
    if (m_presenter->runAlert(question) != restore)
        return false;

    QString error;
    const QList<std::shared_ptr<SNStickyNote>> notes = m_store.restoreBackup(path, &error);
    if (m_opener && !notes.isEmpty())
        m_opener(notes);
    QString status = notes.isEmpty()
        ? tr("0 notes came back: every note of this backup is already here.")
        : tr("%1 came back.").arg(noteCount(notes.size()));
    if (!error.isEmpty())
        status += QLatin1Char(' ') + tr("Part of the backup could not be read: %1").arg(error);
    showStatus(status);
    return true;
}

void BackupsPreferencesViewController::openBackupsFolder()
{
    // The folder comes with the first backup; an empty one is still worth showing.
    QDir().mkpath(backupsFolder());
    QDesktopServices::openUrl(QUrl::fromLocalFile(backupsFolder()));
}
