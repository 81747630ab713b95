#pragma once

#include <QString>

// One of the command line's requests about deleted notes and backups. It runs in the Vellumo
// that holds the notes: the running one, over the session bus, else the start that asked.
struct SNHistoryCommand final
{
    enum class Kind {
        ListDeleted, // one line per deleted note: id, date deleted (ISO 8601), title
        RestoreDeleted, // brings the deleted note `id` back
        BackUpNow, // makes today's backup
    };

    // What running a command gives back: text for standard output, or an error.
    struct Result
    {
        QString output;
        QString error; // empty on success

        bool succeeded() const { return error.isEmpty(); }
        friend bool operator==(const Result &, const Result &) = default;
    };

    // The option names, as the command line and --help know them.
    static QString listDeletedOption() { return QStringLiteral("list-deleted"); }
    static QString restoreDeletedOption() { return QStringLiteral("restore-deleted"); }
    static QString backUpNowOption() { return QStringLiteral("backup-now"); }

    Kind kind = Kind::ListDeleted;
    QString id; // the note's id, for RestoreDeleted; as typed

    friend bool operator==(const SNHistoryCommand &, const SNHistoryCommand &) = default;
};
