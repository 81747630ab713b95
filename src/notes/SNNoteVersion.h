#pragma once

#include <QMap>
#include <QString>

#include <compare>
#include <optional>

class QWKeyedArchiver;
class QWKeyedUnarchiver;

// When a note last changed, as a hybrid logical clock stamp: wall-clock milliseconds, a counter
// for changes within one millisecond (or while the clock stands behind a stamp already seen),
// and the device that made the change. Stamps of one device always increase; stamps of several
// devices order by time first, so the newest change of a look wins even across computers.
struct SNNoteStamp
{
    qint64 millis = 0;
    qint64 counter = 0;
    QString device;

    bool isNull() const { return millis == 0 && counter == 0 && device.isEmpty(); }
    friend std::strong_ordering operator<=>(const SNNoteStamp &a, const SNNoteStamp &b);
    friend bool operator==(const SNNoteStamp &, const SNNoteStamp &) = default;
};

// The version a saved note carries: the stamp of its last change, of its last text edit and of
// its last change of look (theme, transparency, pin, counter), and a version vector of its
// text, counting for each device the text edits that this version contains. The vectors tell
// an edit that saw another from two edits made apart; the text's stamp tells which of two such
// edits is the newer.
class SNNoteVersion final
{
public:
    SNNoteStamp stamp;
    SNNoteStamp textStamp; // null when the text never changed since ids were given
    SNNoteStamp lookStamp; // null when the look never changed since ids were given
    QMap<QString, qint64> textEdits; // device id to the number of its text edits seen

    bool isNull() const
    {
        return stamp.isNull() && textStamp.isNull() && lookStamp.isNull() && textEdits.isEmpty();
    }
    // True when this version contains every text edit the other contains.
    bool hasSeenTextOf(const SNNoteVersion &other) const;
    // The text edits of both.
    static QMap<QString, qint64> joinedTextEdits(const SNNoteVersion &a, const SNNoteVersion &b);

    friend bool operator==(const SNNoteVersion &, const SNNoteVersion &) = default;

    static QString className() { return QStringLiteral("SNNoteVersion"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::optional<SNNoteVersion> initWithCoder(const QWKeyedUnarchiver &coder);
};
