#include "tags/SNTag.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "tags/SNTagManager.h"

namespace {

const QString nameKey = QStringLiteral("name");
const QString colorKey = QStringLiteral("color");

} // namespace

SNTag::SNTag(QString name, const QWColor &tagColor) : m_name(std::move(name)), m_tagColor(tagColor)
{ }

std::shared_ptr<SNTag> SNTag::tagWithNameColor(const QString &name, const QWColor &color)
{
    return std::make_shared<SNTag>(name, color);
}

QList<std::shared_ptr<SNStickyNote>> SNTag::notes() const
{
    QList<std::shared_ptr<SNStickyNote>> result;
    result.reserve(m_noteSet.size());
    for (const std::weak_ptr<SNStickyNote> &note : m_noteSet) {
        if (std::shared_ptr<SNStickyNote> alive = note.lock())
            result.append(std::move(alive));
    }
    return result;
}

bool SNTag::containsNote(const SNStickyNote *note) const
{
    const auto found = m_noteSet.constFind(note);
    return found != m_noteSet.constEnd() && !found->expired();
}

void SNTag::addNote(const std::shared_ptr<SNStickyNote> &note)
{
    if (note)
        m_noteSet.insert(note.get(), note);
}

void SNTag::removeNote(const SNStickyNote *note)
{
    m_noteSet.remove(note);
    dropDeletedNotes();
    if (m_noteSet.isEmpty()) {
        // The index may hold the last reference: keep this tag alive until we are done.
        const std::shared_ptr<SNTag> keepAlive = weak_from_this().lock();
        SNTagManager::sharedManager().removeTag(keepAlive);
    }
}

void SNTag::dropDeletedNotes()
{
    m_noteSet.removeIf([](const auto &entry) { return entry.value().expired(); });
}

QString SNTag::description() const
{
    return QString::asprintf("<SNTag: %p name=", static_cast<const void *>(this)) + m_name
        + QStringLiteral(" color=") + m_tagColor.description() + QLatin1Char('>');
}

void SNTag::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeStringForKey(m_name, nameKey);
    coder.encodeObjectForKey(m_tagColor, colorKey);
}

std::shared_ptr<SNTag> SNTag::initWithCoder(const QWKeyedUnarchiver &coder)
{
    const std::optional<QString> name = coder.decodeStringForKey(nameKey);
    if (!name || name->isEmpty())
        return nullptr;
    // A tag without its colour still deserves one; it gets a new one, as a new tag would.
    const QWColor color
        = coder.decodeObjectOfClassForKey<QWColor>(colorKey).value_or(QWColor::qw_randomColor());
    return tagWithNameColor(*name, color);
}
