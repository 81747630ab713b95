#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QWAttributedString;
class QWDebouncer;
class QWidget;
class SNModalPresenter;
class SNStickyNote;
class SNStickyNoteManager;

// Exports a note as RTF: asks whether to export before a note with text is deleted, runs the
// save panel, writes the file and says so when it could not. An export that replaces the note
// removes it from the store and hands the window back to its owner to close.
class SNNoteExporter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteExporter)

public:
    static constexpr double exportDelay = 0.2;

    // The note and presenter are read on each use, as their owner may be handed others;
    // storedText gives the text as the note would store it.
    SNNoteExporter(QWidget *window, const std::shared_ptr<SNStickyNote> &note,
        SNStickyNoteManager &store, const std::shared_ptr<SNModalPresenter> &presenter,
        std::function<QWAttributedString()> storedText, QObject *parent = nullptr);
    ~SNNoteExporter() override;

    // Called once an export has removed the note: the window is to close without removing it
    // again.
    void setNoteWasRemovedHandler(std::function<void()> handler);

    // The question before a note with text is deleted. False keeps the window: the user
    // cancelled, or chose to export, which opens the save panel once the question has gone.
    bool shouldCloseAfterExportQuestion();

    // Export; the note stays.
    void saveNote(QObject *sender);
    // Export, then remove the note and close its window.
    void saveNote();
    void saveNoteShouldRemove(bool shouldRemove);

private:
    // The note's text as an RTF file; false when it could not be written whole.
    bool writeRtfToPath(const QString &path) const;
    void showExportFailure();
    qint64 pinState() const;

    QPointer<QWidget> m_window;
    const std::shared_ptr<SNStickyNote> &m_note;
    SNStickyNoteManager &m_store;
    const std::shared_ptr<SNModalPresenter> &m_presenter;
    std::function<QWAttributedString()> m_storedText;
    std::function<void()> m_noteWasRemoved;
    std::unique_ptr<QWDebouncer> m_exportDelayTimer;
};
