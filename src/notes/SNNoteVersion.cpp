#include "notes/SNNoteVersion.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

namespace {

const QString millisKey = QStringLiteral("millis");
const QString counterKey = QStringLiteral("counter");
const QString deviceKey = QStringLiteral("device");
const QString textEditsKey = QStringLiteral("textEdits");
const QString countKey = QStringLiteral("count");
const QString textMillisKey = QStringLiteral("textMillis");
const QString textCounterKey = QStringLiteral("textCounter");
const QString textDeviceKey = QStringLiteral("textDevice");
const QString lookMillisKey = QStringLiteral("lookMillis");
const QString lookCounterKey = QStringLiteral("lookCounter");
const QString lookDeviceKey = QStringLiteral("lookDevice");

// One entry of the version vector, an object of its own so that any CBOR reader sees names.
struct SNTextEditCount
{
    QString device;
    qint64 count = 0;

    static QString className() { return QStringLiteral("SNTextEditCount"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const
    {
        coder.encodeStringForKey(device, deviceKey);
        coder.encodeIntegerForKey(count, countKey);
    }
    static std::optional<SNTextEditCount> initWithCoder(const QWKeyedUnarchiver &coder)
    {
        return SNTextEditCount { coder.decodeStringForKey(deviceKey).value_or(QString()),
            coder.decodeIntegerForKey(countKey) };
    }
};

} // namespace

std::strong_ordering operator<=>(const SNNoteStamp &a, const SNNoteStamp &b)
{
    if (const auto order = a.millis <=> b.millis; order != 0)
        return order;
    if (const auto order = a.counter <=> b.counter; order != 0)
        return order;
    const int devices = QString::compare(a.device, b.device);
    return devices < 0 ? std::strong_ordering::less
        : devices > 0  ? std::strong_ordering::greater
                       : std::strong_ordering::equal;
}

bool SNNoteVersion::hasSeenTextOf(const SNNoteVersion &other) const
{
    for (auto edit = other.textEdits.cbegin(); edit != other.textEdits.cend(); ++edit) {
        if (textEdits.value(edit.key()) < edit.value())
            return false;
    }
    return true;
}

QMap<QString, qint64> SNNoteVersion::joinedTextEdits(const SNNoteVersion &a, const SNNoteVersion &b)
{
    QMap<QString, qint64> joined = a.textEdits;
    for (auto edit = b.textEdits.cbegin(); edit != b.textEdits.cend(); ++edit)
        joined[edit.key()] = std::max(joined.value(edit.key()), edit.value());
    return joined;
}

void SNNoteVersion::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeIntegerForKey(stamp.millis, millisKey);
    coder.encodeIntegerForKey(stamp.counter, counterKey);
    coder.encodeStringForKey(stamp.device, deviceKey);
    QList<SNTextEditCount> edits;
    for (auto edit = textEdits.cbegin(); edit != textEdits.cend(); ++edit)
        edits.append({ edit.key(), edit.value() });
    coder.encodeArrayOfObjectsForKey(edits, textEditsKey);
    if (!textStamp.isNull()) {
        coder.encodeIntegerForKey(textStamp.millis, textMillisKey);
        coder.encodeIntegerForKey(textStamp.counter, textCounterKey);
        coder.encodeStringForKey(textStamp.device, textDeviceKey);
    }
    if (!lookStamp.isNull()) {
        coder.encodeIntegerForKey(lookStamp.millis, lookMillisKey);
        coder.encodeIntegerForKey(lookStamp.counter, lookCounterKey);
        coder.encodeStringForKey(lookStamp.device, lookDeviceKey);
    }
}

std::optional<SNNoteVersion> SNNoteVersion::initWithCoder(const QWKeyedUnarchiver &coder)
{
    SNNoteVersion version;
    version.stamp.millis = coder.decodeIntegerForKey(millisKey);
    version.stamp.counter = coder.decodeIntegerForKey(counterKey);
    version.stamp.device = coder.decodeStringForKey(deviceKey).value_or(QString());
    version.textStamp.millis = coder.decodeIntegerForKey(textMillisKey);
    version.textStamp.counter = coder.decodeIntegerForKey(textCounterKey);
    version.textStamp.device = coder.decodeStringForKey(textDeviceKey).value_or(QString());
    version.lookStamp.millis = coder.decodeIntegerForKey(lookMillisKey);
    version.lookStamp.counter = coder.decodeIntegerForKey(lookCounterKey);
    version.lookStamp.device = coder.decodeStringForKey(lookDeviceKey).value_or(QString());
    const QList<SNTextEditCount> edits
        = coder.decodeArrayOfObjectsOfClassForKey<SNTextEditCount>(textEditsKey)
              .value_or(QList<SNTextEditCount>());
    for (const SNTextEditCount &edit : edits) {
        if (!edit.device.isEmpty() && edit.count > 0)
            version.textEdits[edit.device]
                = std::max(version.textEdits.value(edit.device), edit.count);
    }
    return version;
}
