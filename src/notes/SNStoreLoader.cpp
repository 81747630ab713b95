#include "notes/SNStoreLoader.h"

#include "kit/QWClock.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNJournal.h"
#include "notes/SNNoteIdentity.h"
#include "notes/SNStickyNote.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

#include <algorithm>

SNStoreLoader::Result SNStoreLoader::load(const Files &files)
{
    SNStoreLoader loader(files);
    if (files.archive.isEmpty())
        return loader.m_result;
    loader.removeUnfinishedSaves();
    if (!QFileInfo::exists(files.archive) && !QFileInfo::exists(files.journal)) {
        QDir().mkpath(files.folder);
        if (QFile::copy(files.welcomeArchive, files.archive)) {
            // Files copied out of the resources are read-only.
            QFile::setPermissions(files.archive,
                QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
        }
    }
    loader.loadArchive();
    loader.loadRecentlyDeleted();
    loader.replayJournal();
    return loader.m_result;
}

void SNStoreLoader::removeUnfinishedSaves() const
{
    // A save writes a temporary file beside its file ("stickies.db.AbC123") and renames it into
    // place; one killed in between leaves the temporary file. Only one Vellumo runs, so at load
    // no save of this program is under way.
    QDir folder(m_files.folder);
    for (const QString &path : { m_files.archive, m_files.journal, m_files.recentlyDeleted }) {
        const QString file = QFileInfo(path).fileName();
        const QRegularExpression unfinished(
            QStringLiteral("^%1\\.[A-Za-z0-9]{6}$").arg(QRegularExpression::escape(file)));
        for (const QString &name :
            folder.entryList({ file + QStringLiteral(".??????") }, QDir::Files)) {
            if (unfinished.match(name).hasMatch())
                folder.remove(name);
        }
    }
}

QString SNStoreLoader::keepAside(const QString &path, bool copy)
{
    const QString stamped = path + QStringLiteral(".damaged-")
        + QWClock::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    // Never onto an earlier damaged copy from the same second.
    QString aside = stamped;
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = stamped + QStringLiteral("-%1").arg(number);
    if (!(copy ? QFile::copy(path, aside) : QFile::rename(path, aside)))
        return QString();
    m_result.keptAside.append(aside);
    return aside;
}

void SNStoreLoader::loadArchive()
{
    const QString path = m_files.archive;
    QFile file(path);
    if (!file.exists())
        return;
    QString error;
    QWKeyedUnarchiver::ParseResult result;
    if (file.open(QIODevice::ReadOnly)) {
        result = QWKeyedUnarchiver::parse(file.readAll());
        error = result.error;
        file.close();
    } else {
        error = file.errorString();
    }

    QList<std::shared_ptr<SNStickyNote>> notes
        = QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
            result.root);
    if (SNNoteIdentity::giveIdsToNotesWithout(notes) > 0)
        m_result.archiveIsBehind = true;
    if (!error.isEmpty()) {
        // The user's only copy: move it aside before anything can write over it.
        if (const QString aside = keepAside(path, false); !aside.isEmpty()) {
            m_result.archiveMovedAside = aside;
            qWarning("[DEBUG] Could not read %s (%s); moved it to %s and kept the %lld notes it "
                     "still held",
                qUtf8Printable(path), qUtf8Printable(error), qUtf8Printable(aside),
                qlonglong(notes.size()));
            m_result.archiveIsBehind = true;
        } else {
            m_result.archiveMustNotBeReplaced = true;
            qWarning("[DEBUG] Could not read %s (%s) nor move it aside; it will not be overwritten",
                qUtf8Printable(path), qUtf8Printable(error));
        }
    }
    m_result.notes = notes;
}

void SNStoreLoader::loadRecentlyDeleted()
{
    const QString path = m_files.recentlyDeleted;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QString error;
    SNRecentlyDeleted deleted = SNRecentlyDeleted::fromArchivedData(file.readAll(), &error);
    file.close();
    if (!error.isEmpty()) {
        const QString aside = keepAside(path, true);
        qWarning("[DEBUG] Could not read %s (%s); kept a copy at %s", qUtf8Printable(path),
            qUtf8Printable(error), qUtf8Printable(aside));
    }
    for (const SNJournalRecord &record : deleted.records()) {
        // Deleted notes are in no tag.
        record.note->didDelete();
    }
    m_result.recentlyDeleted = deleted;
}

void SNStoreLoader::replayJournal()
{
    const SNJournal::Contents contents = SNJournal::read(m_files.journal);
    if (!contents.isComplete()) {
        // What follows the damage cannot be trusted: the whole file is kept aside as it was,
        // and the journal goes on from its last whole record.
        const QString aside = keepAside(m_files.journal, true);
        qWarning("[DEBUG] Could not read all of %s (%s); kept a copy at %s and read the %lld "
                 "records before the damage",
            qUtf8Printable(m_files.journal), qUtf8Printable(contents.error), qUtf8Printable(aside),
            qlonglong(contents.records.size()));
        if (contents.validLength == 0)
            QFile::remove(m_files.journal);
        else
            SNJournal(m_files.journal).truncate(contents.validLength);
    }
    if (!contents.records.isEmpty())
        m_result.archiveIsBehind = true;

    // Places in the list by id; a deleted note leaves its place empty until the end, so that
    // no place moves while records are replayed.
    std::vector<std::shared_ptr<SNStickyNote>> places(
        m_result.notes.cbegin(), m_result.notes.cend());
    QHash<QUuid, size_t> placeOf;
    for (size_t place = 0; place < places.size(); ++place)
        placeOf.insert(places[place]->uuid(), place);
    const auto leave = [&](const QUuid &uuid) {
        if (const auto found = placeOf.constFind(uuid); found != placeOf.cend()) {
            places[*found]->didDelete();
            places[*found] = nullptr;
            placeOf.erase(found);
        }
    };
    qsizetype unreadable = 0;
    for (const QByteArray &bytes : contents.records) {
        const std::optional<SNJournalRecord> record = SNJournalRecord::fromArchivedData(bytes);
        if (!record) {
            ++unreadable;
            continue;
        }
        if (record->note)
            m_result.newestStamp = std::max(m_result.newestStamp, record->note->version().stamp);
        if (record->isDeletion) {
            leave(record->uuid);
            if (record->note) {
                record->note->didDelete();
                if (record->note->hasContent())
                    m_result.recentlyDeleted.add(*record);
            }
            continue;
        }
        if (const std::optional<SNJournalRecord> deleted
            = m_result.recentlyDeleted.take(record->uuid))
            deleted->note->didDelete();
        if (!record->note->hasContent()) {
            // A note whose text was all erased is not kept, as a whole save would not keep it.
            leave(record->uuid);
            record->note->didDelete();
        } else if (const auto found = placeOf.constFind(record->uuid); found != placeOf.cend()) {
            places[*found]->didDelete();
            places[*found] = record->note;
        } else {
            placeOf.insert(record->uuid, places.size());
            places.push_back(record->note);
        }
    }
    m_result.notes.clear();
    for (const std::shared_ptr<SNStickyNote> &note : places) {
        if (note)
            m_result.notes.append(note);
    }
    if (unreadable > 0)
        qWarning("[DEBUG] Skipped %lld journal records that were not notes", qlonglong(unreadable));
}
