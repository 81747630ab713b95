#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>

class QTextDocument;
class QWAttributedString;
class QWMutableAttributedString;
class SNTag;
class SNTagManager;

// Finds the hashtags of a note's text: "#" followed by one or more word characters, in the
// Unicode sense, ending at the first other character.
//
// While a note is edited its tags are read from the words themselves, never stored in the
// editor's formats: a format change is an undo step in Qt, and tags marked that way would make
// Ctrl+Z take the marking off, only for the next scan to put it back and wipe the redo history.
// So the editor shows tags as it draws (SNLinkHighlighter), and the stored text gets a link and
// a tag marker on every occurrence when the note is saved.
class SNHashtagScanner final
{
public:
    struct Occurrence
    {
        qsizetype start = 0;
        qsizetype length = 0;
        QString name; // as written, with its "#"
        friend bool operator==(const Occurrence &, const Occurrence &) = default;
    };

    SNHashtagScanner() = delete;

    static QList<Occurrence> occurrencesInString(QStringView text);
    // The tag that the character at the index belongs to.
    static std::optional<Occurrence> occurrenceAtIndex(
        const QTextDocument &document, qsizetype index);

    // The tags of the text in order of first occurrence, each once; unknown names are entered
    // into the index with a random colour.
    static QList<std::shared_ptr<SNTag>> tokenizeTags(
        const QString &text, SNTagManager &tagManager);

    // The stored form: stale markers cleared, then every occurrence a link to its own text
    // carrying the tag marker.
    static QWAttributedString taggedString(const QWAttributedString &text);
    // Takes marker and link off every marked run that no longer holds a tag.
    static void clearOldTags(QWMutableAttributedString &text);
    static void markTags(QWMutableAttributedString &text);
    // Takes the stored tag markers, and their links, out of a document about to be edited.
    static void removeTagMarkers(QTextDocument &document);

    // Lenient on purpose: any string with a tag somewhere in it passes; only "#" alone and
    // strings without one fail.
    static bool stringIsValidTag(const QString &string);
    // The expression that finds tags.
    static QString tagPattern() { return QStringLiteral("#(\\w+)"); }
};
