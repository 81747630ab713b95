#pragma once

#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWWindowController.h"
#include "tagbrowser/SNTagCloudViewDataSource.h"
#include "tagbrowser/SNTagCloudViewDelegate.h"

#include <QList>
#include <QString>

#include <memory>

class QLabel;
class QScrollArea;
class SNTag;
class SNTagCloudView;
class SNTagSearchField;

namespace Ui {
class SNTagManagerWindowController;
}

// The tag browser: a floating, see-through panel with a search field and the cloud of every tag
// under it. The hashtags typed into the field, or the tags clicked in the cloud, pick tags; the
// browser says so (tagsWerePicked), and whoever owns the note windows shows the notes that
// carry them, just under the panel. It does not touch a note window itself: it announces when
// browsing begins and when the notes are to be put back.
//
// It closes on the release of Escape anywhere in the program, on Return, and as soon as it
// stops being the active window. A note window shown without taking the keyboard (one shown
// for a tag) may not take the focus from it.
class SNTagManagerWindowController final : public QWWindowController,
                                           public SNTagCloudViewDataSource,
                                           public SNTagCloudViewDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTagManagerWindowController)

public:
    static QString allNotesShownText(); // "All notes are currently shown"
    static QString addTagsText(); // "Add #tags to your #notes by using the #hashtag"
    // The tallest the content gets; a longer cloud scrolls.
    static constexpr int maximumContentHeight = 350;

    explicit SNTagManagerWindowController(QObject *parent = nullptr);
    ~SNTagManagerWindowController() override;

    // A browser built from its interface file.
    static std::unique_ptr<SNTagManagerWindowController> controller();

    // Whether the program was active when it was asked for the browser; kept, not used.
    bool appWasActive() const { return m_appWasActive; }
    void setAppWasActive(bool active) { m_appWasActive = active; }

    // The parts of the window; they load with it.
    SNTagSearchField *searchField();
    SNTagCloudView *tagCloudView();
    QScrollArea *scrollView();
    QLabel *emptyLabel();
    // A transparent window below the browser, kept for an effect over the desktop; never shown.
    QWidget *overlayWindow() const { return m_overlayWindow.get(); }

    // The tags in the cloud: all tags, sorted, less the picked ones.
    const QList<std::shared_ptr<SNTag>> &tagsArray() const { return m_tagsArray; }
    const QList<std::shared_ptr<SNTag>> &selectedTags() const { return m_selectedTags; }
    void setSelectedTags(const QList<std::shared_ptr<SNTag>> &tags);
    bool isOpen() const { return m_isOpen; }

    // Opens the browser; the notes are hidden (notesWillBeBrowsed).
    void showWindow() override;
    void showMainWindow();
    // Puts the notes back and closes the browser on the next turn of the event loop.
    void close(QObject *sender = nullptr);
    void reloadData();
    // Picks the tags named by the hashtags of the search text and colours them.
    void tokenizeTags();
    // Asks for exactly the notes that carry a picked tag.
    void bringWindowsToFront();
    void controlTextDidChange();
    // True when the command was taken here: the search field's cancel does nothing.
    bool doCommandBySelector(const QString &command);
    void finishedSearching(QObject *sender);
    void windowDidResignKey();
    void updateTagsArray() { }
    void showOverlayWindow() { }

    // SNTagCloudViewDataSource
    qint64 numberOfItemsInTagCloud(SNTagCloudView *view) override;
    // SNTagCloudViewDelegate
    std::shared_ptr<SNTag> tagCloudViewTagForIndex(SNTagCloudView *view, qint64 index) override;
    void tagCloudViewItemWasClickedAtIndex(SNTagCloudView *view, qint64 index) override;

Q_SIGNALS:
    // The browser opens: every note is to hide until tags are picked.
    void notesWillBeBrowsed();
    // Exactly the notes that carry one of these tags are to show, under the browser's window.
    void tagsWerePicked(const QList<std::shared_ptr<SNTag>> &tags, QWidget *browser);
    // The browser closes: the notes are to be put back as they were, unless some were picked.
    void notesShouldBePutBack();

protected:
    std::unique_ptr<QWidget> loadWindow() override;
    void qw_viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void awakeFromNib();
    void setContentSize(const QSize &size);
    void paintBackground();
    void updateMask();
    void fitCloudToScrollView(bool withScrollBar);

    std::unique_ptr<Ui::SNTagManagerWindowController> m_ui;
    std::unique_ptr<QWidget> m_overlayWindow;
    QWNotificationCenter::Observation m_tagsObservation;
    // The key-up monitor of the whole program, while the browser lives.
    std::unique_ptr<QObject> m_localEventMonitor;
    bool m_appWasActive = false;
    bool m_isOpen = false;
    bool m_isClosing = false;

    QList<std::shared_ptr<SNTag>> m_tagsArray;
    QList<std::shared_ptr<SNTag>> m_selectedTags;
};
