#include "preferences/SyncPreferencesViewController.h"

#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "preferences/SNSyncState.h"
#include "settings/SNUserDefaults.h"
#include "ui_SyncPreferencesViewController.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QPushButton>
#include <QSysInfo>

SyncPreferencesViewController::SyncPreferencesViewController(
    SNUserDefaults &defaults, SNStickyNoteManager &store, SNSyncState *state, QObject *parent)
    : QWModuleViewController(parent),
      m_defaults(defaults),
      m_store(store),
      m_state(state),
      m_presenter(SNModalPresenter::defaultPresenter())
{ }

SyncPreferencesViewController::~SyncPreferencesViewController() = default;

QString SyncPreferencesViewController::moduleTitle() const
{
    return tr("Sync");
}

void SyncPreferencesViewController::setModalPresenter(
    const std::shared_ptr<SNModalPresenter> &presenter)
{
    m_presenter = presenter ? presenter : SNModalPresenter::defaultPresenter();
}

std::unique_ptr<QWidget> SyncPreferencesViewController::loadView()
{
    auto view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::SyncPreferencesViewController>();
    m_ui->setupUi(view.get());
    return view;
}

void SyncPreferencesViewController::qw_viewDidLoad()
{
    QHeaderView *header = m_ui->deviceList->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    header->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_ui->nameField->setPlaceholderText(QSysInfo::machineHostName());

    connect(m_ui->chooseButton, &QPushButton::clicked, this,
        &SyncPreferencesViewController::chooseFolder);
    connect(
        m_ui->stopButton, &QPushButton::clicked, this, &SyncPreferencesViewController::stopSyncing);
    connect(m_ui->nameField, &QLineEdit::editingFinished, this,
        &SyncPreferencesViewController::nameDidChange);
    connect(&m_defaults, &GVUserDefaults::didChangeValueForKey, this, [this](const QString &key) {
        if (key == SNUserDefaults::syncFolderKey() || key == SNUserDefaults::deviceNameKey())
            reload();
    });
    if (m_state)
        connect(m_state, &SNSyncState::changed, this, &SyncPreferencesViewController::reload);
    reload();
}

void SyncPreferencesViewController::qw_viewWillAppear()
{
    QWModuleViewController::qw_viewWillAppear();
    // Other computers may have written since the page was last shown.
    reload();
}

bool SyncPreferencesViewController::chooseFolder()
{
    const QString current = m_defaults.syncFolder();
    QFileDialog panel(parentWindow(), tr("Choose the Sync Folder"),
        current.isEmpty() ? QDir::homePath() : current);
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    const QString chosen = m_presenter->runSavePanel(panel);
    if (chosen.isEmpty())
        return false;
    m_defaults.setSyncFolder(QDir::cleanPath(QFileInfo(chosen).absoluteFilePath()));
    return true;
}

void SyncPreferencesViewController::stopSyncing()
{
    m_defaults.setSyncFolder(QString());
}

void SyncPreferencesViewController::nameDidChange()
{
    QString name = m_ui->nameField->text().trimmed();
    // The host name is what an empty name means; kept empty, it follows a renamed host.
    if (name == QSysInfo::machineHostName())
        name.clear();
    if (name.isEmpty() ? m_defaults.deviceName() != QSysInfo::machineHostName()
                       : name != m_defaults.deviceName())
        m_defaults.setDeviceName(name);
}

void SyncPreferencesViewController::reload()
{
    if (!m_ui)
        return;
    const QString folder = m_defaults.syncFolder();
    m_ui->folderField->setText(QDir::toNativeSeparators(folder));
    m_ui->folderField->setToolTip(m_ui->folderField->text());
    m_ui->stopButton->setEnabled(!folder.isEmpty());
    m_ui->statusLabel->setText(describeSharing(folder));
    // Not while the user types a new one.
    if (!m_ui->nameField->hasFocus())
        m_ui->nameField->setText(m_defaults.deviceName());
    reloadDevices(folder);

    if (folder.isEmpty()) {
        m_ui->lastMergeLabel->clear();
        return;
    }
    SNSyncSession *session = m_state ? m_state->session() : nullptr;
    const SNSyncSession::Status status = session
        ? session->lastMerge()
        : SNSyncSession::lastMergeOfStore(m_store.baseDatabasePath());
    m_ui->lastMergeLabel->setText(status.date.isNull()
            ? tr("Nothing has come from other computers yet.")
            : tr("Last merge, %1: %2")
                  .arg(QLocale().toString(status.date.toLocalTime(), QLocale::ShortFormat),
                      SNSyncState::mergeSummary(status)));
}

QString SyncPreferencesViewController::describeSharing(const QString &folder) const
{
    if (folder.isEmpty())
        return tr("Sync is off: the notes stay on this computer.");
    if (m_state && !m_state->problem().isEmpty())
        return m_state->problem();
    if (!QFileInfo(folder).isDir())
        return tr("The folder is not there at the moment (a disk that is not mounted?). The notes "
                  "stay on this computer until it is back, and nothing is deleted meanwhile.");
    if (m_state && m_state->session())
        return tr("The notes are shared through this folder. Changes from other computers "
                  "appear as the sync tool brings them.");
    return tr("Vellumo shares the notes through this folder while it runs.");
}

void SyncPreferencesViewController::reloadDevices(const QString &folder)
{
    QTreeWidget *list = m_ui->deviceList;
    list->clear();
    const QString own = m_store.device();
    const QList<SNSyncFolder::Device> devices
        = folder.isEmpty() ? QList<SNSyncFolder::Device>() : SNSyncFolder(folder, own).devices();
    const QLocale locale;
    for (const SNSyncFolder::Device &device : devices) {
        auto *item = new QTreeWidgetItem(list);
        item->setText(
            0, device.id == own ? tr("%1 (this computer)").arg(device.name) : device.name);
        item->setToolTip(0, device.id);
        item->setText(1,
            device.lastWrite.isNull()
                ? tr("never")
                : locale.toString(device.lastWrite.toLocalTime(), QLocale::ShortFormat));
    }
    if (devices.isEmpty()) {
        auto *item = new QTreeWidgetItem(list,
            { folder.isEmpty() ? tr("Choose a folder to see the computers that share it")
                               : tr("No computer has written to this folder yet") });
        item->setFlags(Qt::NoItemFlags);
    }
}

QString SyncPreferencesViewController::statusText() const
{
    return m_ui ? m_ui->statusLabel->text() : QString();
}

QString SyncPreferencesViewController::lastMergeText() const
{
    return m_ui ? m_ui->lastMergeLabel->text() : QString();
}
