#pragma once

#include "kit/QWColor.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>

class QWKeyedArchiver;
class QWKeyedUnarchiver;
class SNStickyNote;

// One hashtag, shared by every note that carries it. Its name and colour never change after
// creation, so a background save may read them while the interface thread works.
//
// The notes a tag carries are held weakly: the note store owns the notes, and a tag must not
// keep a deleted note (and through it the tag itself) alive.
class SNTag final : public std::enable_shared_from_this<SNTag>
{
public:
    SNTag(QString name, const QWColor &tagColor);
    SNTag(const SNTag &) = delete;
    SNTag &operator=(const SNTag &) = delete;

    // A new tag; it is not entered in the index.
    static std::shared_ptr<SNTag> tagWithNameColor(const QString &name, const QWColor &color);

    const QString &name() const { return m_name; }
    const QWColor &tagColor() const { return m_tagColor; }

    // The notes that carry the tag, in no particular order.
    QList<std::shared_ptr<SNStickyNote>> notes() const;
    bool containsNote(const SNStickyNote *note) const;
    void addNote(const std::shared_ptr<SNStickyNote> &note);
    // Once no note is left, the tag leaves the shared index.
    void removeNote(const SNStickyNote *note);

    QString description() const;

    static QString className() { return QStringLiteral("SNTag"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::shared_ptr<SNTag> initWithCoder(const QWKeyedUnarchiver &coder);

private:
    void dropDeletedNotes();

    const QString m_name;
    const QWColor m_tagColor;
    QHash<const SNStickyNote *, std::weak_ptr<SNStickyNote>> m_noteSet;
};
