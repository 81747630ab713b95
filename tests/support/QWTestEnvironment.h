#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

// Gives a test its own home, configuration and data folders, so that nothing it does
// reaches the user's real files, and collects the log lines the code under test writes.
class QWTestEnvironment final
{
public:
    QWTestEnvironment();
    ~QWTestEnvironment();
    QWTestEnvironment(const QWTestEnvironment &) = delete;
    QWTestEnvironment &operator=(const QWTestEnvironment &) = delete;

    QString configHome() const;
    QString dataHome() const;

    // Log lines written since construction or the last clearMessages().
    QStringList messages() const;
    void clearMessages();

private:
    QTemporaryDir m_folder;
    QByteArray m_oldConfigHome;
    QByteArray m_oldDataHome;
};
