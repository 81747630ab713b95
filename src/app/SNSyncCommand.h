#pragma once

#include "app/SNHistoryCommand.h"

#include <QString>

// One of the command line's requests about sharing the notes through a sync folder. Like the
// history commands it runs in the Vellumo that holds the notes, the running one over the session
// bus, else the start that asked, and answers with text.
struct SNSyncCommand final
{
    enum class Kind {
        SetFolder, // shares the notes through `folder`; an empty one keeps them here
        ShowStatus, // the folder, the computers that write to it, the last merge
    };

    using Result = SNHistoryCommand::Result;

    // The option names, as the command line and --help know them.
    static QString setFolderOption() { return QStringLiteral("sync-folder"); }
    static QString showStatusOption() { return QStringLiteral("sync-status"); }

    Kind kind = Kind::ShowStatus;
    QString folder; // for SetFolder: absolute, or empty

    friend bool operator==(const SNSyncCommand &, const SNSyncCommand &) = default;
};
