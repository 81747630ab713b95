#pragma once

#include "kit/widgets/QWWindowController.h"
#include "notewindow/SNStickyWindowDelegate.h"
#include "notewindow/SNTextViewDelegate.h"

#include <QPointer>
#include <QString>

#include <memory>

class QAction;
class QMenu;
class QWDebouncer;
class QWAttributedString;
class SNModalPresenter;
class SNNoteCollapser;
class SNNoteExporter;
class SNNoteMenus;
class SNNoteTextFormatter;
class SNNoteTextWatcher;
class SNNoteThemer;
class SNNoteWindowState;
class SNStickyNote;
class SNStickyNoteManager;
class SNStickyWindow;
class SNTextView;
class SNTag;
class SNTheme;

namespace Ui {
class SNStickyNoteWindowController;
}

// Shows one note in its own window and edits it in place: builds the window from
// SNStickyNoteWindowController.ui, hands edits to the store half a second after the last one,
// and decides what closing means. Closing a note deletes it, after offering to export what it
// holds as RTF; at quit (isTerminating) closing only copies the editor's state into the note.
// Formatting, export, collapsing, the menus, what follows the text, the theme and the window's
// frame, pin state and transparency are jobs of their own, wired here.
class SNStickyNoteWindowController final : public QWWindowController,
                                           public SNStickyWindowDelegate,
                                           public SNTextViewDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNStickyNoteWindowController)

public:
    // Posted with no sender, for the application controller.
    static const QString showTagManagerNotification; // "SNShowTagManager"
    static const QString showHelpNotification; // "Notification.showHelp"
    static const QString rateAppNotification; // "Notification.rateApp"
    static const QString joinMailingListNotification; // "Notification.joinMailingList"
    static const QString openPreferencesNotification; // "Notification.openPreferences"

    static constexpr double saveDelay = 0.5;

    // The store is told of every change to the note, and of its deletion.
    explicit SNStickyNoteWindowController(SNStickyNoteManager &store, QObject *parent = nullptr);
    ~SNStickyNoteWindowController() override;

    // A controller for the note; the window loads on first use. The caller owns the controller
    // until it hands it to the window manager.
    static SNStickyNoteWindowController *controllerWithNote(
        const std::shared_ptr<SNStickyNote> &note, SNStickyNoteManager &store);

    const std::shared_ptr<SNStickyNote> &note() const { return m_note; }
    void setNote(const std::shared_ptr<SNStickyNote> &note);

    bool isTerminating() const { return m_isTerminating; }
    void setIsTerminating(bool terminating) { m_isTerminating = terminating; }
    bool wasEdited() const { return m_wasEdited; }
    bool secretUnlocked() const { return m_secretUnlocked; }
    void setSecretUnlocked(bool unlocked) { m_secretUnlocked = unlocked; }
    // A window that loads without a stored frame is placed a step down and right of the one
    // placed before it. On by default; the application turns it off while it opens stored notes.
    bool shouldCascadeWindows() const { return m_shouldCascadeWindows; }
    void setShouldCascadeWindows(bool cascade) { m_shouldCascadeWindows = cascade; }
    // The theme the text was last put into.
    const std::shared_ptr<SNTheme> &currentTheme() const { return m_currentTheme; }

    // Who asks the user; tests put in their own.
    const std::shared_ptr<SNModalPresenter> &modalPresenter() const { return m_presenter; }
    void setModalPresenter(std::shared_ptr<SNModalPresenter> presenter);

    // The jobs of the window; null until it has loaded.
    SNNoteTextFormatter *textFormatter() const { return m_textFormatter.get(); }
    SNNoteExporter *exporter() const { return m_exporter.get(); }
    SNNoteCollapser *collapser() const { return m_collapser.get(); }
    SNNoteMenus *menus() const { return m_menus.get(); }
    SNNoteTextWatcher *textWatcher() const { return m_textWatcher.get(); }
    SNNoteWindowState *windowState() const { return m_windowState.get(); }

    // The window and the parts others reach; null until the window has loaded. The other parts
    // bear their names in SNStickyNoteWindowController.ui.
    SNStickyWindow *stickyWindow() const { return m_window; }
    SNTextView *textView() const;
    QMenu *settingsMenu() const;
    // The program's own commands, in the settings menu above Quit, so that a desktop without a
    // tray still reaches them all. The menu stays its owner's, and may be shared among notes.
    void setApplicationMenu(QMenu *menu);

    // Saving.
    void saveAfterDelay();
    // Copies the window's state into the note: the text only when it was edited since.
    void flushNote();
    void save();
    // The note changed on another computer: the window shows its text and look, and the
    // cursor of whoever types here stays where it was.
    void noteDidMerge();

    // Set-up, run once as the window loads.
    void configureWindow();
    void updateNoteUI();
    void updateUI();

    // Commands of the buttons and menus.
    void close();
    void showPinMenu();
    void showSettingsMenu();
    void showTags();
    void showHelp();
    void rateApp();
    void showMailingList();
    void openPreferences();
    void quit();
    // Export; the note stays.
    void saveNote(QObject *sender);
    // Asks for the notes that carry the tag named by the item's data (notesWithTagRequested);
    // beeps when there is no such tag.
    void showTagsWithItem(QAction *item);

    // The pin state's level, put back after the tag browser lent the window its own.
    void updateWindowLevel();

    // Theme.
    void updateTheme();
    void didChangeTheme(QAction *sender);
    void themesDidChange();

    // An edit: a save and the text's followers (SNNoteTextWatcher) after their delays.
    void textDidChange();
    void rainbowize();
    // The application's Strikethrough command, found by name when the editor does not answer.
    Q_INVOKABLE void toggleStrikethrough(QObject *sender);

    // SNTextViewDelegate
    QMenu *textViewMenuForEventAtIndex(SNTextView *view, QMenu *proposedMenu, int index) override;
    bool textViewClickedOnLinkAtIndex(SNTextView *view, const QString &link, int index) override;
    QTextCharFormat textViewShouldChangeTypingAttributesToAttributes(SNTextView *view,
        const QTextCharFormat &oldAttributes, const QTextCharFormat &newAttributes) override;

    // SNStickyWindowDelegate
    bool windowShouldClose(SNStickyWindow *window) override;
    void windowWillClose(SNStickyWindow *window) override;
    void windowDidMove(SNStickyWindow *window) override;
    void windowDidResize(SNStickyWindow *window) override;
    QSize windowWillResizeToSize(SNStickyWindow *window, const QSize &size) override;
    void windowDidBecomeMain(SNStickyWindow *window) override;

    // The window's frame as a note stores it.
    QString frameString() const;

Q_SIGNALS:
    // The user asked to see only the notes that carry this tag.
    void notesWithTagRequested(const std::shared_ptr<SNTag> &tag);

protected:
    std::unique_ptr<QWidget> loadWindow() override;
    void qw_viewDidLoad() override;
    void windowDidLoad() override;

private:
    void connectCommands();
    void subscribeToNotifications();
    bool noteHasText() const;
    bool isCollapsed() const;
    // The editor's text with the theme's font and colour where it has none of its own.
    QWAttributedString storedString() const;
    void detachFromWindow();

    // State flags.
    bool m_isTerminating = false;
    bool m_wasEdited = false;
    bool m_textChangedSinceFlush = false;
    bool m_secretUnlocked = false;
    bool m_shouldCascadeWindows = true;

    SNStickyNoteManager &m_store;
    std::shared_ptr<SNStickyNote> m_note;
    std::shared_ptr<SNTheme> m_currentTheme;
    std::shared_ptr<SNModalPresenter> m_presenter;

    std::unique_ptr<Ui::SNStickyNoteWindowController> m_ui;
    SNStickyWindow *m_window = nullptr; // owned by the base class
    QPointer<QMenu> m_applicationMenu;

    std::unique_ptr<QWDebouncer> m_saveDelayTimer;
    std::unique_ptr<SNNoteTextFormatter> m_textFormatter;
    std::unique_ptr<SNNoteExporter> m_exporter;
    std::unique_ptr<SNNoteCollapser> m_collapser;
    std::unique_ptr<SNNoteMenus> m_menus;
    std::unique_ptr<SNNoteTextWatcher> m_textWatcher;
    std::unique_ptr<SNNoteThemer> m_themer;
    std::unique_ptr<SNNoteWindowState> m_windowState;
};
