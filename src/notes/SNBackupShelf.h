#pragma once

#include <QDate>
#include <QList>
#include <QString>

#include <memory>

class SNStickyNote;

// One copy of the archive on the shelf.
struct SNBackup
{
    QString path;
    QDate date;
    qsizetype noteCount = 0; // -1 when the copy cannot be read
};

// The daily copies of the archive in one folder ("Backups/stickies-YYYY-MM-DD.db"): at most
// one a day; the newest 7 days and, before those, the newest copy of each of 4 more weeks are
// kept. It files and lists copies; when to make one is the note store's business, and
// bringing notes back is the caller's.
class SNBackupShelf final
{
public:
    static constexpr int keptDays = 7;
    static constexpr int keptWeeks = 4;

    explicit SNBackupShelf(const QString &folder);

    QString folder() const { return m_folder; }
    bool hasBackupOf(const QDate &date) const;
    // Writes the copy of the day (replacing one of the same day) and drops copies no longer
    // kept.
    bool addBackup(const QByteArray &archive, const QDate &date, QString *error = nullptr);
    // Newest first, with the number of notes in each.
    QList<SNBackup> backups() const;

    // The notes of a copy (or of any archive file); the error says why some or all could not
    // be read. The notes join the tag index: call didDelete() on those not kept.
    static QList<std::shared_ptr<SNStickyNote>> notesInArchive(
        const QString &path, QString *error = nullptr);

private:
    static qsizetype noteCountOfArchive(const QString &path); // -1 when unreadable
    QList<QDate> dates() const; // newest first
    QString pathForDate(const QDate &date) const;
    void dropOldCopies();

    const QString m_folder;
};
