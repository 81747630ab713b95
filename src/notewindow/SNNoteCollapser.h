#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>

#include <functional>
#include <memory>

class QAbstractAnimation;
class QGraphicsOpacityEffect;
class QRect;
class SNStickyNote;
class SNStickyWindow;

namespace Ui {
class SNStickyNoteWindowController;
}

// Folds a note window up to its title bar and back, animated or at once, and shows or hides the
// toolbar as the pointer comes and goes. The note records whether it is collapsed; its frames
// are saved through the owner's hooks.
class SNNoteCollapser final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteCollapser)

public:
    static constexpr int toolbarAnimationDuration = 200; // milliseconds
    static constexpr int frameAnimationDuration = 200; // milliseconds
    static constexpr int minimumExpandedHeight = 80;

    // What a change of frame asks of the owner: a save after the usual delay, or one now.
    struct SaveHooks
    {
        std::function<void()> saveAfterDelay;
        std::function<void()> save;
    };

    // Made as the window loads, before anything hides the toolbar: the title bar's height then
    // is the height of a collapsed note. The note is read on each use.
    SNNoteCollapser(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
        const std::shared_ptr<SNStickyNote> &note, SaveHooks hooks, QObject *parent = nullptr);
    ~SNNoteCollapser() override;

    bool isCollapsed() const { return m_isCollapsed; }
    int collapsedHeight() const;
    void toggleCollapsedWindow();
    void collapseWindowAnimated(bool animate);
    void uncollapseWindowAnimated(bool animate);
    // Height locked to the title bar while collapsed; free, above a floor, otherwise.
    void lockHeightToTitleBar(bool locked);

    // The toolbar that can show itself only while the pointer is over the note. Inert while
    // alwaysShowToolbar is set, which it always is once the window has loaded.
    bool alwaysShowToolbar() const { return m_alwaysShowToolbar; }
    void setAlwaysShowToolbar(bool show) { m_alwaysShowToolbar = show; }
    // Shown for good, or hidden until the pointer comes.
    void setUpToolbar();
    void addTrackingArea();
    void removeTrackingArea();
    void mouseEntered();
    void mouseExited();
    void showToolbar();
    void hideToolbar();

    // Stops what is running, before the window goes.
    void stopAnimations();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void animateFrame(const QRect &frame, std::function<void()> completion);
    void setToolbarOpacity(qreal opacity);
    QGraphicsOpacityEffect *toolbarOpacityEffect();
    void animateToolbar(bool shown);
    QString frameString() const;

    SNStickyWindow *m_window;
    Ui::SNStickyNoteWindowController &m_ui;
    const std::shared_ptr<SNStickyNote> &m_note;
    SaveHooks m_hooks;
    int m_titleBarHeight = 0;
    QSize m_designedSize;
    bool m_isCollapsed = false;
    bool m_alwaysShowToolbar = false;
    bool m_trackingArea = false;
    QPointer<QAbstractAnimation> m_frameAnimation;
    QPointer<QAbstractAnimation> m_toolbarAnimation;
};
