// Feeds arbitrary bytes to the reader of KNotes' old notes.ics, as a damaged or hostile
// calendar would reach it; each note's settings file is the same bytes, so that the settings
// reader sees them too.
#include "import/SNKNotesCalendar.h"

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
    const SNImportReadResult result = SNKNotesCalendar::read(
        bytes, [&bytes](const QString &) { return std::optional<QByteArray>(bytes); },
        SNKNotesConfig(bytes), fileTime);
    for (const SNImportedNote &note : result.notes) {
        if (!note.backgroundColor || note.backgroundColor->alpha() != 255 || !note.dateModified)
            std::abort();
    }
    return 0;
}
