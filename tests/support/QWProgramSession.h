#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <QVariant>

// The built program run by an integration test as a user who has met it before: its settings
// and notes live in a home of its own, and it is killed at the end if it still runs.
class QWProgramSession final
{
public:
    // The program serves one instance per session bus: two programs side by side need a bus
    // each, which the session then starts and stops itself.
    enum class Bus { Shared, Own };

    explicit QWProgramSession(Bus bus = Bus::Shared);
    ~QWProgramSession();
    QWProgramSession(const QWProgramSession &) = delete;
    QWProgramSession &operator=(const QWProgramSession &) = delete;

    // Whether a program serves requests: it owns the application's name on the session bus.
    static bool isServing();
    // The same on this session's bus.
    bool serves() const;
    // Stores a setting as the program reads it when it starts.
    void setSetting(const QString &key, const QVariant &value);

    QString homePath(const QString &relative) const { return m_home.filePath(relative); }
    // Where the program keeps its notes.
    QString notesFolder() const { return homePath(QStringLiteral("data/Vellumo")); }
    QProcess &program() { return m_program; }

    // Starts the program and waits until it serves requests; false if it does not.
    bool start(const QStringList &arguments = {});
    // Runs another start from the home folder to its end, which never shows a window of its own;
    // its exit code, or -1 when it crashed or hung.
    // What it printed goes to `output` when given.
    int runSecond(const QStringList &arguments, const QByteArray &input = {},
        QString *output = nullptr) const;

    // What the program runs in: its own home, and the session's bus.
    QProcessEnvironment environment() const;

private:
    QTemporaryDir m_home;
    const bool m_ownBus;
    QProcess m_bus;
    QString m_busAddress;
    QProcess m_program;
};
