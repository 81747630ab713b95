#pragma once

#include <QObject>
#include <QString>

#include <functional>

// One key combination to take from the desktop. The name stays the same from one registration
// of a hot key to the next, so that a desktop which files the keys of programs (a portal) finds
// the user's own choice again; the identifier is new each time.
struct QWHotKeyRequest final
{
    qint64 identifier = -1;
    // A stored key code and an X11 modifier mask.
    qint64 code = -1;
    quint16 modifiers = 0;
    QString name;
    // What the desktop shows for it in its shortcut settings.
    QString description;
};

// Where system-wide key combinations are taken from the rest of the desktop. The hot-key helper
// hands each combination an identifier; the grabber reports presses and releases by it.
class QWHotKeyGrabber : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWHotKeyGrabber)

public:
    using EventHandler = std::function<void(qint64 identifier)>;

    // Which keys reach the program, as the preferences tell the user.
    enum class Reach {
        // The combinations are taken from every window of the desktop.
        Everywhere,
        // The desktop binds them for the program, and its own shortcut settings decide the keys:
        // a recorded combination is only a wish.
        DesktopDecides,
        // Only keys typed into X11 windows arrive (X11 grabs on a Wayland desktop that lets
        // programs bind no shortcuts).
        ProgramWindowsOnly,
    };

    QWHotKeyGrabber() = default;
    ~QWHotKeyGrabber() override;

    // False when the desktop refuses (another program holds the combination, or the key does
    // not exist).
    virtual bool grabKey(const QWHotKeyRequest &request) = 0;
    // Unknown identifiers are ignored.
    virtual void ungrabKeyWithIdentifier(qint64 identifier) = 0;

    virtual Reach reach() const { return Reach::Everywhere; }
    // The keys the desktop reports for the combination of that name, written as it writes them;
    // empty when it reports none, or decides nothing.
    virtual QString desktopTrigger(const QString &name) const;

    void setPressedHandler(EventHandler handler) { m_pressedHandler = std::move(handler); }
    void setReleasedHandler(EventHandler handler) { m_releasedHandler = std::move(handler); }

Q_SIGNALS:
    // The reach or the desktop's triggers changed.
    void reachDidChange();

protected:
    void keyWasPressed(qint64 identifier) const;
    void keyWasReleased(qint64 identifier) const;

private:
    EventHandler m_pressedHandler;
    EventHandler m_releasedHandler;
};
