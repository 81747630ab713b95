#include "app/SNNoteArrangement.h"

#include "kit/widgets/QWWindowMasonry.h"
#include "notewindow/SNStickyNoteWindowController.h"

#include <QAction>

SNNoteArrangement::SNNoteArrangement(
    NoteWindows noteWindows, QAction *arrangeItem, QAction *putBackItem, QObject *parent)
    : QObject(parent), m_noteWindows(std::move(noteWindows)), m_putBackItem(putBackItem)
{
    connect(arrangeItem, &QAction::triggered, this, &SNNoteArrangement::arrangeNotes);
    connect(putBackItem, &QAction::triggered, this, &SNNoteArrangement::putNotesBack);
    putBackItem->setEnabled(false);
}

SNNoteArrangement::~SNNoteArrangement() = default;

void SNNoteArrangement::arrangeNotes()
{
    if (m_masonry) {
        m_masonry->layout();
        return;
    }
    QList<QWWindowController *> visible;
    for (SNStickyNoteWindowController *controller : m_noteWindows()) {
        if (controller->isWindowLoaded() && controller->window()->isVisible())
            visible.append(controller);
    }
    if (visible.isEmpty())
        return;
    auto masonry = std::make_unique<QWWindowMasonry>(visible);
    masonry->layout();
    setArranged(std::move(masonry));
}

void SNNoteArrangement::putNotesBack()
{
    if (!m_masonry)
        return;
    m_masonry->restore();
    setArranged(nullptr);
}

void SNNoteArrangement::setArranged(std::unique_ptr<QWWindowMasonry> masonry)
{
    // The masonry's animations belong to the windows: they run on without it.
    m_masonry = std::move(masonry);
    if (m_putBackItem)
        m_putBackItem->setEnabled(m_masonry != nullptr);
}
