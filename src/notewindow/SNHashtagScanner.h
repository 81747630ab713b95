#pragma once

#include <QList>
#include <QString>

#include <memory>

class QTextDocument;
class SNTag;
class SNTagManager;

// Finds the hashtags of a note's text: "#" followed by one or more word characters, in the
// Unicode sense. Every occurrence becomes a link whose target is its own text and carries the
// tag marker; markers left on text that no longer reads as a tag are taken off.
//
// The formats change in one edit block joined to the user's last edit, so the tags of a
// sentence are undone with the sentence and never become an undo step of their own; and
// nothing is touched when every occurrence is marked already, so a scan that finds nothing new
// costs no undo history.
class SNHashtagScanner final
{
public:
    SNHashtagScanner() = delete;

    // The tags of the text in order of first occurrence, each once; unknown names are entered
    // into the index with a random colour.
    static QList<std::shared_ptr<SNTag>> tokenizeTags(
        QTextDocument &document, SNTagManager &tagManager);
    // Takes the tag marker and link off every marked run that no longer holds a tag.
    static void clearOldTags(QTextDocument &document);
    // Lenient on purpose: any string with a tag somewhere in it passes; only "#" alone and
    // strings without one fail.
    static bool stringIsValidTag(const QString &string);
    // The expression that finds tags.
    static QString tagPattern() { return QStringLiteral("#(\\w+)"); }
};
