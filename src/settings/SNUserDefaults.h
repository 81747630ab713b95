#pragma once

#include "kit/QWKeyCombo.h"
#include "settings/GVUserDefaults.h"

// The application's settings. Most are served by the generated accessors; the two hot keys and
// the login item keep a copy in a field and have setters of their own, since writing them
// does more than store a value. Change notices carry the property name (the *Key() names).
class SNUserDefaults final : public GVUserDefaults
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNUserDefaults)

public:
    explicit SNUserDefaults(ConstructionKey key);
    ~SNUserDefaults() override;

    static SNUserDefaults &standardUserDefaults();

    // Property names, which are the keys of observers and of the store.
    static QString hotKeyComboKey() { return QStringLiteral("hotKeyCombo"); }
    static QString hotKeyEnabledKey() { return QStringLiteral("hotKeyEnabled"); }
    static QString noteHotKeyComboKey() { return QStringLiteral("noteHotKeyCombo"); }
    static QString startAtLoginKey() { return QStringLiteral("startAtLogin"); }
    static QString hideWindowKey() { return QStringLiteral("hideWindow"); }
    static QString showIconInDockKey() { return QStringLiteral("showIconInDock"); }
    static QString showMenuIconKey() { return QStringLiteral("showMenuIcon"); }
    static QString defaultThemeNameKey() { return QStringLiteral("defaultThemeName"); }
    static QString suppressThemeDeletionAlertKey()
    {
        return QStringLiteral("suppressThemeDeletionAlert");
    }
    static QString defaultWindowAlphaKey() { return QStringLiteral("defaultWindowAlpha"); }
    static QString checkSpellingKey() { return QStringLiteral("checkSpelling"); }
    static QString autoCorrectSpellingKey() { return QStringLiteral("autoCorrectSpelling"); }
    static QString syncFolderKey() { return QStringLiteral("syncFolder"); }
    static QString deviceNameKey() { return QStringLiteral("deviceName"); }
    // Where the two key combinations are persisted.
    static QString hotKeyCodeKey() { return QStringLiteral("hotKeyCode"); }
    static QString hotKeyModifierKey() { return QStringLiteral("hotKeyModifier"); }
    static QString noteHotKeyCodeKey() { return QStringLiteral("noteHotKeyCode"); }
    static QString noteHotKeyModifierKey() { return QStringLiteral("noteHotKeyModifier"); }
    // The preferences window's "continue to run in the background" alert; lives in the
    // standard store, outside the typed settings.
    static QString deviceIdentifierKey() { return QStringLiteral("deviceIdentifier"); }
    static QString suppressQuitAlertKey() { return QStringLiteral("SuppressQuitAlert"); }

    // The setters write, flush at once and announce the combination's key.
    QWKeyCombo hotKeyCombo() const { return m_hotKeyCombo; }
    void setHotKeyCombo(const QWKeyCombo &combo);
    QWKeyCombo noteHotKeyCombo() const { return m_noteHotKeyCombo; }
    void setNoteHotKeyCombo(const QWKeyCombo &combo);

    // Setting a new value also adds or removes the login item; the value is kept even when
    // that fails. Setting the current value touches nothing (observers still hear of it).
    bool startAtLogin() const { return m_startAtLogin; }
    void setStartAtLogin(bool startAtLogin);

    bool hotKeyEnabled() const;
    void setHotKeyEnabled(bool enabled);
    bool hideWindow() const;
    void setHideWindow(bool hide);
    bool showIconInDock() const;
    void setShowIconInDock(bool show);
    bool showMenuIcon() const;
    void setShowMenuIcon(bool show);
    QString defaultThemeName() const;
    void setDefaultThemeName(const QString &name);
    bool suppressThemeDeletionAlert() const;
    void setSuppressThemeDeletionAlert(bool suppress);
    double defaultWindowAlpha() const;
    void setDefaultWindowAlpha(double alpha);
    bool checkSpelling() const;
    void setCheckSpelling(bool check);
    bool autoCorrectSpelling() const;
    void setAutoCorrectSpelling(bool correct);
    // The folder that a sync tool keeps in step between computers; empty keeps the notes on
    // this computer alone.
    QString syncFolder() const;
    void setSyncFolder(const QString &folder);
    // What the other computers call this one: the host name until a name is given. Setting
    // it to the empty string goes back to the host name.
    QString deviceName() const;
    void setDeviceName(const QString &name);

    // This computer's id in the notes' versions: made on first use and kept in these local
    // settings, never with the notes, so that a copied notes folder does not copy it.
    QString deviceIdentifier();
    // A new id in place of the old, for a computer whose id turned out to be another's (a home
    // folder copied from one computer to the next copies its settings).
    QString makeNewDeviceIdentifier();

    // "SuppressQuitAlert", read and written straight in the standard store; the setter flushes.
    static bool suppressQuitAlert();
    static void setSuppressQuitAlert(bool suppress);

protected:
    QList<Property> declaredProperties() const override;
    QVariantMap setupDefaults() const override;
    void populateProperties() override;

private:
    void writeKeyCombo(const QWKeyCombo &combo, const QString &propertyKey, const QString &codeKey,
        const QString &modifierKey);
    QWKeyCombo storedKeyCombo(const QString &codeKey, const QString &modifierKey) const;

    QWKeyCombo m_hotKeyCombo;
    QWKeyCombo m_noteHotKeyCombo;
    bool m_startAtLogin = false;
};
