#pragma once

#include "import/SNImportedNote.h"

#include <QHash>
#include <QString>
#include <QUuid>

// What was imported already, by program and the note's id there, so that importing the same
// program twice adds nothing twice, even after the imported notes were changed or deleted.
// Kept as "Imported Notes.txt" beside the notes: a line per note, tab-separated program,
// percent-encoded id and the Vellumo note's id.
class SNImportLedger final
{
    Q_DISABLE_COPY_MOVE(SNImportLedger)

public:
    static const QString fileName; // "Imported Notes.txt"

    // Reads the ledger in the folder (ending with "/"); a missing or damaged file reads as what
    // it still holds.
    explicit SNImportLedger(const QString &folder);

    bool contains(const QString &programId, const QString &sourceId) const;
    // How many of the notes read from the program came in before.
    qsizetype countImported(const QString &programId, const QList<SNImportedNote> &notes) const;
    void add(const QString &programId, const QString &sourceId, const QUuid &noteId);
    // Writes the file beside the old one and renames it over; false when that failed, and the
    // error in words.
    bool save(QString *error = nullptr) const;

private:
    static QString key(const QString &programId, const QString &sourceId);

    QString m_path;
    QHash<QString, QUuid> m_noteIds;
    QList<QString> m_order; // the keys in the order they came, so the file only grows at its end
};
