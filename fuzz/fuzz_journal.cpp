// Feeds arbitrary bytes to loading as the journal beside the archive, the way a damaged, torn
// or hostile journal would reach it: framing, each record's archive, and the replay.
#include "notes/SNStickyNote.h"
#include "notes/SNStoreLoader.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

// Notes resolve their themes, which look up fonts: that needs the application object.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir home;
    const QString folder = home.path() + QStringLiteral("/Vellumo/");
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    SNStoreLoader::Files files { folder, folder + QStringLiteral("stickies.db"),
        folder + QStringLiteral("stickies.journal"), folder + QStringLiteral("Recently Deleted.db"),
        QString() };
    QFile journal(files.journal);
    if (!journal.open(QIODevice::WriteOnly))
        return 0;
    journal.write(reinterpret_cast<const char *>(data), qint64(size));
    journal.close();

    const SNStoreLoader::Result result = SNStoreLoader::load(files);
    for (const std::shared_ptr<SNStickyNote> &note : result.notes) {
        note->hasContent();
        note->version().hasSeenTextOf(note->version());
    }
    for (const SNJournalRecord &record : result.recentlyDeleted.records())
        record.note->hasContent();
    return 0;
}
