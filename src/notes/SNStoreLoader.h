#pragma once

#include "notes/SNNoteVersion.h"
#include "notes/SNRecentlyDeleted.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class SNStickyNote;

// Reads a store's folder as it is on disk: the archive, Recently Deleted, and the journal
// replayed over them. The first start gets the welcome notes. A damaged archive is moved aside
// and other damaged files copied aside before anything could write over them, and a damaged
// journal is cut back to its last whole record; whatever could be read is used. It writes no
// notes: saving is the note store's business.
class SNStoreLoader final
{
public:
    struct Files
    {
        QString folder; // ends with "/"
        QString archive;
        QString journal;
        QString recentlyDeleted;
        QString welcomeArchive; // copied into place when neither archive nor journal exists
    };

    struct Result
    {
        QList<std::shared_ptr<SNStickyNote>> notes;
        SNRecentlyDeleted recentlyDeleted;
        QStringList keptAside; // where damaged files went
        QString archiveMovedAside; // the archive's own place aside, if it went
        bool archiveIsBehind = false; // ids were given or the journal holds more
        bool archiveMustNotBeReplaced = false; // unreadable and could not be moved aside
        SNNoteStamp newestStamp; // of all records read
    };

    static Result load(const Files &files);

private:
    explicit SNStoreLoader(const Files &files) : m_files(files) { }
    void removeUnfinishedSaves() const;
    QString keepAside(const QString &path, bool copy);
    void loadArchive();
    void loadRecentlyDeleted();
    void replayJournal();

    const Files m_files;
    Result m_result;
};
