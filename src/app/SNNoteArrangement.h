#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QAction;
class QWWindowMasonry;
class SNStickyNoteWindowController;

// "Arrange Notes" tiles the visible notes over the screen; "Put Notes Back" returns them to
// where they were, and is enabled only while an arrangement stands. Arranging again tiles the
// same notes again, so that putting back still returns them to their frames from before the
// first arrangement. The notes save their new frames as after any move.
class SNNoteArrangement final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteArrangement)

public:
    // Gives the note windows there are, shown or not.
    using NoteWindows = std::function<QList<SNStickyNoteWindowController *>()>;

    // The two items run the two commands.
    SNNoteArrangement(NoteWindows noteWindows, QAction *arrangeItem, QAction *putBackItem,
        QObject *parent = nullptr);
    ~SNNoteArrangement() override;

    void arrangeNotes();
    void putNotesBack();
    bool isArranged() const { return m_masonry != nullptr; }

private:
    void setArranged(std::unique_ptr<QWWindowMasonry> masonry);

    NoteWindows m_noteWindows;
    QPointer<QAction> m_putBackItem;
    std::unique_ptr<QWWindowMasonry> m_masonry;
};
