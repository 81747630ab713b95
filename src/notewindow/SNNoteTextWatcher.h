#pragma once

#include <QObject>

#include <memory>

class QWDebouncer;
class SNStickyNote;
class SNStickyWindow;

namespace Ui {
class SNStickyNoteWindowController;
}

// Keeps what follows a note's text in step with it: the note's tags, read from the words once
// the edits pause; the window's title and the collapsed note's; the counter of words,
// paragraphs or characters, which a click on it cycles; and spell checking as the settings say.
class SNNoteTextWatcher final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteTextWatcher)

public:
    static constexpr double tokenizeDelay = 0.5;

    // The note is read on each use, as the owner may be handed another one.
    SNNoteTextWatcher(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
        const std::shared_ptr<SNStickyNote> &note, QObject *parent = nullptr);
    ~SNNoteTextWatcher() override;

    // After an edit: the tags and the counter follow once the delay has passed since the last.
    void tokenizeTagsAfterDelay();
    void tokenizeTags();
    // The editor shows tags from the words; the markers a stored text brings would go stale.
    void clearOldTags();
    void updateTitle();
    void updateWordCount();
    // Words, paragraphs, characters and round again; the note keeps the choice.
    void toggleCount();
    void updateSpellChecking();

Q_SIGNALS:
    void countStateDidChange();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void observeSpellingSettings();

    SNStickyWindow *m_window;
    Ui::SNStickyNoteWindowController &m_ui;
    const std::shared_ptr<SNStickyNote> &m_note;
    std::unique_ptr<QWDebouncer> m_tokenizeDelayTimer;
};
