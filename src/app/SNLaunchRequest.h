#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What one start of the program, or one call from another start, asks the running program to
// do: open files and URLs, then run actions. An empty request only brings the notes forward.
struct SNLaunchRequest final
{
    // Action names, as the command line's options, the desktop entry and D-Bus know them.
    static QString newNoteAction() { return QStringLiteral("new-note"); }
    static QString showAllNotesAction() { return QStringLiteral("show-all-notes"); }
    static QString toggleTagsAction() { return QStringLiteral("toggle-tags"); }
    static QString noteFromSelectionAction() { return QStringLiteral("note-from-selection"); }
    static QString quitAction() { return QStringLiteral("quit"); }
    static QStringList actionNames();

    // "file:" URLs of files and RTFD folders, and "vellumo:" URLs, in the order given.
    QStringList uris;
    // In the order they are to run; quit, when asked for, comes last.
    QStringList actions;
    // The text for note-from-selection when it came on standard input; without one, the
    // selection is read by whoever runs the action.
    std::optional<QString> selectionText;

    bool isEmpty() const { return uris.isEmpty() && actions.isEmpty(); }

    friend bool operator==(const SNLaunchRequest &, const SNLaunchRequest &) = default;
};
