#pragma once

#include "import/SNImportedNote.h"
#include "import/SNKNotesConfig.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

// The notes of KNotes before Akonadi (KDE 3 and 4): notes.ics, an iCalendar file with one
// VJOURNAL per note, and beside it a KConfig file per note with its colours, place and window
// state.
class SNKNotesCalendar final
{
public:
    SNKNotesCalendar() = delete;

    static constexpr int maximumNotes = 100000;

    // The bytes of the settings file of the note with this UID, when there is one.
    using SettingsLookup = std::function<std::optional<QByteArray>(const QString &uid)>;

    // Every note of the calendar's bytes. `defaults` is KNotes' own configuration, whose colours
    // a note takes when neither the calendar nor its settings file set one; `fileTime` dates
    // notes the calendar gives no dates.
    static SNImportReadResult read(const QByteArray &bytes, const SettingsLookup &settings,
        const SNKNotesConfig &defaults, const QDateTime &fileTime);

    // "20230501T102030Z" (UTC), "20230501T102030" (local) or "20230501".
    static QDateTime dateFromString(const QString &text);
};
