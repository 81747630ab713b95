#include "notes/SNStoreLock.h"

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
    qint64 pid = 0;
    QString host;
    QString program;
    if (!m_file.getLockInfo(&pid, &host, &program))
        return tr("Another Vellumo is using these notes. Quit it before you start this one.");
    return tr("Another Vellumo (process %1 on %2) is using these notes, from a session this one "
              "cannot reach. Quit it before you start this one: two at once would write over "
              "each other's notes. If no Vellumo runs there, remove \"%3\".")
        .arg(pid)
        .arg(host, m_file.fileName());
}
