#pragma once

#include "notes/SNSyncSession.h"

#include <QObject>
#include <QPointer>
#include <QString>

// What the program's sharing of notes through a sync folder is doing, for those who show it:
// the session while one runs, or why none runs though a folder is chosen. Whoever runs the
// sharing keeps it up to date; the Sync page and the command line read it.
class SNSyncState final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNSyncState)

public:
    explicit SNSyncState(QObject *parent = nullptr);
    ~SNSyncState() override;

    // The running session; null while none runs.
    SNSyncSession *session() const { return m_session; }
    // Empty while sharing, or while no folder is chosen.
    QString problem() const { return m_problem; }

    // A session's own news (a merge) is passed on as a change too.
    void update(SNSyncSession *session, const QString &problem);

    // What a merge did, in a sentence or three: "3 notes added, 1 changed, 0 deleted."
    static QString mergeSummary(const SNSyncSession::Status &status);

Q_SIGNALS:
    void changed();

private:
    QPointer<SNSyncSession> m_session;
    QMetaObject::Connection m_sessionConnection;
    QString m_problem;
};
