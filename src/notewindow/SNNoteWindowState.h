#pragma once

#include <QObject>

#include <memory>

class SNNoteCollapser;
class SNStickyNote;
class SNStickyWindow;

namespace Ui {
class SNStickyNoteWindowController;
}

// Where a note window stands and how it shows: its frame, its pin state and its transparency.
// They come from the note as the window loads and go back into it as the user changes them.
class SNNoteWindowState final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteWindowState)

public:
    // The note is read on each use, as the owner may be handed another one; a collapsed note
    // keeps its frame apart from the expanded one.
    SNNoteWindowState(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
        const std::shared_ptr<SNStickyNote> &note, const SNNoteCollapser &collapser,
        QObject *parent = nullptr);
    ~SNNoteWindowState() override;

    // The window's frame as a note stores it.
    QString frameString() const;
    // For a window without a stored frame: a step down and right of the one placed before it.
    void cascadeWindow();
    // The stored frame, moved onto a connected screen when none shows it, and the pin state.
    void restoreFrame();
    // The stored transparency on the window and the slider; a stored 0 opens opaque.
    void restoreAlpha();
    // Whether the window stands elsewhere than the note has it: a move worth a save, unlike
    // the move to where it already was as it opens.
    bool frameDiffersFromNote() const;
    // Copies the frame and the transparency into the note.
    void recordInNote() const;

    void setPinState(qint64 pinState);
    void updateWindowLevel();
    void alphaDidChange();

Q_SIGNALS:
    // The user changed the pin state or the transparency; the note has the change.
    void noteDidChange();

private:
    double sliderAlpha() const;

    SNStickyWindow *m_window;
    Ui::SNStickyNoteWindowController &m_ui;
    const std::shared_ptr<SNStickyNote> &m_note;
    const SNNoteCollapser &m_collapser;
};
