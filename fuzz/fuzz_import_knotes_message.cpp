// Feeds arbitrary bytes to the reader of one message of KNotes' Akonadi maildir, as a damaged
// or hostile file in the notes folder would reach it: one note or one problem, with dates.
#include "import/SNKNotesMessage.h"

#include <QGuiApplication>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Rich notes are read by Qt's HTML reader, which takes fonts from the application, as the
    // importer runs it.
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = { name, nullptr };
    static QGuiApplication application(argc, argv);
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QDateTime fileTime = QDateTime::fromSecsSinceEpoch(1'600'000'000, Qt::UTC);
    const SNImportReadResult result
        = SNKNotesMessage::read(bytes, QStringLiteral("1682929230123.R1.host:2,S"), fileTime);
    if (result.notes.size() + result.problems.size() != 1)
        std::abort();
    for (const SNImportedNote &note : result.notes) {
        if (note.sourceId != QStringLiteral("1682929230123.R1.host") || !note.dateModified
            || !note.dateCreated || *note.dateCreated > *note.dateModified)
            std::abort();
    }
    return 0;
}
