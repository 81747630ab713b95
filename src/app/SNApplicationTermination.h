#pragma once

#include <QObject>

class SNNoteWindowSet;
class SNStickyNoteManager;

// How the program ends. Qt closes every window before it quits, and closing a note window
// deletes its note unless the note knows the program is ending; so whoever asks to quit, the
// other windows are asked first (any may refuse, and so cancel the quit), and only then are
// the notes told and saved, once. A termination signal asks nobody.
class SNApplicationTermination final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNApplicationTermination)

public:
    // Watches the application's quit requests from now on.
    SNApplicationTermination(
        SNNoteWindowSet &notes, SNStickyNoteManager &store, QObject *parent = nullptr);
    ~SNApplicationTermination() override;

    // Whether the program may end: false when a window other than the notes refuses to close.
    bool applicationShouldTerminate();
    // Every note flushed and saved; windows closed after this only flush, never delete.
    void applicationWillTerminate();
    // A termination signal (shutdown, kill, closed terminal): nobody is there to answer a
    // window that would refuse, so the program ends at once, every note saved.
    void applicationMustTerminate();
    // The session is ending: every note is saved, but the user may still cancel the logout.
    void commitDataRequest();

    bool isTerminating() const { return m_isTerminating; }

Q_SIGNALS:
    // Windows that ask before they close keep quiet while this is true.
    void terminatingDidChange(bool terminating);

protected:
    // Sees the application's quit request before Qt closes the windows.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setTerminating(bool terminating);
    void saveEveryNote(bool terminating);

    SNNoteWindowSet &m_notes;
    SNStickyNoteManager &m_store;
    bool m_isTerminating = false;
    bool m_didTerminate = false;
};
