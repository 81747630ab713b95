#pragma once

#include "kit/QWColor.h"
#include "kit/widgets/QWWindowController.h"
#include "notewindow/SNStickyWindowDelegate.h"
#include "notewindow/SNTextViewDelegate.h"

#include <QPointer>
#include <QRect>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QAbstractAnimation;
class QAbstractScrollArea;
class QAction;
class QColorDialog;
class QGraphicsOpacityEffect;
class QLabel;
class QMenu;
class QSlider;
class QToolButton;
class QWDebouncer;
class QWGradientView;
class QWidgetAction;
class QWAttributedString;
class SNModalPresenter;
class SNStickyNote;
class SNStickyWindow;
class SNTextView;
class SNTag;
class SNTheme;
class SNTitleBarView;

namespace Ui {
class SNStickyNoteWindowController;
}

// Shows one note in its own window and edits it in place: builds the window from
// SNStickyNoteWindowController.ui, restores the stored frame, saves edits half a second after
// the last one, pins, collapses and fades the window, draws the note in its theme, and decides
// what closing means. Closing a note deletes it, after offering to export what it holds as RTF;
// at quit (isTerminating) closing only copies the editor's state into the note.
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
    static constexpr double exportDelay = 0.2;
    static constexpr int toolbarAnimationDuration = 200; // milliseconds
    static constexpr int frameAnimationDuration = 200; // milliseconds
    static constexpr int minimumExpandedHeight = 80;
    static constexpr double tokenizeDelay = 0.5;

    // A stretch of the text; a location of -1 is no stretch at all.
    struct TextRange
    {
        qsizetype location = -1;
        qsizetype length = 0;
    };
    static constexpr qsizetype notFound = -1;

    // Undo step names, as the Undo item shows them.
    static QString strikethroughActionName(); // "Strikethrough"
    static QString changeColorActionName(); // "Change Color"

    explicit SNStickyNoteWindowController(QObject *parent = nullptr);
    ~SNStickyNoteWindowController() override;

    // A controller for the note, which learns of it as its window controller. The window loads on
    // first use. The caller owns the controller until it hands it to the window manager.
    static SNStickyNoteWindowController *controllerWithNote(
        const std::shared_ptr<SNStickyNote> &note);

    const std::shared_ptr<SNStickyNote> &note() const { return m_note; }
    void setNote(const std::shared_ptr<SNStickyNote> &note);

    bool isTerminating() const { return m_isTerminating; }
    void setIsTerminating(bool terminating) { m_isTerminating = terminating; }
    bool wasEdited() const { return m_wasEdited; }
    bool alwaysShowToolbar() const { return m_alwaysShowToolbar; }
    void setAlwaysShowToolbar(bool show) { m_alwaysShowToolbar = show; }
    bool secretUnlocked() const { return m_secretUnlocked; }
    void setSecretUnlocked(bool unlocked) { m_secretUnlocked = unlocked; }
    bool isCollapsed() const { return m_isCollapsed; }
    // A window that loads without a stored frame is placed a step down and right of the one
    // placed before it. On by default; the application turns it off while it opens stored notes.
    bool shouldCascadeWindows() const { return m_shouldCascadeWindows; }
    void setShouldCascadeWindows(bool cascade) { m_shouldCascadeWindows = cascade; }
    // The theme the text was last put into.
    const std::shared_ptr<SNTheme> &currentTheme() const { return m_currentTheme; }

    // Who asks the user; tests put in their own.
    const std::shared_ptr<SNModalPresenter> &modalPresenter() const { return m_presenter; }
    void setModalPresenter(std::shared_ptr<SNModalPresenter> presenter);

    // The window and its parts; null until the window has loaded.
    SNStickyWindow *stickyWindow() const { return m_window; }
    QWGradientView *contentView() const;
    SNTitleBarView *titleBarView() const;
    QWidget *noteContainerView() const;
    QAbstractScrollArea *scrollView() const;
    QWidget *buttonContainerView() const;
    QWidget *wordCountContainerView() const;
    QLabel *collapsedTitleLabel() const;
    QLabel *wordCountLabel() const;
    QToolButton *closeButton() const;
    QToolButton *pinButton() const;
    QToolButton *settingsButton() const;
    QToolButton *tagButton() const;
    SNTextView *textView() const;
    QMenu *pinMenu() const { return m_pinMenu; }
    QMenu *themeMenu() const { return m_themeMenu; }
    QMenu *settingsMenu() const { return m_settingsMenu; }
    QMenu *tagsMenu() const { return m_tagsMenu; }
    // The program's own commands, in the settings menu above Quit, so that a desktop without a
    // tray still reaches them all. The menu stays its owner's, and may be shared among notes.
    void setApplicationMenu(QMenu *menu);
    QAction *collapseMenuItem() const;
    QAction *filterTagsMenuItem() const;
    QWidgetAction *alphaMenuItem() const { return m_alphaMenuItem; }
    QSlider *alphaSlider() const;

    // Saving.
    void saveAfterDelay();
    void flushNote();
    void save();

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
    // Export, then remove the note and close its window.
    void saveNote();
    void saveNoteShouldRemove(bool shouldRemove);
    // Shows the notes that carry the tag named by the item's data, hides the others.
    void showTagsWithItem(QAction *item);

    // Pin state and transparency.
    void windowLevelDidChange(QAction *sender);
    void updateWindowLevel();
    void alphaDidChange();

    // Collapsing to the title bar.
    int collapsedHeight() const;
    void toggleCollapsedWindow();
    void collapseWindowAnimated(bool animate);
    void uncollapseWindowAnimated(bool animate);

    // The toolbar that can show itself only while the pointer is over the note. Inert while
    // alwaysShowToolbar is set, which it always is.
    void addTrackingArea();
    void mouseEntered();
    void mouseExited();
    void showToolbar();
    void hideToolbar();

    // Theme.
    void updateTheme();
    void updateThemeMenu();
    void didChangeTheme(QAction *sender);
    void themesDidChange();

    // Text: tags, title, counter and spelling follow every edit.
    void textDidChange();
    void tokenizeTagsAfterDelay();
    void tokenizeTags();
    void clearOldTags();
    static bool stringIsValidTag(const QString &string);
    void updateTitle();
    void updateWordCount();
    void updateSpellChecking();
    void rainbowize();

    // Formatting commands. A sender's state says whether its format is on now (see
    // formattingItemState); without a sender it is read from the text.
    void toggleBold(QAction *sender);
    void toggleItalic(QAction *sender);
    void toggleUnderline(QAction *sender);
    Q_INVOKABLE void toggleStrikethrough(QObject *sender);
    void changeColorFromMenuItem(QAction *sender);
    void pastePlainText(QObject *sender);
    void toggleCount(QObject *sender);
    void strikethroughWithRange(bool struckThrough, TextRange range);
    void changeColorWithRange(const std::optional<QWColor> &color, TextRange range);
    // A colour dialog that colours the selection of the moment it was opened.
    void orderFrontColorPanel(QObject *sender);
    QColorDialog *colorPanel() const;
    TextRange selectedRange() const;
    static bool formattingItemState(const QAction *item);

    // The menu builders of the right-click menu.
    void addPasteAsPlainTextItemToMenuWithAttributes(
        QMenu *menu, const QTextCharFormat &attributes);
    void addColorOptionsToMenuWithAttributes(QMenu *menu, const QTextCharFormat &attributes);
    void addFormattingOptionsToMenuWithAttributes(QMenu *menu, const QTextCharFormat &attributes);
    void addMakeListItemToMenuWithAttributesSelectedRanges(
        QMenu *menu, const QTextCharFormat &attributes, TextRange selectedRange);

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

protected:
    std::unique_ptr<QWidget> loadWindow() override;
    void qw_viewDidLoad() override;
    void windowDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildMenus();
    void connectCommands();
    void cascadeWindow();
    void subscribeToNotifications();
    void observeSpellingSettings();
    bool noteHasText() const;
    QTextCharFormat formatAtIndex(qsizetype index) const;
    // Changes the format of every fragment of the range through `edit`; an empty range changes
    // what is typed next.
    void editFormatInRange(TextRange range, const std::function<void(QTextCharFormat &)> &edit);
    // Height locked to the title bar while collapsed; free, above a floor, otherwise.
    void lockHeightToTitleBar(bool locked);
    void animateFrame(const QRect &frame, std::function<void()> completion);
    void setToolbarOpacity(qreal opacity);
    QGraphicsOpacityEffect *toolbarOpacityEffect();
    void animateToolbar(bool shown);
    // The editor's text with the theme's font and colour where it has none of its own.
    QWAttributedString storedString() const;
    bool writeRtfToPath(const QString &path) const;
    void showExportFailure();
    void removeTrackingArea();
    void detachFromWindow();

    // State flags.
    bool m_isTerminating = false;
    bool m_wasEdited = false;
    bool m_alwaysShowToolbar = false;
    bool m_secretUnlocked = false;
    bool m_isCollapsed = false;
    bool m_shouldCascadeWindows = true;
    bool m_trackingArea = false;

    std::shared_ptr<SNStickyNote> m_note;
    std::shared_ptr<SNTheme> m_currentTheme;
    std::shared_ptr<SNModalPresenter> m_presenter;

    std::unique_ptr<Ui::SNStickyNoteWindowController> m_ui;
    SNStickyWindow *m_window = nullptr; // owned by the base class
    int m_titleBarHeight = 0;
    QSize m_designedSize;
    QMenu *m_pinMenu = nullptr;
    QMenu *m_themeMenu = nullptr;
    QMenu *m_settingsMenu = nullptr;
    QMenu *m_tagsMenu = nullptr;
    QWidgetAction *m_alphaMenuItem = nullptr;
    QPointer<QMenu> m_applicationMenu;
    QAction *m_alphaMenuItemSuccessor = nullptr;

    std::unique_ptr<QWDebouncer> m_saveDelayTimer;
    std::unique_ptr<QWDebouncer> m_exportDelayTimer;
    std::unique_ptr<QWDebouncer> m_tokenizeDelayTimer;
    QPointer<QColorDialog> m_colorPanel;
    QPointer<QAbstractAnimation> m_frameAnimation;
    QPointer<QAbstractAnimation> m_toolbarAnimation;
};
