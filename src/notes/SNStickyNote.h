#pragma once

#include "kit/QWAttributedString.h"
#include "kit/QWNotificationCenter.h"
#include "notes/SNNoteVersion.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>

#include <memory>
#include <mutex>
#include <optional>

class QWKeyedArchiver;
class QWKeyedUnarchiver;
class SNHybridClock;
class SNTag;
class SNTheme;

// The record of one sticky note: its text, dates, theme, window geometry, pin state,
// transparency, counter state and tags. The note store owns it; one note window edits it, and
// the note does not know that window.
//
// Every field is guarded by the note's own lock, so that a background save can read a note
// while the interface thread changes it. Tags and the theme are set on the interface thread.
class SNStickyNote final : public std::enable_shared_from_this<SNStickyNote>
{
public:
    enum PinState : qint64 { PinStateNormal = 0, PinStateFloating = 1, PinStateDesktop = 2 };
    enum CountState : qint64 { CountWords = 0, CountParagraphs = 1, CountCharacters = 2 };

    static const QString themeNameDidChangeNotification; // "SNThemeNameDidChange"

    SNStickyNote();
    ~SNStickyNote();
    SNStickyNote(const SNStickyNote &) = delete;
    SNStickyNote &operator=(const SNStickyNote &) = delete;

    // A note just created: a new id, both dates now, pin state 0, the default transparency,
    // the default theme, count state 0; no text, frames or tags.
    static std::shared_ptr<SNStickyNote> note();

    // The id that stays with the note through saves, deletion, backups and other computers.
    // Null for a note read from an archive older than ids; the store gives it one.
    QUuid uuid() const;
    void setUuid(const QUuid &uuid);
    // The version last saved; see SNNoteVersion.
    SNNoteVersion version() const;
    void setVersion(const SNNoteVersion &version);
    // Gives the note the version of a change saved now: a new stamp, one more text edit of this
    // device when the text changed since the last stamp, and the look's stamp when it changed.
    void stampChange(SNHybridClock &clock);
    // The next stamp counts a text edit even though the text is as it was: a note brought back
    // must win over the deletion that other computers saw.
    void markTextEdited();

    // Merging another computer's version of this note: its text (with its tags and date of
    // change), or its look. Neither counts as a change of this computer.
    void takeTextOf(const SNStickyNote &other);
    void takeLookOf(const SNStickyNote &other);
    // The version a merge made; a change of this computer not yet stamped stays to be stamped.
    void takeMergedVersion(const SNNoteVersion &version);

    bool isCollapsed() const;
    void setIsCollapsed(bool collapsed);
    std::optional<QWAttributedString> attributedString() const;
    void setAttributedString(const std::optional<QWAttributedString> &text);
    std::optional<QDateTime> dateCreated() const;
    void setDateCreated(const std::optional<QDateTime> &date);
    std::optional<QDateTime> dateModified() const;
    void setDateModified(const std::optional<QDateTime> &date);
    // Null when unset. Setting it resolves the theme again at once.
    QString themeName() const;
    void setThemeName(const QString &name);
    // "{{x, y}, {width, height}}"; null when unset, and empty after a round trip of an
    // unset frame: readers treat both as "no frame".
    QString windowFrame() const;
    void setWindowFrame(const QString &frame);
    QString collapsedWindowFrame() const;
    void setCollapsedWindowFrame(const QString &frame);
    qint64 pinState() const;
    void setPinState(qint64 pinState);
    qint64 countState() const;
    void setCountState(qint64 countState);
    double windowAlpha() const;
    void setWindowAlpha(double alpha);

    // Empty when the note carries no tag.
    QList<std::shared_ptr<SNTag>> tags() const;
    // Keeps the tags' note sets in step: old tags that are not in the new list forget this
    // note, new ones learn of it.
    void setTags(const QList<std::shared_ptr<SNTag>> &tags);

    std::shared_ptr<SNTheme> theme() const;
    void updateTheme();

    // Called by the note store around removal.
    void willDelete();
    void didDelete();
    // Called by the note store when a deleted note comes back: its tags know it again.
    void didRestore();

    // The archive form. A note without text writes nothing at all.
    static QString className() { return QStringLiteral("SNStickyNote"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::shared_ptr<SNStickyNote> initWithCoder(const QWKeyedUnarchiver &coder);

    // True when the note has text other than white space: only such notes are saved.
    bool hasContent() const;

private:
    void themeNameDidChange(const QWNotification &notification);

    // Every field is read and written under the note's lock.
    template <class T> T locked(const T &field) const
    {
        std::lock_guard lock(m_mutex);
        return field;
    }
    template <class T, class Value> void setLocked(T &field, const Value &value)
    {
        std::lock_guard lock(m_mutex);
        field = value;
    }
    // For a field of the note's look: a real change is shared with the next stamp.
    template <class T> void setLookLocked(T &field, const T &value)
    {
        std::lock_guard lock(m_mutex);
        m_lookChangedSinceStamp |= field != value;
        field = value;
    }

    mutable std::mutex m_mutex;
    QUuid m_uuid;
    SNNoteVersion m_version;
    bool m_textChangedSinceStamp = false;
    bool m_lookChangedSinceStamp = false;
    bool m_isCollapsed = false;
    std::optional<QWAttributedString> m_attributedString;
    std::optional<QDateTime> m_dateCreated;
    std::optional<QDateTime> m_dateModified;
    QString m_themeName;
    QString m_windowFrame;
    QString m_collapsedWindowFrame;
    qint64 m_pinState = PinStateNormal;
    qint64 m_countState = CountWords;
    double m_windowAlpha = 0.0;
    QList<std::shared_ptr<SNTag>> m_tags;
    std::shared_ptr<SNTheme> m_theme;
    QWNotificationCenter::Observation m_themeRenameObservation;
};
