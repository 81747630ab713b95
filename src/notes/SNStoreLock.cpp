#include "notes/SNStoreLock.h"

#include "settings/SNApplicationInfo.h"

#include <QDir>

const QString SNStoreLock::lockFileName = QStringLiteral("stickies.lock");

SNStoreLock::SNStoreLock(const QString &baseDatabasePath)
    : m_hasFolder(!baseDatabasePath.isEmpty()),
      m_file(QDir(baseDatabasePath).filePath(lockFileName))
{
    // A running Vellumo holds the lock for days: only a dead holder makes it stale, never age.
    m_file.setStaleLockTime(0);
}

bool SNStoreLock::acquire()
{
    if (!m_hasFolder)
        return true;
    QDir().mkpath(QFileInfo(m_file.fileName()).absolutePath());
    return m_file.tryLock() || m_file.error() != QLockFile::LockFailedError;
}

QString SNStoreLock::refusalText() const
{
    const QString name = SNApplicationInfo::applicationName();
    qint64 pid = 0;
    QString host;
    QString program;
    if (!m_file.getLockInfo(&pid, &host, &program))
        return tr("Another %1 is using these notes. Quit it before you start this one.").arg(name);
    return tr("Another %1 (process %2 on %3) is using these notes, from a session this one "
              "cannot reach. Quit it before you start this one: two at once would write over "
              "each other's notes. If no %1 runs there, remove \"%4\".")
        .arg(name, QString::number(pid), host, m_file.fileName());
}
