#pragma once

#include "import/SNImportLedger.h"
#include "import/SNImportReader.h"
#include "import/SNNoteImporter.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestFiles.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeManager.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <memory>

// Copies a home folder of the golden cases. Files that carry no dates of their own date their
// notes by the files' times, which a checkout sets to its own moment: the copy gets one fixed
// time.
inline bool copyImportHome(const QString &from, const QString &to)
{
    const QDateTime fixed(QDate(2021, 2, 3), QTime(4, 5, 6), Qt::UTC);
    QDirIterator it(
        from, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        // Git keeps no empty folders: each is made with the files in it.
        const QString target = to + it.next().mid(from.size());
        if (it.fileInfo().isDir())
            continue;
        QFile file(target);
        if (!QDir().mkpath(QFileInfo(target).path()) || !QFile::copy(it.filePath(), target)
            || !file.open(QIODevice::ReadWrite)
            || !file.setFileTime(fixed, QFileDevice::FileModificationTime))
            return false;
    }
    return true;
}

// A store with its themes, tags and import ledger, in data folders of its own, to import into.
struct SNImportTestStore
{
    QWTestEnvironment environment;
    QString folder = environment.dataHome() + QStringLiteral("/Vellumo/");
    SNStickyNoteManager store { folder, QStringLiteral("device") };
    SNThemeManager themes { folder + QStringLiteral("User Themes/") };
    SNTagManager tags;
    std::unique_ptr<SNImportLedger> ledger = std::make_unique<SNImportLedger>(folder);

    SNImportReport import(const SNImportReader &reader, const SNImportReadResult &result)
    {
        SNNoteImporter importer(
            store, themes, tags, *ledger, [this](const auto &note) { store.addNote(note); });
        return importer.importNotes(reader, QStringLiteral("/somewhere"), result);
    }
};
