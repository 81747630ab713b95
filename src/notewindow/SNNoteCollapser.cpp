#include "notewindow/SNNoteCollapser.h"

#include "notes/SNStickyNote.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTitleBarView.h"
#include "notes/SNWindowFrameString.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QEvent>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QScreen>

SNNoteCollapser::SNNoteCollapser(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
    const std::shared_ptr<SNStickyNote> &note, SaveHooks hooks, QObject *parent)
    : QObject(parent),
      m_window(window),
      m_ui(ui),
      m_note(note),
      m_hooks(std::move(hooks)),
      m_titleBarHeight(ui.titleBarView->maximumHeight()),
      m_designedSize(window->size())
{ }

SNNoteCollapser::~SNNoteCollapser()
{
    stopAnimations();
}

void SNNoteCollapser::stopAnimations()
{
    if (m_frameAnimation)
        m_frameAnimation->stop();
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
}

QString SNNoteCollapser::frameString() const
{
    return SNWindowFrameString::stringFromRect(m_window->geometry());
}

int SNNoteCollapser::collapsedHeight() const
{
    // The title bar's height as designed: it is that high whenever the toolbar shows.
    return m_titleBarHeight;
}

void SNNoteCollapser::toggleCollapsedWindow()
{
    if (m_isCollapsed)
        uncollapseWindowAnimated(true);
    else
        collapseWindowAnimated(true);
}

void SNNoteCollapser::lockHeightToTitleBar(bool locked)
{
    if (locked) {
        m_window->setMinimumHeight(collapsedHeight());
        m_window->setMaximumHeight(collapsedHeight());
    } else {
        m_window->setMaximumHeight(QWIDGETSIZE_MAX);
        m_window->setMinimumHeight(minimumExpandedHeight);
    }
}

void SNNoteCollapser::animateFrame(const QRect &frame, std::function<void()> completion)
{
    if (m_frameAnimation)
        m_frameAnimation->stop();
    auto *animation = new QPropertyAnimation(m_window, "geometry", this);
    animation->setDuration(frameAnimationDuration);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    animation->setEndValue(frame);
    connect(animation, &QPropertyAnimation::finished, this, std::move(completion));
    m_frameAnimation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void SNNoteCollapser::collapseWindowAnimated(bool animate)
{
    m_ui.collapseMenuItem->setText(tr("Expand Window"));
    m_isCollapsed = true;
    m_note->setIsCollapsed(true);
    m_ui.textView->setReadOnly(true);
    m_ui.wordCountContainerView->hide();
    m_ui.collapsedTitleLabel->show();

    // Keeps the top edge: y grows downwards, so only the height changes.
    QRect target = m_window->geometry();
    target.setHeight(collapsedHeight());

    if (animate) {
        m_window->setMinimumHeight(collapsedHeight());
        animateFrame(target, [this] {
            lockHeightToTitleBar(true);
            m_note->setCollapsedWindowFrame(frameString());
            m_hooks.saveAfterDelay();
        });
        return;
    }
    lockHeightToTitleBar(true);
    m_window->setGeometry(target);
    m_hooks.saveAfterDelay();
}

void SNNoteCollapser::uncollapseWindowAnimated(bool animate)
{
    m_ui.collapseMenuItem->setText(tr("Collapse Window"));
    m_isCollapsed = false;
    m_note->setIsCollapsed(false);
    m_ui.textView->setReadOnly(false);
    m_ui.wordCountContainerView->show();
    m_ui.collapsedTitleLabel->hide();

    const std::optional<QRect> stored = SNWindowFrameString::rectFromString(m_note->windowFrame());
    m_window->setMaximumHeight(QWIDGETSIZE_MAX);

    if (!animate) {
        // Back exactly where the note was stored.
        QRect frame = stored.value_or(QRect(m_window->pos(), m_designedSize));
        lockHeightToTitleBar(false);
        m_window->setGeometry(frame);
        m_hooks.saveAfterDelay();
        return;
    }

    // Grows downwards from where the collapsed note stands now, keeping its width.
    QRect frame = m_window->geometry();
    frame.setHeight(stored ? stored->height() : m_designedSize.height());
    if (const QScreen *screen = m_window->screen()) {
        const QRect screenFrame = screen->geometry();
        if (frame.bottom() > screenFrame.bottom())
            frame.moveBottom(screenFrame.bottom());
    }
    animateFrame(frame, [this] {
        lockHeightToTitleBar(false);
        m_hooks.save();
    });
}

// MARK: - Hover toolbar

void SNNoteCollapser::addTrackingArea()
{
    if (m_trackingArea)
        return;
    m_ui.contentView->installEventFilter(this);
    m_trackingArea = true;
}

void SNNoteCollapser::removeTrackingArea()
{
    if (!m_trackingArea)
        return;
    m_ui.contentView->removeEventFilter(this);
    m_trackingArea = false;
}

bool SNNoteCollapser::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui.contentView) {
        if (event->type() == QEvent::Enter)
            mouseEntered();
        else if (event->type() == QEvent::Leave)
            mouseExited();
    }
    return QObject::eventFilter(watched, event);
}

void SNNoteCollapser::setUpToolbar()
{
    if (m_alwaysShowToolbar) {
        showToolbar();
        return;
    }
    m_ui.buttonContainerView->hide();
    setToolbarOpacity(0);
}

QGraphicsOpacityEffect *SNNoteCollapser::toolbarOpacityEffect()
{
    QWidget *container = m_ui.buttonContainerView;
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(container->graphicsEffect());
    if (!effect) {
        effect = new QGraphicsOpacityEffect(container);
        effect->setOpacity(container->isVisible() ? 1.0 : 0.0);
        container->setGraphicsEffect(effect);
    }
    return effect;
}

void SNNoteCollapser::setToolbarOpacity(qreal opacity)
{
    if (opacity >= 1.0) {
        // Fully shown draws best without an effect in the way.
        m_ui.buttonContainerView->setGraphicsEffect(nullptr);
        return;
    }
    toolbarOpacityEffect()->setOpacity(opacity);
}

void SNNoteCollapser::showToolbar()
{
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    m_ui.buttonContainerView->show();
    setToolbarOpacity(1.0);
    m_ui.titleBarView->setMaximumHeight(collapsedHeight());
    m_ui.titleBarView->setMinimumHeight(collapsedHeight());
}

void SNNoteCollapser::hideToolbar()
{
    if (m_alwaysShowToolbar)
        return;
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    m_ui.buttonContainerView->hide();
    setToolbarOpacity(0);
    m_ui.titleBarView->setMinimumHeight(0);
    m_ui.titleBarView->setMaximumHeight(0);
}

void SNNoteCollapser::mouseEntered()
{
    if (QGuiApplication::applicationState() != Qt::ApplicationActive || m_alwaysShowToolbar)
        return;
    animateToolbar(true);
}

void SNNoteCollapser::mouseExited()
{
    if (m_alwaysShowToolbar)
        return;
    animateToolbar(false);
}

void SNNoteCollapser::animateToolbar(bool shown)
{
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    QGraphicsOpacityEffect *effect = toolbarOpacityEffect();
    // Shown from the start; fading out leaves it unhidden at no opacity.
    m_ui.buttonContainerView->show();
    m_ui.titleBarView->setMinimumHeight(0);

    auto *group = new QParallelAnimationGroup(this);
    auto *fade = new QPropertyAnimation(effect, "opacity");
    fade->setDuration(toolbarAnimationDuration);
    fade->setEndValue(shown ? 1.0 : 0.0);
    group->addAnimation(fade);
    auto *slide = new QPropertyAnimation(m_ui.titleBarView, "maximumHeight");
    slide->setDuration(toolbarAnimationDuration);
    slide->setEndValue(shown ? collapsedHeight() : 0);
    group->addAnimation(slide);
    if (shown)
        connect(group, &QAbstractAnimation::finished, this, [this] { showToolbar(); });
    m_toolbarAnimation = group;
    group->start(QAbstractAnimation::DeleteWhenStopped);
}
