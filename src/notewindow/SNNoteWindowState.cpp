#include "notewindow/SNNoteWindowState.h"

#include "notes/SNStickyNote.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNStickyWindow.h"
#include "notes/SNWindowFrameString.h"
#include "notewindow/SNWindowLevel.h"
#include "notewindow/SNWindowPlacement.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSignalBlocker>

#include <cmath>

namespace {

// Where the next window without a stored frame goes; each one a step further.
QPoint nextCascadePoint(const QSize &windowSize)
{
    static constexpr int cascadeStep = 24;
    static const QPoint firstOffset(80, 80);
    static QPoint point;
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    point
        = point.isNull() ? area.topLeft() + firstOffset : point + QPoint(cascadeStep, cascadeStep);
    if (!area.contains(QRect(point, windowSize)))
        point = area.topLeft() + firstOffset;
    return point;
}

} // namespace

SNNoteWindowState::SNNoteWindowState(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
    const std::shared_ptr<SNStickyNote> &note, const SNNoteCollapser &collapser, QObject *parent)
    : QObject(parent), m_window(window), m_ui(ui), m_note(note), m_collapser(collapser)
{
    connect(m_ui.alphaSlider, &QSlider::valueChanged, this, &SNNoteWindowState::alphaDidChange);
}

SNNoteWindowState::~SNNoteWindowState() = default;

QString SNNoteWindowState::frameString() const
{
    return SNWindowFrameString::stringFromRect(m_window->geometry());
}

void SNNoteWindowState::cascadeWindow()
{
    m_window->move(nextCascadePoint(m_window->size()));
}

void SNNoteWindowState::restoreFrame()
{
    std::optional<QRect> frame;
    if (m_note && m_note->isCollapsed())
        frame = SNWindowFrameString::rectFromString(m_note->collapsedWindowFrame());
    if (!frame && m_note)
        frame = SNWindowFrameString::rectFromString(m_note->windowFrame());
    if (frame)
        m_window->setGeometry(SNWindowPlacement::frameOnConnectedScreens(*frame));
    updateWindowLevel();
}

void SNNoteWindowState::restoreAlpha()
{
    if (m_note && m_note->windowAlpha() <= 0.0)
        m_note->setWindowAlpha(1.0);
    const double alpha = m_note ? m_note->windowAlpha() : 1.0;
    m_window->setWindowOpacity(alpha);
    const QSignalBlocker blocker(m_ui.alphaSlider);
    m_ui.alphaSlider->setValue(int(std::lround(alpha * m_ui.alphaSlider->maximum())));
}

bool SNNoteWindowState::frameDiffersFromNote() const
{
    if (!m_note)
        return false;
    const bool collapsed = m_collapser.isCollapsed();
    return (collapsed ? m_note->collapsedWindowFrame() : m_note->windowFrame()) != frameString();
}

void SNNoteWindowState::recordInNote() const
{
    if (m_collapser.isCollapsed())
        m_note->setCollapsedWindowFrame(frameString());
    else
        m_note->setWindowFrame(frameString());
    m_note->setWindowAlpha(sliderAlpha());
}

void SNNoteWindowState::setPinState(qint64 pinState)
{
    if (m_note)
        m_note->setPinState(pinState);
    updateWindowLevel();
    Q_EMIT noteDidChange();
}

void SNNoteWindowState::updateWindowLevel()
{
    SNWindowLevel::applyPinState(m_window, m_note ? m_note->pinState() : 0);
}

double SNNoteWindowState::sliderAlpha() const
{
    return double(m_ui.alphaSlider->value()) / m_ui.alphaSlider->maximum();
}

void SNNoteWindowState::alphaDidChange()
{
    if (m_note)
        m_note->setWindowAlpha(sliderAlpha());
    m_window->setWindowOpacity(sliderAlpha());
    Q_EMIT noteDidChange();
}
