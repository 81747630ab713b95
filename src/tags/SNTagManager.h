#pragma once

#include "kit/QWDebouncer.h"

#include <QHash>
#include <QList>
#include <QString>

#include <memory>
#include <vector>

class SNTag;

// The one index of all tags: it hands out the one tag object of a name, lists the tags for
// the tag browser, and announces changes with "SNNotificationUpdatedTags", posted once, half
// a second after the last change of a burst. Used on the interface thread only.
class SNTagManager final
{
public:
    static const QString updatedTagsNotification; // "SNNotificationUpdatedTags"
    static constexpr double notificationDelay = 0.5;

    SNTagManager();
    ~SNTagManager();
    SNTagManager(const SNTagManager &) = delete;
    SNTagManager &operator=(const SNTagManager &) = delete;

    static SNTagManager &sharedManager();

    // All tags by name, without regard to case; names equal but for case keep the order in
    // which they were added.
    QList<std::shared_ptr<SNTag>> tags() const;
    // The earliest added tag of exactly that name; never creates one.
    std::shared_ptr<SNTag> tagWithName(const QString &name) const;
    void addTag(const std::shared_ptr<SNTag> &tag);
    // Each tag replaced by the known tag of its name where there is one. All lookups run
    // before anything is added, so two new tags of one name in one call both enter.
    QList<std::shared_ptr<SNTag>> addTags(const QList<std::shared_ptr<SNTag>> &tags);
    void removeTag(const std::shared_ptr<SNTag> &tag);
    void postNotificationAfterDelay(const QString &name);

    int count() const { return int(m_actualTagsArray.size()); }

private:
    void insert(const std::shared_ptr<SNTag> &tag);

    // Insertion order, membership by identity; the hash finds a name without a scan.
    std::vector<std::shared_ptr<SNTag>> m_actualTagsArray;
    QHash<QString, QList<std::shared_ptr<SNTag>>> m_tagsByName;
    // One notice after the last change of a burst.
    QString m_pendingNotificationName;
    QWDebouncer m_delayTimer;
};
