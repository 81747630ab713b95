#include "app/SNSyncController.h"

#include "kit/QWTimer.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncSession.h"
#include "settings/SNUserDefaults.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSysInfo>

SNSyncController::SNSyncController(SNUserDefaults &defaults, SNStickyNoteManager &store,
    std::shared_ptr<SNModalPresenter> presenter, QObject *parent)
    : QObject(parent),
      m_defaults(defaults),
      m_store(store),
      m_presenter(presenter ? std::move(presenter) : SNModalPresenter::defaultPresenter())
{ }

SNSyncController::~SNSyncController()
{
    stopRetrying();
    m_state.update(nullptr, QString());
}

void SNSyncController::stopRetrying()
{
    if (m_retryTimer)
        m_retryTimer->invalidate();
    m_retryTimer.reset();
}

void SNSyncController::start()
{
    connect(&m_defaults, &GVUserDefaults::didChangeValueForKey, this,
        &SNSyncController::settingDidChange);
    folderDidChange();
}

void SNSyncController::setBeforeMerge(std::function<void()> beforeMerge)
{
    m_beforeMerge = std::move(beforeMerge);
    if (m_session)
        m_session->setBeforeMerge(m_beforeMerge);
}

void SNSyncController::settingDidChange(const QString &key)
{
    if (key == SNUserDefaults::syncFolderKey()) {
        folderDidChange();
    } else if (key == SNUserDefaults::deviceNameKey() && m_session) {
        if (!m_session->setName(m_defaults.deviceName()))
            qWarning("[DEBUG] Could not write this computer's new name into %s",
                qUtf8Printable(m_session->folder()));
    }
}

void SNSyncController::folderDidChange()
{
    // Written again as it was: the session goes on.
    if (m_session && m_session->folder() == m_defaults.syncFolder())
        return;
    stopRetrying();
    // The old session stops handing this computer's changes to the old folder first.
    m_state.update(nullptr, QString());
    m_session.reset();
    if (!m_defaults.syncFolder().isEmpty())
        tryToStart();
}

std::unique_ptr<SNSyncSession> SNSyncController::makeSession(const QString &folder)
{
    auto session = std::make_unique<SNSyncSession>(m_store, folder);
    session->setBeforeMerge(m_beforeMerge);
    session->setDeletionQuestion([this](qsizetype count) { return askAboutDeletion(count); });
    connect(session.get(), &SNSyncSession::notesMerged, this, &SNSyncController::notesMerged);
    return session;
}

void SNSyncController::tryToStart()
{
    const QString folder = m_defaults.syncFolder();
    const QString machine = QString::fromLatin1(QSysInfo::machineUniqueId());
    QString error;
    std::unique_ptr<SNSyncSession> session = makeSession(folder);
    SNSyncSession::Start started = session->start(m_defaults.deviceName(), machine, &error);
    if (started == SNSyncSession::Start::DeviceIdTaken) {
        // This home was copied from the computer that writes under the id: the copy moves on.
        const QString device = m_defaults.makeNewDeviceIdentifier();
        qInfo("[DEBUG] %s; this computer is %s from now on", qUtf8Printable(error),
            qUtf8Printable(device));
        m_store.setDevice(device);
        session = makeSession(folder);
        started = session->start(m_defaults.deviceName(), machine, &error);
    }
    if (started == SNSyncSession::Start::Started) {
        stopRetrying();
        m_session = std::move(session);
        m_state.update(m_session.get(), QString());
        return;
    }

    const QString problem = started == SNSyncSession::Start::FolderMissing
        ? tr("The folder %1 is not there (a disk that is not mounted?). The notes stay on this "
             "computer, and Vellumo looks for the folder again every %2 seconds.")
              .arg(folder)
              .arg(SNSyncSession::rescanSeconds)
        : tr("Could not share the notes through %1: %2. Vellumo tries again every %3 seconds.")
              .arg(folder, error)
              .arg(SNSyncSession::rescanSeconds);
    m_state.update(nullptr, problem);
    if (!m_retryTimer)
        m_retryTimer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            SNSyncSession::rescanSeconds, true, [this](QWTimer &) { tryToStart(); });
}

bool SNSyncController::askAboutDeletion(qsizetype count)
{
    QMessageBox question(QMessageBox::Warning, QCoreApplication::applicationName(),
        tr("Another computer deleted %1 notes.").arg(count), QMessageBox::NoButton);
    question.setInformativeText(
        tr("Delete them on this computer too? Notes you keep come back on the other computers "
           "as well; deleted notes stay in Recently Deleted for 30 days."));
    QPushButton *remove = question.addButton(tr("Delete Them"), QMessageBox::DestructiveRole);
    QPushButton *keep = question.addButton(tr("Keep Them"), QMessageBox::RejectRole);
    question.setDefaultButton(keep);
    question.setEscapeButton(keep);
    return m_presenter->runAlert(question) == remove;
}
