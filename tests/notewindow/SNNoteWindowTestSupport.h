#pragma once

#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTextCursor>

#include <memory>

// Answers a note window's questions in place of a person, and remembers what it was asked.
class ScriptedPresenter final : public SNModalPresenter
{
public:
    struct Alert
    {
        QString defaultButton;
        QString escapeButton;
        QWidget *parent = nullptr;
    };

    QStringList alertAnswers; // button texts, one per alert, in order
    QStringList panelAnswers; // paths, one per panel; an empty one cancels
    QList<Alert> alerts;
    int panels = 0; // save panels shown
    int beeps = 0;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        alerts.append({ alert.defaultButton() ? alert.defaultButton()->text() : QString(),
            alert.escapeButton() ? alert.escapeButton()->text() : QString(),
            alert.parentWidget() });
        const QString answer = alertAnswers.isEmpty() ? QString() : alertAnswers.takeFirst();
        const QList<QAbstractButton *> buttons = alert.buttons();
        for (QAbstractButton *button : buttons) {
            if (button->text() == answer)
                return button;
        }
        return nullptr;
    }

    QString runSavePanel(QFileDialog &) override
    {
        ++panels;
        return panelAnswers.isEmpty() ? QString() : panelAnswers.takeFirst();
    }

    void beep() override { ++beeps; }
};

// What every note window test sets up, as a plain member of the test object: private folders
// (first, as the shared stores are made on first use inside them), time that moves only when
// the test says so, a presenter that answers for the user, and no spelling dictionaries to
// wait for. The test's init() and cleanup() call those of the fixture.
class NoteWindowFixture final
{
public:
    QWTestEnvironment environment;
    std::unique_ptr<QWManualScheduler> scheduler;
    std::shared_ptr<ScriptedPresenter> presenter;

    void init()
    {
        scheduler = std::make_unique<QWManualScheduler>();
        presenter = std::make_shared<ScriptedPresenter>();
        SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
        defaults.setCheckSpelling(false);
        defaults.setAutoCorrectSpelling(false);
    }

    void cleanup()
    {
        SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
        scheduler.reset();
    }
};

inline std::shared_ptr<SNStickyNote> noteWithText(const QString &text)
{
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    return note;
}

// A controller for the note with its window shown, answering through the presenter.
inline std::unique_ptr<SNStickyNoteWindowController> openNote(
    const std::shared_ptr<SNStickyNote> &note,
    const std::shared_ptr<SNModalPresenter> &presenter = nullptr)
{
    std::unique_ptr<SNStickyNoteWindowController> controller(
        SNStickyNoteWindowController::controllerWithNote(
            note, SNStickyNoteManager::sharedManager()));
    controller->setShouldCascadeWindows(false);
    if (presenter)
        controller->setModalPresenter(presenter);
    controller->showWindow();
    if (!QTest::qWaitForWindowExposed(controller->window()))
        qWarning("The note window was not shown");
    return controller;
}

// A note of the text (none when empty) that the shared store holds, open in its window.
inline std::unique_ptr<SNStickyNoteWindowController> openWithText(const QString &text)
{
    auto note = text.isEmpty() ? SNStickyNote::note() : noteWithText(text);
    SNStickyNoteManager::sharedManager().addNote(note);
    return openNote(note);
}

// A part of the note window, by its name in SNStickyNoteWindowController.ui.
template <typename Part> Part *part(SNStickyNoteWindowController &controller, const char *name)
{
    return controller.window()->findChild<Part *>(QLatin1String(name));
}

// The note of that text in the archive once the save the shared store has scheduled has run,
// read by a store of its own.
inline std::shared_ptr<SNStickyNote> archivedNoteWithText(const QString &text)
{
    SNStickyNoteManager &store = SNStickyNoteManager::sharedManager();
    if (store.hasPendingSave())
        store.save();
    store.waitForBackgroundSaves();
    SNStickyNoteManager reader(store.baseDatabasePath());
    const QList<std::shared_ptr<SNStickyNote>> notes = reader.notesArray();
    for (const std::shared_ptr<SNStickyNote> &note : notes) {
        if (note->attributedString() && note->attributedString()->string() == text)
            return note;
    }
    return nullptr;
}

// The menu's item of that title, without its accelerator and shortcut; null when there is none.
inline QAction *itemTitled(const QMenu *menu, const QString &title)
{
    const QList<QAction *> items = menu->actions();
    for (QAction *item : items) {
        if (item->text().section(u'\t', 0, 0).remove(u'&') == title)
            return item;
    }
    return nullptr;
}

inline void select(SNTextView *view, int start, int end)
{
    QTextCursor cursor = view->textCursor();
    cursor.setPosition(start);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    view->setTextCursor(cursor);
}

// A point of the viewport over the character at the index.
inline QPoint pointOfCharacter(SNTextView *view, int index)
{
    QTextCursor cursor(view->document());
    cursor.setPosition(index);
    return view->cursorRect(cursor).center() + QPoint(3, 0);
}

inline QTextCharFormat formatAt(const QTextDocument &document, int index)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(index + 1);
    return cursor.charFormat();
}
