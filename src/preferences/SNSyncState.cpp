#include "preferences/SNSyncState.h"

namespace {

// Without a translation loaded, tr()'s plural forms would show as "note(s)".
QString noteCount(qsizetype count)
{
    return count == 1 ? SNSyncState::tr("1 note") : SNSyncState::tr("%1 notes").arg(count);
}

} // namespace

SNSyncState::SNSyncState(QObject *parent) : QObject(parent) { }

SNSyncState::~SNSyncState() = default;

void SNSyncState::update(SNSyncSession *session, const QString &problem)
{
    if (session == m_session && problem == m_problem)
        return;
    if (session != m_session) {
        disconnect(m_sessionConnection);
        m_session = session;
        if (session)
            m_sessionConnection
                = connect(session, &SNSyncSession::statusChanged, this, &SNSyncState::changed);
    }
    m_problem = problem;
    Q_EMIT changed();
}

QString SNSyncState::mergeSummary(const SNSyncSession::Status &status)
{
    QString summary = tr("%1 added, %2 changed, %3 deleted.")
                          .arg(noteCount(status.added))
                          .arg(status.changed)
                          .arg(status.removed);
    if (status.conflicts > 0)
        summary += QLatin1Char(' ')
            + tr("%1 changed on two computers at once: both texts are kept, the other one in a "
                 "note whose title ends in \"(conflict)\".")
                  .arg(noteCount(status.conflicts));
    if (!status.waiting.isEmpty())
        summary += QLatin1Char(' ')
            + (status.waiting.size() == 1
                    ? tr("1 file has not fully arrived; it is read again once it changes.")
                    : tr("%1 files have not fully arrived; they are read again once they change.")
                          .arg(status.waiting.size()));
    return summary;
}
