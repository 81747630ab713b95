#pragma once

#include "kit/QWKeyCombo.h"

#include <QHash>

#include <functional>
#include <memory>

class QWHotKeyGrabber;

// Registers system-wide key combinations and reports their presses and releases by an
// identifier. Identifiers count from 1, one per successful registration, and are never reused;
// -1 means "not registered". Main thread only.
class QWHotKeyHelper final
{
    Q_DISABLE_COPY_MOVE(QWHotKeyHelper)

public:
    using Block = std::function<void(qint64 identifier)>;

    // Without a grabber (no X server) every registration fails.
    explicit QWHotKeyHelper(std::unique_ptr<QWHotKeyGrabber> grabber);
    // Releases every registration still held.
    ~QWHotKeyHelper();

    // Over the desktop the program runs on, created on first use: X11 grabs, or on a Wayland
    // session the desktop's global shortcuts.
    static QWHotKeyHelper &sharedHelper();

    // Null without a grabber.
    QWHotKeyGrabber *grabber() const { return m_grabber.get(); }

    // The new identifier, or -1 when the combination is empty (no grab is tried) or the
    // desktop refuses it. The name and description are what a desktop that binds the keys for
    // the program files and shows them under; the name stays the same from one registration
    // of a hot key to the next.
    qint64 registerHotKey(
        const QWKeyCombo &combo, const QString &name = {}, const QString &description = {});
    void unregisterHotkeyWithID(qint64 identifier);

    // A stored modifier mask as the X server spells it.
    static quint16 translateModifierFlags(quint64 flags);

    void hotkeyWasPressedWithID(qint64 identifier);
    void hotkeyWasReleasedWithID(qint64 identifier);

    const Block &pressedBlock() const { return m_pressedBlock; }
    void setPressedBlock(Block block) { m_pressedBlock = std::move(block); }
    const Block &releasedBlock() const { return m_releasedBlock; }
    void setReleasedBlock(Block block) { m_releasedBlock = std::move(block); }

    // The registrations held, by identifier.
    const QHash<qint64, QWKeyCombo> &carbonHotkeys() const { return m_carbonHotkeys; }

private:
    void registerHandlers();

    std::unique_ptr<QWHotKeyGrabber> m_grabber;
    Block m_pressedBlock;
    Block m_releasedBlock;
    QHash<qint64, QWKeyCombo> m_carbonHotkeys;
    qint64 m_nextIdentifier = 1;
};
