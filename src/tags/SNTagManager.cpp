#include "tags/SNTagManager.h"

#include "kit/QWNotificationCenter.h"
#include "tags/SNTag.h"

#include <algorithm>

const QString SNTagManager::updatedTagsNotification = QStringLiteral("SNNotificationUpdatedTags");

SNTagManager::SNTagManager()
    : m_delayTimer(notificationDelay, [this] {
          QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
              m_pendingNotificationName);
      })
{ }

SNTagManager::~SNTagManager() = default;

SNTagManager &SNTagManager::sharedManager()
{
    static SNTagManager manager;
    return manager;
}

QList<std::shared_ptr<SNTag>> SNTagManager::tags() const
{
    QList<std::shared_ptr<SNTag>> sorted(m_actualTagsArray.begin(), m_actualTagsArray.end());
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto &left, const auto &right) {
        return QString::compare(left->name(), right->name(), Qt::CaseInsensitive) < 0;
    });
    return sorted;
}

std::shared_ptr<SNTag> SNTagManager::tagWithName(const QString &name) const
{
    if (name.isEmpty() || m_actualTagsArray.empty())
        return nullptr;
    const auto found = m_tagsByName.constFind(name);
    return found == m_tagsByName.constEnd() || found->isEmpty() ? nullptr : found->front();
}

void SNTagManager::insert(const std::shared_ptr<SNTag> &tag)
{
    if (!tag)
        return;
    QList<std::shared_ptr<SNTag>> &sameName = m_tagsByName[tag->name()];
    if (sameName.contains(tag))
        return;
    sameName.append(tag);
    m_actualTagsArray.push_back(tag);
}

void SNTagManager::addTag(const std::shared_ptr<SNTag> &tag)
{
    if (!tag)
        return;
    const std::shared_ptr<SNTag> known = tagWithName(tag->name());
    insert(known ? known : tag);
    postNotificationAfterDelay(updatedTagsNotification);
}

QList<std::shared_ptr<SNTag>> SNTagManager::addTags(const QList<std::shared_ptr<SNTag>> &tags)
{
    QList<std::shared_ptr<SNTag>> result;
    result.reserve(tags.size());
    for (const std::shared_ptr<SNTag> &tag : tags) {
        if (!tag)
            continue;
        const std::shared_ptr<SNTag> known = tagWithName(tag->name());
        result.append(known ? known : tag);
    }
    for (const std::shared_ptr<SNTag> &tag : result)
        insert(tag);
    postNotificationAfterDelay(updatedTagsNotification);
    return result;
}

void SNTagManager::removeTag(const std::shared_ptr<SNTag> &tag)
{
    if (!tag)
        return;
    const auto found = std::find(m_actualTagsArray.begin(), m_actualTagsArray.end(), tag);
    if (found != m_actualTagsArray.end()) {
        const auto sameName = m_tagsByName.find(tag->name());
        if (sameName != m_tagsByName.end()) {
            sameName->removeOne(tag);
            if (sameName->isEmpty())
                m_tagsByName.erase(sameName);
        }
        m_actualTagsArray.erase(found);
    }
    postNotificationAfterDelay(updatedTagsNotification);
}

void SNTagManager::postNotificationAfterDelay(const QString &name)
{
    m_pendingNotificationName = name;
    m_delayTimer.restart();
}
