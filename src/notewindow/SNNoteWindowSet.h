#pragma once

#include "notes/SNRecordMerger.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QPointer>

#include <memory>

class QWidget;
class QWWindowManager;
class SNStickyNote;
class SNStickyNoteManager;
class SNStickyNoteWindowController;
class SNTag;

// The one owner of which note windows exist and which of them are shown: it opens a window for
// a note, shows them all, hides them all, shows only the notes of some tags, and puts back what
// such a showing changed. It knows which note window the user last worked in.
//
// The window manager keeps the controllers and their stacking order; the note store keeps the
// notes. This set does neither: it decides which windows there are and which show.
class SNNoteWindowSet final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteWindowSet)

public:
    SNNoteWindowSet(
        SNStickyNoteManager &store, QWWindowManager &windowManager, QObject *parent = nullptr);
    ~SNNoteWindowSet() override;

    // Every open note window, in the order they were opened.
    QList<SNStickyNoteWindowController *> controllers() const;
    SNStickyNoteWindowController *controllerForNote(const SNStickyNote *note) const;
    bool contains(const QObject *controller) const;
    // The note window the user last worked in, while it is open.
    SNStickyNoteWindowController *keyController() const;

    // Gives every stored note that has no window one; with shouldShow, brings all to the front
    // in their last order. The first windows show while the others are still being built.
    void showAllNotes(bool shouldShow);
    // Adds the note to the store and opens its window.
    SNStickyNoteWindowController *openNote(
        const std::shared_ptr<SNStickyNote> &note, bool shouldShow);
    void hideAllNotes();
    // Shows the notes that carry the tag, raised, hides the others, and gives the keyboard to
    // the window that asked.
    void showOnlyNotesWithTag(const std::shared_ptr<SNTag> &tag, QWidget *asking);

    // While the tag browser is open: every note is hidden, and a note shown again may not take
    // the keyboard from the browser.
    void beginTagBrowsing();
    // Shows exactly the notes that carry one of the tags, on the browser's level, under it.
    void showOnlyNotesWithTags(const QList<std::shared_ptr<SNTag>> &tags, QWidget *browser);
    // Puts the levels back and, when nothing was picked, every note's visibility from before.
    void endTagBrowsing();
    // The note windows shown because they carry a picked tag.
    QList<SNStickyNoteWindowController *> notesShownForTags() const;

    // Copies every window's state into its note; terminating windows then only flush on close.
    void flushEveryNote(bool terminating);

    // What a merge with other computers did: notes new here get windows (shown), the windows of
    // notes deleted elsewhere close without a question, and the others show their new text and
    // look.
    void notesDidMerge(const SNRecordMerger::Result &result);

private:
    SNStickyNoteWindowController *makeController(const std::shared_ptr<SNStickyNote> &note);
    void rememberKeyWindow();

    SNStickyNoteManager &m_store;
    QWWindowManager &m_windowManager;
    QPointer<SNStickyNoteWindowController> m_keyController;
    QList<QPointer<SNStickyNoteWindowController>> m_shownForTags;
    // Each note window's visibility when tag browsing began.
    QList<QPair<QPointer<QWidget>, bool>> m_visibilityBeforeBrowsing;
};
