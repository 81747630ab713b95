#include "app/SNSyncCommandRunner.h"

#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "notes/SNSyncSession.h"
#include "preferences/SNSyncState.h"
#include "settings/SNUserDefaults.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString isoDate(const QDateTime &date)
{
    const QDateTime local = date.toLocalTime();
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate);
}

} // namespace

SNSyncCommandRunner::SNSyncCommandRunner(
    SNUserDefaults &defaults, SNStickyNoteManager &store, const SNSyncState *state)
    : m_defaults(defaults), m_store(store), m_state(state)
{ }

SNSyncCommand::Result SNSyncCommandRunner::run(const SNSyncCommand &command)
{
    switch (command.kind) {
    case SNSyncCommand::Kind::SetFolder:
        return setFolder(command.folder);
    case SNSyncCommand::Kind::ShowStatus:
        return showStatus();
    }
    return {};
}

SNSyncCommand::Result SNSyncCommandRunner::setFolder(const QString &folder)
{
    // A path relative to where the running program happens to run would surprise.
    if (!folder.isEmpty() && (QDir::isRelativePath(folder) || !QFileInfo(folder).isDir())) {
        return { QString(),
            tr("%1 is not a folder. Make the folder first (the sync tool's folder, or one inside "
               "it), or give \"\" to stop syncing.")
                .arg(folder) };
    }
    // A running program starts or stops sharing as it hears of the setting.
    m_defaults.setSyncFolder(folder);
    if (folder.isEmpty())
        return { tr("Sync is off: the notes stay on this computer.") + QLatin1Char('\n'),
            QString() };
    if (m_state && !m_state->problem().isEmpty())
        return { QString(), m_state->problem() };
    return { (m_state ? tr("The notes are shared through %1.")
                      : tr("The notes are shared through %1 from the next start of Vellumo."))
                 .arg(folder)
            + QLatin1Char('\n'),
        QString() };
}

QString SNSyncCommandRunner::sharingText(const QString &folder) const
{
    if (!m_state)
        return tr("while Vellumo runs (it does not run now)");
    if (m_state->session())
        return QFileInfo(folder).isDir() ? tr("yes") : tr("no: the folder is not there for now");
    return tr("no: %1").arg(m_state->problem());
}

SNSyncCommand::Result SNSyncCommandRunner::showStatus() const
{
    const QString folder = m_defaults.syncFolder();
    const QString own = m_store.device();
    QString text = tr("This computer: %1 (%2)").arg(m_defaults.deviceName(), own) + u'\n';
    if (folder.isEmpty())
        return { text + tr("Sync folder: none; the notes stay on this computer.") + u'\n',
            QString() };
    text += tr("Sync folder: %1").arg(folder) + u'\n';
    text += tr("Sharing: %1").arg(sharingText(folder)) + u'\n';

    text += tr("Computers:") + u'\n';
    const QList<SNSyncFolder::Device> devices = SNSyncFolder(folder, own).devices();
    if (devices.isEmpty())
        text += QStringLiteral("  ") + tr("none has written to the folder yet") + u'\n';
    for (const SNSyncFolder::Device &device : devices) {
        text += QStringLiteral("  ") + device.name + u'\t' + device.id + u'\t'
            + (device.lastWrite.isNull() ? tr("never wrote") : isoDate(device.lastWrite));
        if (device.id == own)
            text += u'\t' + tr("(this computer)");
        text += u'\n';
    }

    const SNSyncSession *session = m_state ? m_state->session() : nullptr;
    const SNSyncSession::Status status = session
        ? session->lastMerge()
        : SNSyncSession::lastMergeOfStore(m_store.baseDatabasePath());
    text += (status.date.isNull()
                    ? tr("Last merge: none yet")
                    : tr("Last merge: %1: %2")
                          .arg(isoDate(status.date), SNSyncState::mergeSummary(status)))
        + u'\n';
    return { text, QString() };
}
