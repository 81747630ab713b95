#pragma once

#include <QObject>
#include <QString>

// How the desktop takes the program's two hot keys, for the preferences to say: grabbed from
// every window, bound by the desktop (whose settings then decide the keys), or reaching only
// the program's own windows; with the keys the desktop reports and the commands a user can give
// the desktop's own shortcut settings instead. Whoever registers the hot keys keeps it up to
// date.
class SNHotKeyState final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNHotKeyState)

public:
    enum class Route { Grabbed, DesktopDecides, ProgramWindowsOnly };

    struct Shortcut
    {
        // The keys as the desktop writes them; empty when it reports none.
        QString desktopTrigger;
        // A command line that does the same: "vellumo --new-note".
        QString command;

        friend bool operator==(const Shortcut &, const Shortcut &) = default;
    };

    explicit SNHotKeyState(QObject *parent = nullptr);
    ~SNHotKeyState() override;

    Route route() const { return m_route; }
    const Shortcut &showTags() const { return m_showTags; }
    const Shortcut &newNote() const { return m_newNote; }

    void update(Route route, const Shortcut &showTags, const Shortcut &newNote);

Q_SIGNALS:
    void changed();

private:
    Route m_route = Route::Grabbed;
    Shortcut m_showTags;
    Shortcut m_newNote;
};
