#pragma once

#include "kit/QWTextAttributes.h"

#include <QByteArray>
#include <QList>
#include <QSharedDataPointer>
#include <QString>
#include <QTextCharFormat>

#include <functional>
#include <optional>

class QTextDocument;
class QWKeyedArchiver;
class QWKeyedUnarchiver;

// One attribute run: the characters [location, location + length) and their attributes.
struct QWTextRun final
{
    qsizetype location = 0;
    qsizetype length = 0;
    QWTextAttributes attributes;

    qsizetype end() const { return location + length; }

    // Archived as an object of its own inside a string's "runs".
    static QString className() { return QStringLiteral("QWTextRun"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    // Nothing when "location" or "length" is missing; clipping is the string's business.
    static std::optional<QWTextRun> initWithCoder(const QWKeyedUnarchiver &coder);

    friend bool operator==(const QWTextRun &, const QWTextRun &) = default;
};

// Rich text as a value: a string and the attribute runs that cover all of it, in order, without
// gaps, each run non-empty and different from its neighbours. Because the runs are kept in this
// one form, two strings with the same text and the same attributes per character compare equal.
// Immutable and implicitly shared, so a copy handed to another thread stays as it was.
class QWAttributedString final
{
public:
    QWAttributedString();
    explicit QWAttributedString(
        const QString &string, const QWTextAttributes &attributes = QWTextAttributes());
    // Runs may come in any order, overlap, leave gaps or reach outside the string: they are
    // sorted by location, an earlier run keeps the characters it shares with a later one,
    // the parts outside the string are dropped, and gaps get no attributes.
    QWAttributedString(const QString &string, QList<QWTextRun> runs);
    QWAttributedString(const QWAttributedString &other);
    QWAttributedString(QWAttributedString &&other) noexcept;
    QWAttributedString &operator=(const QWAttributedString &other);
    QWAttributedString &operator=(QWAttributedString &&other) noexcept;
    ~QWAttributedString();

    const QString &string() const;
    qsizetype length() const;
    bool isEmpty() const;
    const QList<QWTextRun> &runs() const;

    // The run holding the character at index; an empty run at the index when it is outside.
    QWTextRun runAtIndex(qsizetype index) const;
    QWTextAttributes attributesAtIndex(qsizetype index) const;
    // The part of the range that lies inside the string.
    QWAttributedString attributedSubstringFromRange(qsizetype location, qsizetype length) const;

    // Paragraph breaks become "\n"; an attachment reads as one U+FFFC with the image file bytes
    // (a pasted image is stored as PNG). What a fragment leaves unset is taken from `base`, as
    // the editor draws it.
    static QWAttributedString fromTextDocument(
        const QTextDocument &document, const QTextCharFormat &base = QTextCharFormat());
    // Clears the document and fills it with this text; "\n", "\r", "\r\n" and U+2029 start a new
    // block, U+2028 stays inside one. The undo history of the document starts afresh.
    void toTextDocument(QTextDocument &document) const;

    static QString className() { return QStringLiteral("QWAttributedString"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    // Nothing when "string" is missing; damaged runs are clipped or dropped.
    static std::optional<QWAttributedString> initWithCoder(const QWKeyedUnarchiver &coder);

    // A whole keyed archive whose root is this string, as a note stores its text.
    QByteArray archivedData() const;
    static std::optional<QWAttributedString> fromArchivedData(const QByteArray &data);

    friend bool operator==(const QWAttributedString &a, const QWAttributedString &b);

private:
    friend class QWMutableAttributedString;
    struct Data;
    struct Normalized
    {
    };
    // Takes runs that are already in the one form above.
    QWAttributedString(const QString &string, QList<QWTextRun> runs, Normalized);

    QSharedDataPointer<Data> d;
};

// Builds and edits rich text: the editor, the RTF reader and the hashtag marking change text
// piece by piece and then take the result with attributedString(). Ranges are clipped to the
// text.
class QWMutableAttributedString final
{
public:
    QWMutableAttributedString() = default;
    explicit QWMutableAttributedString(const QWAttributedString &string);

    const QString &string() const { return m_string; }
    qsizetype length() const { return m_string.size(); }
    const QList<QWTextRun> &runs() const { return m_runs; }
    QWTextAttributes attributesAtIndex(qsizetype index) const;
    QWAttributedString attributedString() const;

    void appendString(const QString &text, const QWTextAttributes &attributes = QWTextAttributes());
    void appendAttributedString(const QWAttributedString &text);

    // Replaces the attributes of the range.
    void setAttributesRange(
        const QWTextAttributes &attributes, qsizetype location, qsizetype length);
    // Changes the attributes of each run in the range, e.g. to add a link or to remove the
    // strikethrough and keep the rest.
    void modifyAttributesRange(qsizetype location, qsizetype length,
        const std::function<void(QWTextAttributes &)> &modify);

    // The new text takes the attributes of the first replaced character, or of the character
    // before when nothing is replaced, as typing does.
    void replaceCharactersInRangeWithString(
        qsizetype location, qsizetype length, const QString &text);
    void replaceCharactersInRangeWithAttributedString(
        qsizetype location, qsizetype length, const QWAttributedString &text);
    void deleteCharactersInRange(qsizetype location, qsizetype length);

private:
    // Splits the run that holds index so that a run starts there; returns that run's position.
    qsizetype splitAt(qsizetype index);
    void mergeEqualRuns();

    QString m_string;
    QList<QWTextRun> m_runs;
};
