#include "notes/SNStickyNote.h"

#include "kit/QWClock.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"
#include "notes/SNHybridClock.h"
#include "settings/SNUserDefaults.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNThemeResolver.h"

#include <algorithm>
#include <cmath>

const QString SNStickyNote::themeNameDidChangeNotification = QStringLiteral("SNThemeNameDidChange");

namespace {

// The archive keys, in the order they are written.
const QString dataKey = QStringLiteral("data");
const QString dateCreatedKey = QStringLiteral("dateCreated");
const QString dateModifiedKey = QStringLiteral("dateModified");
const QString windowFrameKey = QStringLiteral("windowFrame");
const QString isCollapsedKey = QStringLiteral("isCollapsed");
const QString collapsedWindowFrameKey = QStringLiteral("collapsedWindowFrame");
const QString pinStateKey = QStringLiteral("pinState");
const QString windowAlphaKey = QStringLiteral("windowAlpha");
const QString tagsKey = QStringLiteral("tags");
const QString themeNameKey = QStringLiteral("themeName");
const QString countStateKey = QStringLiteral("countState");
// Written after the eleven, so that readers of older archives still read them.
const QString uuidKey = QStringLiteral("uuid");
const QString versionKey = QStringLiteral("version");

const QString oldNameKey = QStringLiteral("oldName");
const QString newNameKey = QStringLiteral("newName");

bool containsTag(const QList<std::shared_ptr<SNTag>> &tags, const std::shared_ptr<SNTag> &tag)
{
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

} // namespace

SNStickyNote::SNStickyNote()
{
    m_themeRenameObservation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
        themeNameDidChangeNotification, nullptr,
        [this](const QWNotification &notification) { themeNameDidChange(notification); });
}

SNStickyNote::~SNStickyNote() = default;

std::shared_ptr<SNStickyNote> SNStickyNote::note()
{
    auto note = std::make_shared<SNStickyNote>();
    note->m_uuid = QUuid::createUuid();
    const QDateTime now = QWClock::currentDateTime();
    note->m_dateCreated = now;
    note->m_dateModified = now;
    note->m_pinState = PinStateNormal;
    note->m_windowAlpha = SNUserDefaults::standardUserDefaults().defaultWindowAlpha();
    note->updateTheme();
    note->m_countState = CountWords;
    note->m_lookChangedSinceStamp = true;
    return note;
}

bool SNStickyNote::isCollapsed() const
{
    return locked(m_isCollapsed);
}

void SNStickyNote::setIsCollapsed(bool collapsed)
{
    setLocked(m_isCollapsed, collapsed);
}

std::optional<QWAttributedString> SNStickyNote::attributedString() const
{
    return locked(m_attributedString);
}

void SNStickyNote::setAttributedString(const std::optional<QWAttributedString> &text)
{
    std::lock_guard lock(m_mutex);
    // The window hands the text back on every save; only a different text is an edit.
    if (m_attributedString != text)
        m_textChangedSinceStamp = true;
    m_attributedString = text;
}

QUuid SNStickyNote::uuid() const
{
    return locked(m_uuid);
}

void SNStickyNote::setUuid(const QUuid &uuid)
{
    setLocked(m_uuid, uuid);
}

SNNoteVersion SNStickyNote::version() const
{
    return locked(m_version);
}

void SNStickyNote::setVersion(const SNNoteVersion &version)
{
    std::lock_guard lock(m_mutex);
    m_version = version;
    m_textChangedSinceStamp = false;
    m_lookChangedSinceStamp = false;
}

void SNStickyNote::stampChange(SNHybridClock &clock)
{
    const SNNoteStamp stamp = clock.now();
    std::lock_guard lock(m_mutex);
    m_version.stamp = stamp;
    if (m_textChangedSinceStamp) {
        ++m_version.textEdits[stamp.device];
        m_version.textStamp = stamp;
    }
    if (m_lookChangedSinceStamp)
        m_version.lookStamp = stamp;
    m_textChangedSinceStamp = false;
    m_lookChangedSinceStamp = false;
}

void SNStickyNote::markTextEdited()
{
    setLocked(m_textChangedSinceStamp, true);
}

void SNStickyNote::takeTextOf(const SNStickyNote &other)
{
    std::optional<QWAttributedString> text;
    std::optional<QDateTime> modified;
    {
        std::lock_guard lock(other.m_mutex);
        text = other.m_attributedString;
        modified = other.m_dateModified;
    }
    {
        std::lock_guard lock(m_mutex);
        m_attributedString = text;
        m_dateModified = modified;
    }
    setTags(other.tags());
}

void SNStickyNote::takeMergedVersion(const SNNoteVersion &version)
{
    setLocked(m_version, version);
}

void SNStickyNote::takeLookOf(const SNStickyNote &other)
{
    {
        std::scoped_lock lock(other.m_mutex, m_mutex);
        m_themeName = other.m_themeName;
        m_windowAlpha = other.m_windowAlpha;
        m_pinState = other.m_pinState;
        m_countState = other.m_countState;
    }
    updateTheme();
}

std::optional<QDateTime> SNStickyNote::dateCreated() const
{
    return locked(m_dateCreated);
}

void SNStickyNote::setDateCreated(const std::optional<QDateTime> &date)
{
    setLocked(m_dateCreated, date);
}

std::optional<QDateTime> SNStickyNote::dateModified() const
{
    return locked(m_dateModified);
}

void SNStickyNote::setDateModified(const std::optional<QDateTime> &date)
{
    setLocked(m_dateModified, date);
}

QString SNStickyNote::themeName() const
{
    return locked(m_themeName);
}

void SNStickyNote::setThemeName(const QString &name)
{
    setLookLocked(m_themeName, name);
    updateTheme();
}

QString SNStickyNote::windowFrame() const
{
    return locked(m_windowFrame);
}

void SNStickyNote::setWindowFrame(const QString &frame)
{
    setLocked(m_windowFrame, frame);
}

QString SNStickyNote::collapsedWindowFrame() const
{
    return locked(m_collapsedWindowFrame);
}

void SNStickyNote::setCollapsedWindowFrame(const QString &frame)
{
    setLocked(m_collapsedWindowFrame, frame);
}

qint64 SNStickyNote::pinState() const
{
    return locked(m_pinState);
}

void SNStickyNote::setPinState(qint64 pinState)
{
    setLookLocked(m_pinState, pinState);
}

qint64 SNStickyNote::countState() const
{
    return locked(m_countState);
}

void SNStickyNote::setCountState(qint64 countState)
{
    setLookLocked(m_countState, countState);
}

double SNStickyNote::windowAlpha() const
{
    return locked(m_windowAlpha);
}

void SNStickyNote::setWindowAlpha(double alpha)
{
    std::lock_guard lock(m_mutex);
    // Saved in single precision: a difference below it is none.
    m_lookChangedSinceStamp |= float(m_windowAlpha) != float(alpha);
    m_windowAlpha = alpha;
}

QList<std::shared_ptr<SNTag>> SNStickyNote::tags() const
{
    return locked(m_tags);
}

void SNStickyNote::setTags(const QList<std::shared_ptr<SNTag>> &newTags)
{
    const QList<std::shared_ptr<SNTag>> oldTags = tags();
    for (const std::shared_ptr<SNTag> &tag : oldTags) {
        if (tag && !containsTag(newTags, tag))
            tag->removeNote(this);
    }
    const std::shared_ptr<SNStickyNote> self = shared_from_this();
    for (const std::shared_ptr<SNTag> &tag : newTags) {
        if (tag && !containsTag(oldTags, tag))
            tag->addNote(self);
    }
    setLocked(m_tags, newTags);
}

std::shared_ptr<SNTheme> SNStickyNote::theme() const
{
    return locked(m_theme);
}

void SNStickyNote::updateTheme()
{
    QString name = themeName();
    if (name.isEmpty()) {
        name = SNThemeResolver::defaultSaveName();
        setLocked(m_themeName, name); // no second resolution
    }
    setLocked(m_theme, SNThemeResolver::themeWithSaveName(name));
}

void SNStickyNote::willDelete() { }

void SNStickyNote::didDelete()
{
    // The note's own list stays as it was; only the tags forget the note.
    for (const std::shared_ptr<SNTag> &tag : tags()) {
        if (tag)
            tag->removeNote(this);
    }
}

void SNStickyNote::didRestore()
{
    // The index hands back the tags it holds under these names, or takes these in again.
    const QList<std::shared_ptr<SNTag>> tags = SNTagManager::sharedManager().addTags(this->tags());
    const std::shared_ptr<SNStickyNote> self = shared_from_this();
    for (const std::shared_ptr<SNTag> &tag : tags)
        tag->addNote(self);
    setLocked(m_tags, tags);
}

void SNStickyNote::themeNameDidChange(const QWNotification &notification)
{
    const QVariant oldName = notification.userInfo.value(oldNameKey);
    const QVariant newName = notification.userInfo.value(newNameKey);
    if (!oldName.isValid() || !newName.isValid())
        return;
    {
        std::lock_guard lock(m_mutex);
        if (m_themeName != oldName.toString())
            return;
        // The theme object is the registry's own and follows the rename by itself.
        m_themeName = newName.toString();
    }
}

bool SNStickyNote::hasContent() const
{
    std::lock_guard lock(m_mutex);
    return m_attributedString && !m_attributedString->string().trimmed().isEmpty();
}

void SNStickyNote::encodeWithCoder(QWKeyedArchiver &coder) const
{
    std::unique_lock lock(m_mutex);
    if (!m_attributedString)
        return;
    const QWAttributedString text = *m_attributedString;
    const QDateTime now = QWClock::currentDateTime();
    const QDateTime created = m_dateCreated.value_or(now);
    const QDateTime modified = m_dateModified.value_or(now);
    const QString windowFrame = m_windowFrame.isNull() ? QStringLiteral("") : m_windowFrame;
    const QString collapsedWindowFrame
        = m_collapsedWindowFrame.isNull() ? QStringLiteral("") : m_collapsedWindowFrame;
    const bool isCollapsed = m_isCollapsed;
    const qint64 pinState = m_pinState;
    const float windowAlpha = float(m_windowAlpha); // single precision on purpose
    const QList<std::shared_ptr<SNTag>> tags = m_tags;
    const QString themeName = m_themeName.isNull() ? QStringLiteral("") : m_themeName;
    const qint64 countState = m_countState;
    const QUuid uuid = m_uuid;
    const SNNoteVersion version = m_version;
    lock.unlock();

    coder.encodeDataForKey(text.archivedData(), dataKey);
    coder.encodeDateForKey(created, dateCreatedKey);
    coder.encodeDateForKey(modified, dateModifiedKey);
    coder.encodeStringForKey(windowFrame, windowFrameKey);
    coder.encodeBoolForKey(isCollapsed, isCollapsedKey);
    coder.encodeStringForKey(collapsedWindowFrame, collapsedWindowFrameKey);
    coder.encodeIntegerForKey(pinState, pinStateKey);
    coder.encodeFloatForKey(windowAlpha, windowAlphaKey);
    coder.encodeArrayOfObjectsForKey(tags, tagsKey);
    coder.encodeStringForKey(themeName, themeNameKey);
    coder.encodeIntegerForKey(countState, countStateKey);
    if (!uuid.isNull())
        coder.encodeStringForKey(uuid.toString(QUuid::WithoutBraces), uuidKey);
    if (!version.isNull())
        coder.encodeObjectForKey(version, versionKey);
}

std::shared_ptr<SNStickyNote> SNStickyNote::initWithCoder(const QWKeyedUnarchiver &coder)
{
    auto note = std::make_shared<SNStickyNote>();
    if (const std::optional<QByteArray> data = coder.decodeDataForKey(dataKey))
        note->m_attributedString = QWAttributedString::fromArchivedData(*data);
    note->m_dateCreated = coder.decodeDateForKey(dateCreatedKey);
    note->m_dateModified = coder.decodeDateForKey(dateModifiedKey);
    note->m_windowFrame = coder.decodeStringForKey(windowFrameKey).value_or(QString());
    note->m_isCollapsed = coder.decodeBoolForKey(isCollapsedKey);
    note->m_collapsedWindowFrame
        = coder.decodeStringForKey(collapsedWindowFrameKey).value_or(QString());
    // Kept as stored, even outside the menu's range: the window shows such a note at the
    // normal level and the value stays until the user picks another.
    note->m_pinState = coder.decodeIntegerForKey(pinStateKey);
    const double alpha = coder.decodeDoubleForKey(windowAlphaKey);
    note->m_windowAlpha = std::isfinite(alpha) ? std::clamp(alpha, 0.0, 1.0) : 0.0;
    note->m_themeName = coder.decodeStringForKey(themeNameKey).value_or(QString());
    note->m_countState = coder.decodeIntegerForKey(countStateKey);
    note->m_uuid = QUuid::fromString(coder.decodeStringForKey(uuidKey).value_or(QString()));
    note->m_version
        = coder.decodeObjectOfClassForKey<SNNoteVersion>(versionKey).value_or(SNNoteVersion());

    // The index hands back its own tag wherever it knows the name, so all notes share one.
    const QList<std::shared_ptr<SNTag>> decoded
        = coder.decodeArrayOfObjectsOfClassForKey<std::shared_ptr<SNTag>>(tagsKey).value_or(
            QList<std::shared_ptr<SNTag>>());
    note->m_tags = SNTagManager::sharedManager().addTags(decoded);
    for (const std::shared_ptr<SNTag> &tag : std::as_const(note->m_tags))
        tag->addNote(note);
    note->updateTheme();
    return note;
}
