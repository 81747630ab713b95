#pragma once

#include "kit/QWKeyedUnarchiver.h"
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
#include <QFileInfo>
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
        QString text;
        QString informativeText;
        QStringList buttons; // as added
        QList<QMessageBox::ButtonRole> roles;
        QString defaultButton;
        QString escapeButton;
        QWidget *parent = nullptr;
        bool staysOnTop = false;
    };
    struct Panel
    {
        QString acceptLabel;
        QString proposedName;
        QStringList nameFilters;
        QString defaultSuffix;
        QFileDialog::AcceptMode acceptMode = QFileDialog::AcceptOpen;
        bool staysOnTop = false;
    };

    QStringList alertAnswers; // button texts, one per alert, in order
    QStringList panelAnswers; // paths, one per panel; an empty one cancels
    QList<Alert> alerts;
    QList<Panel> panels;
    int beeps = 0;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        Alert asked;
        asked.text = alert.text();
        asked.informativeText = alert.informativeText();
        const QList<QAbstractButton *> buttons = alert.buttons();
        for (QAbstractButton *button : buttons) {
            asked.buttons.append(button->text());
            asked.roles.append(alert.buttonRole(button));
        }
        asked.defaultButton = alert.defaultButton() ? alert.defaultButton()->text() : QString();
        asked.escapeButton = alert.escapeButton() ? alert.escapeButton()->text() : QString();
        asked.parent = alert.parentWidget();
        asked.staysOnTop = alert.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        alerts.append(asked);

        const QString answer = alertAnswers.isEmpty() ? QString() : alertAnswers.takeFirst();
        for (QAbstractButton *button : buttons) {
            if (button->text() == answer)
                return button;
        }
        return nullptr;
    }

    QString runSavePanel(QFileDialog &panel) override
    {
        Panel asked;
        asked.acceptLabel = panel.labelText(QFileDialog::Accept);
        asked.proposedName = QFileInfo(panel.selectedFiles().value(0)).fileName();
        asked.nameFilters = panel.nameFilters();
        asked.defaultSuffix = panel.defaultSuffix();
        asked.acceptMode = panel.acceptMode();
        asked.staysOnTop = panel.windowFlags().testFlag(Qt::WindowStaysOnTopHint);
        panels.append(asked);
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

inline bool storeHolds(const std::shared_ptr<SNStickyNote> &note)
{
    return SNStickyNoteManager::sharedManager().notesArray().contains(note);
}

// Runs the save the shared store has scheduled, if any, and waits for every save to end.
inline SNStickyNoteManager &settledStore()
{
    SNStickyNoteManager &store = SNStickyNoteManager::sharedManager();
    if (store.hasPendingSave())
        store.save();
    store.waitForBackgroundSaves();
    return store;
}

// What the notes archive holds once the scheduled save has run, read by a store of its own.
inline QList<std::shared_ptr<SNStickyNote>> notesInArchive()
{
    SNStickyNoteManager &store = settledStore();
    SNStickyNoteManager reader(store.baseDatabasePath());
    return reader.notesArray();
}

inline QString plainText(const std::shared_ptr<SNStickyNote> &note)
{
    const std::optional<QWAttributedString> text = note->attributedString();
    return text ? text->string() : QString();
}

inline std::shared_ptr<SNStickyNote> archivedNoteWithText(const QString &text)
{
    const QList<std::shared_ptr<SNStickyNote>> notes = notesInArchive();
    for (const std::shared_ptr<SNStickyNote> &note : notes) {
        if (plainText(note) == text)
            return note;
    }
    return nullptr;
}

// A key of the archived note with that text, read straight from the file rather than through
// the note record, which tidies some values up as it reads them.
inline QWArchiveValue archivedValueForKey(const QString &text, const QString &key)
{
    QFile file(settledStore().databasePath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QWKeyedUnarchiver::ParseResult archive = QWKeyedUnarchiver::parse(file.readAll());
    for (const QWArchiveValue &note : archive.root.toArray()) {
        const QWArchiveValue *data = note.valueForKey(u"data");
        if (!data)
            continue;
        const QWKeyedUnarchiver::ParseResult nested = QWKeyedUnarchiver::parse(data->toData());
        const QWArchiveValue *string = nested.root.valueForKey(u"string");
        if (!string || string->toString() != text)
            continue;
        const QWArchiveValue *value = note.valueForKey(key);
        return value ? *value : QWArchiveValue();
    }
    return {};
}

// The titles of a menu's items, without accelerators or shortcuts; a separator is "-".
inline QStringList titles(const QMenu *menu)
{
    QStringList result;
    const QList<QAction *> items = menu->actions();
    for (const QAction *item : items) {
        QString title = item->isSeparator() ? QStringLiteral("-") : item->text();
        title = title.left(title.indexOf(QLatin1Char('\t')));
        result.append(title.remove(QLatin1Char('&')));
    }
    return result;
}

inline QAction *itemTitled(const QMenu *menu, const QString &title)
{
    const QList<QAction *> items = menu->actions();
    for (QAction *item : items) {
        if (item->text() == title)
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
    const QRect before = view->cursorRect(cursor);
    return before.center() + QPoint(3, 0);
}

inline QTextCharFormat formatAt(const QTextDocument &document, int index)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(index + 1);
    return cursor.charFormat();
}
