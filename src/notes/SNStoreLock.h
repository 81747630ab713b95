#pragma once

#include <QCoreApplication>
#include <QLockFile>
#include <QString>

// Keeps a second Vellumo off one folder of notes: two processes appending to one journal, and
// each compacting it, would drop what the other wrote. Starts on one session bus find each
// other by name before they get here; this catches the rest (no session bus, two logins of one
// user, a home shared over the network). A lock left by a process that died is taken over.
//
// It does not reach the holder; it only says who that is.
class SNStoreLock final
{
    Q_DECLARE_TR_FUNCTIONS(SNStoreLock)
    Q_DISABLE_COPY_MOVE(SNStoreLock)

public:
    static const QString lockFileName; // "stickies.lock"

    explicit SNStoreLock(const QString &baseDatabasePath);
    ~SNStoreLock() = default;

    // False only when another running process holds the folder. A folder where no lock can
    // be made is no reason to keep the user from the notes: the store reports what it cannot
    // write itself.
    bool acquire();
    // Why acquire() failed, for the user.
    QString refusalText() const;

private:
    const bool m_hasFolder;
    QLockFile m_file;
};
