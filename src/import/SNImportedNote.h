#pragma once

#include "kit/QWAttributedString.h"

#include <QColor>
#include <QDateTime>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

// One note as another notes program kept it, read and not yet a Vellumo note. A reader fills in
// what its program stores and leaves the rest unset; the importer decides what becomes of it.
struct SNImportedNote final
{
    // The note's id in its program (a file name, a uuid, a GUID), stable from one import to the
    // next: the same note is never imported twice.
    QString sourceId;
    // The whole note as Vellumo shows it: a title the program keeps apart is the first line.
    QWAttributedString text;
    // The note's background and text colours, when the program stores them.
    std::optional<QColor> backgroundColor;
    std::optional<QColor> textColor;
    // The program's own name for the colour or category ("blue", "Work"), for naming a theme
    // made for a colour no built-in theme comes close to.
    QString colorName;
    // The window's place and size, in the program's screen coordinates.
    std::optional<QPoint> position;
    std::optional<QSize> size;
    bool isFloating = false; // kept above other windows
    bool isHidden = false; // closed or hidden when the program last ran
    std::optional<QDateTime> dateCreated;
    std::optional<QDateTime> dateModified;
    // Groups, notebooks or categories, as the program spells them.
    QStringList tags;
};

// What a reader could not read, one line of the import's report.
struct SNImportProblem final
{
    QString item; // a file name, or a note's title where the file holds many
    QString reason; // a sentence for the user

    friend bool operator==(const SNImportProblem &, const SNImportProblem &) = default;
};

// Everything a reader found at one place: the notes, what it skipped and why, and remarks that
// hold for all the notes ("KNotes keeps colours in its database: the notes take its default
// colour").
struct SNImportReadResult final
{
    QList<SNImportedNote> notes;
    QList<SNImportProblem> problems;
    QStringList remarks;
};
