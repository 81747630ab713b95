#include "settings/SNUserDefaults.h"

#include "settings/QWLoginItem.h"
#include "settings/SNApplicationInfo.h"

#include <QSettings>
#include <QSysInfo>
#include <QUuid>

SNUserDefaults::SNUserDefaults(ConstructionKey key) : GVUserDefaults(key) { }

SNUserDefaults::~SNUserDefaults() = default;

SNUserDefaults &SNUserDefaults::standardUserDefaults()
{
    return GVUserDefaults::standardUserDefaults<SNUserDefaults>();
}

QList<GVUserDefaults::Property> SNUserDefaults::declaredProperties() const
{
    using Type = PropertyType;
    return {
        { hotKeyComboKey(), Type::Unsupported, {}, {}, true },
        { hotKeyEnabledKey(), Type::Bool },
        { noteHotKeyComboKey(), Type::Unsupported, {}, {}, true },
        { startAtLoginKey(), Type::Bool, {}, {}, true },
        { hideWindowKey(), Type::Bool },
        { showIconInDockKey(), Type::Bool },
        { showMenuIconKey(), Type::Bool },
        { defaultThemeNameKey(), Type::String },
        { suppressThemeDeletionAlertKey(), Type::Bool },
        { defaultWindowAlphaKey(), Type::Double },
        { checkSpellingKey(), Type::Bool },
        { autoCorrectSpellingKey(), Type::Bool },
        { syncFolderKey(), Type::String },
        { deviceNameKey(), Type::String },
    };
}

QVariantMap SNUserDefaults::setupDefaults() const
{
    return {
        { hotKeyEnabledKey(), true },
        { hotKeyCodeKey(), qint32(45) },
        { hotKeyModifierKey(), quint64(QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask) },
        { noteHotKeyCodeKey(), qint32(45) },
        { noteHotKeyModifierKey(),
            quint64(QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask
                | QWKeyCombo::CommandKeyMask) },
        { defaultThemeNameKey(), QStringLiteral("SNYellowPadTheme") },
        { showMenuIconKey(), true },
        { showIconInDockKey(), true },
        // Registered as a float on purpose: the double getter then reads 0.949999988079071.
        { defaultWindowAlphaKey(), 0.95f },
        { checkSpellingKey(), true },
        { autoCorrectSpellingKey(), true },
    };
}

QWKeyCombo SNUserDefaults::storedKeyCombo(const QString &codeKey, const QString &modifierKey) const
{
    const qint64 code = toLongLong(objectForDefaultsKey(transformKey(codeKey)));
    const qint64 flags = toLongLong(objectForDefaultsKey(transformKey(modifierKey)));
    return { static_cast<quint64>(flags), code };
}

void SNUserDefaults::populateProperties()
{
    // Rewriting the hot keys on every start keeps the file complete; a stored start at login
    // differs from the initial false, so the login item is renewed on every start too.
    setHotKeyCombo(storedKeyCombo(hotKeyCodeKey(), hotKeyModifierKey()));
    setNoteHotKeyCombo(storedKeyCombo(noteHotKeyCodeKey(), noteHotKeyModifierKey()));
    setStartAtLogin(toBool(objectForDefaultsKey(transformKey(startAtLoginKey()))));
}

void SNUserDefaults::writeKeyCombo(const QWKeyCombo &combo, const QString &propertyKey,
    const QString &codeKey, const QString &modifierKey)
{
    Q_EMIT willChangeValueForKey(propertyKey);
    setObjectForDefaultsKey(combo.code, transformKey(codeKey));
    setObjectForDefaultsKey(combo.flags, transformKey(modifierKey));
    userDefaults().sync();
    Q_EMIT didChangeValueForKey(propertyKey);
}

void SNUserDefaults::setHotKeyCombo(const QWKeyCombo &combo)
{
    m_hotKeyCombo = combo;
    writeKeyCombo(combo, hotKeyComboKey(), hotKeyCodeKey(), hotKeyModifierKey());
}

void SNUserDefaults::setNoteHotKeyCombo(const QWKeyCombo &combo)
{
    m_noteHotKeyCombo = combo;
    writeKeyCombo(combo, noteHotKeyComboKey(), noteHotKeyCodeKey(), noteHotKeyModifierKey());
}

void SNUserDefaults::setStartAtLogin(bool startAtLogin)
{
    Q_EMIT willChangeValueForKey(startAtLoginKey());
    if (startAtLogin != m_startAtLogin) {
        m_startAtLogin = startAtLogin;
        setObjectForDefaultsKey(startAtLogin, transformKey(startAtLoginKey()));

        const QString helper = SNApplicationInfo::loginHelperIdentifier();
        if (QWLoginItem::setEnabled(
                helper, startAtLogin, { SNApplicationInfo::loginLaunchURL() })) {
            qInfo("DEBUG: %s %s", startAtLogin ? "Added" : "Removed", qUtf8Printable(helper));
        } else {
            qWarning("DEBUG: Could not %s %s to the login items", startAtLogin ? "add" : "remove",
                qUtf8Printable(helper));
        }
    }
    Q_EMIT didChangeValueForKey(startAtLoginKey());
}

bool SNUserDefaults::hotKeyEnabled() const
{
    return boolForKey(hotKeyEnabledKey());
}

void SNUserDefaults::setHotKeyEnabled(bool enabled)
{
    setBoolForKey(enabled, hotKeyEnabledKey());
}

bool SNUserDefaults::hideWindow() const
{
    return boolForKey(hideWindowKey());
}

void SNUserDefaults::setHideWindow(bool hide)
{
    setBoolForKey(hide, hideWindowKey());
}

bool SNUserDefaults::showIconInDock() const
{
    return boolForKey(showIconInDockKey());
}

void SNUserDefaults::setShowIconInDock(bool show)
{
    setBoolForKey(show, showIconInDockKey());
}

bool SNUserDefaults::showMenuIcon() const
{
    return boolForKey(showMenuIconKey());
}

void SNUserDefaults::setShowMenuIcon(bool show)
{
    setBoolForKey(show, showMenuIconKey());
}

QString SNUserDefaults::defaultThemeName() const
{
    return stringForKey(defaultThemeNameKey());
}

void SNUserDefaults::setDefaultThemeName(const QString &name)
{
    setStringForKey(name, defaultThemeNameKey());
}

bool SNUserDefaults::suppressThemeDeletionAlert() const
{
    return boolForKey(suppressThemeDeletionAlertKey());
}

void SNUserDefaults::setSuppressThemeDeletionAlert(bool suppress)
{
    setBoolForKey(suppress, suppressThemeDeletionAlertKey());
}

QString SNUserDefaults::deviceIdentifier()
{
    const QString identifier = stringForKey(deviceIdentifierKey());
    return QUuid::fromString(identifier).isNull() ? makeNewDeviceIdentifier() : identifier;
}

QString SNUserDefaults::makeNewDeviceIdentifier()
{
    const QString identifier = QUuid::createUuid().toString(QUuid::WithoutBraces);
    setStringForKey(identifier, deviceIdentifierKey());
    userDefaults().sync();
    return identifier;
}

QString SNUserDefaults::syncFolder() const
{
    return stringForKey(syncFolderKey());
}

void SNUserDefaults::setSyncFolder(const QString &folder)
{
    setStringForKey(folder, syncFolderKey());
    // Another start of the program reads it at once when none runs.
    userDefaults().sync();
}

QString SNUserDefaults::deviceName() const
{
    const QString name = stringForKey(deviceNameKey()).trimmed();
    return name.isEmpty() ? QSysInfo::machineHostName() : name;
}

void SNUserDefaults::setDeviceName(const QString &name)
{
    setStringForKey(name.trimmed(), deviceNameKey());
}

double SNUserDefaults::defaultWindowAlpha() const
{
    return doubleForKey(defaultWindowAlphaKey());
}

void SNUserDefaults::setDefaultWindowAlpha(double alpha)
{
    setDoubleForKey(alpha, defaultWindowAlphaKey());
}

bool SNUserDefaults::checkSpelling() const
{
    return boolForKey(checkSpellingKey());
}

void SNUserDefaults::setCheckSpelling(bool check)
{
    setBoolForKey(check, checkSpellingKey());
}

bool SNUserDefaults::autoCorrectSpelling() const
{
    return boolForKey(autoCorrectSpellingKey());
}

void SNUserDefaults::setAutoCorrectSpelling(bool correct)
{
    setBoolForKey(correct, autoCorrectSpellingKey());
}

bool SNUserDefaults::suppressQuitAlert()
{
    // QSettings objects on one file share their data within the process, so this sees what
    // the shared instance has written and the other way round.
    const QSettings store(standardStorePath(), QSettings::IniFormat);
    return toBool(store.value(suppressQuitAlertKey()));
}

void SNUserDefaults::setSuppressQuitAlert(bool suppress)
{
    QSettings store(standardStorePath(), QSettings::IniFormat);
    store.setValue(suppressQuitAlertKey(), suppress);
    store.sync();
}
