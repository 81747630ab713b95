#include "notewindow/SNNoteWindowSet.h"

#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "tags/SNTag.h"

#include <QGuiApplication>
#include <QSet>
#include <QWindow>

#include <algorithm>

SNNoteWindowSet::SNNoteWindowSet(
    SNStickyNoteManager &store, QWWindowManager &windowManager, QObject *parent)
    : QObject(parent), m_store(store), m_windowManager(windowManager)
{
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &SNNoteWindowSet::rememberKeyWindow);
}

SNNoteWindowSet::~SNNoteWindowSet() = default;

QList<SNStickyNoteWindowController *> SNNoteWindowSet::controllers() const
{
    return m_windowManager.windowControllersForClass<SNStickyNoteWindowController>();
}

SNStickyNoteWindowController *SNNoteWindowSet::controllerForNote(const SNStickyNote *note) const
{
    const QList<SNStickyNoteWindowController *> open = controllers();
    const auto found = std::find_if(
        open.cbegin(), open.cend(), [note](const SNStickyNoteWindowController *controller) {
            return controller->note().get() == note;
        });
    return found == open.cend() ? nullptr : *found;
}

bool SNNoteWindowSet::contains(const QObject *controller) const
{
    const QList<SNStickyNoteWindowController *> open = controllers();
    return std::any_of(open.cbegin(), open.cend(),
        [controller](const QObject *candidate) { return candidate == controller; });
}

SNStickyNoteWindowController *SNNoteWindowSet::keyController() const
{
    if (m_keyController && contains(m_keyController))
        return m_keyController;
    for (SNStickyNoteWindowController *controller : controllers()) {
        if (controller->isWindowLoaded() && controller->window()->isActiveWindow())
            return controller;
    }
    return nullptr;
}

void SNNoteWindowSet::rememberKeyWindow()
{
    const QWindow *focus = QGuiApplication::focusWindow();
    if (!focus)
        return;
    for (SNStickyNoteWindowController *controller : controllers()) {
        if (controller->isWindowLoaded() && controller->window()->windowHandle() == focus) {
            m_keyController = controller;
            return;
        }
    }
}

SNStickyNoteWindowController *SNNoteWindowSet::makeController(
    const std::shared_ptr<SNStickyNote> &note)
{
    SNStickyNoteWindowController *controller
        = SNStickyNoteWindowController::controllerWithNote(note, m_store);
    connect(controller, &SNStickyNoteWindowController::notesWithTagRequested, this,
        [this, controller](const std::shared_ptr<SNTag> &tag) {
            showOnlyNotesWithTag(tag, controller->window());
        });
    return controller;
}

void SNNoteWindowSet::showAllNotes(bool shouldShow)
{
    // Notes that already have a window are only brought forward. A note opened from a file
    // before the stored notes were first shown must not keep those from getting windows, so
    // every note without one gets one here.
    // Looked up once: at start-up every stored note is asked about.
    QSet<const SNStickyNote *> shown;
    for (const SNStickyNoteWindowController *controller : controllers())
        shown.insert(controller->note().get());
    QList<SNStickyNoteWindowController *> created;
    for (const std::shared_ptr<SNStickyNote> &note : m_store.notesArray()) {
        if (shown.contains(note.get()))
            continue;
        SNStickyNoteWindowController *controller = makeController(note);
        controller->setShouldCascadeWindows(false);
        created.append(controller);
    }
    if (created.isEmpty()) {
        if (shouldShow)
            m_windowManager.bringWindowControllersToTheFront();
        return;
    }
    // Each window is loaded as it is shown, so that the first notes appear while the others
    // are still being built.
    m_windowManager.addWindowControllersShouldShow(
        QList<QWWindowController *>(created.cbegin(), created.cend()), shouldShow);
    for (SNStickyNoteWindowController *controller : std::as_const(created))
        controller->setShouldCascadeWindows(true);
}

SNStickyNoteWindowController *SNNoteWindowSet::openNote(
    const std::shared_ptr<SNStickyNote> &note, bool shouldShow)
{
    m_store.addNote(note);
    SNStickyNoteWindowController *controller = makeController(note);
    m_windowManager.addWindowWithControllerShouldShow(controller, shouldShow);
    return controller;
}

void SNNoteWindowSet::hideAllNotes()
{
    m_windowManager.hideAllWindowControllers();
}

void SNNoteWindowSet::showOnlyNotesWithTag(const std::shared_ptr<SNTag> &tag, QWidget *asking)
{
    for (SNStickyNoteWindowController *controller : controllers()) {
        QWidget *noteWindow = controller->window();
        if (!noteWindow)
            continue;
        if (controller->note() && tag && tag->containsNote(controller->note().get())) {
            noteWindow->show();
            noteWindow->raise();
        } else {
            noteWindow->hide();
        }
    }
    m_windowManager.showWindow(asking);
}

void SNNoteWindowSet::beginTagBrowsing()
{
    m_visibilityBeforeBrowsing.clear();
    m_shownForTags.clear();
    for (SNStickyNoteWindowController *controller : controllers()) {
        QWidget *noteWindow = controller->window();
        if (!noteWindow)
            continue;
        m_visibilityBeforeBrowsing.append({ noteWindow, noteWindow->isVisible() });
        noteWindow->hide();
        // What keeps a note from taking the keyboard when it is shown again for a tag; the
        // browser also knows its notes by it.
        noteWindow->setAttribute(Qt::WA_ShowWithoutActivating, true);
    }
}

void SNNoteWindowSet::showOnlyNotesWithTags(
    const QList<std::shared_ptr<SNTag>> &tags, QWidget *browser)
{
    for (SNStickyNoteWindowController *controller : notesShownForTags()) {
        controller->updateWindowLevel();
        if (QWidget *noteWindow = controller->window())
            noteWindow->hide();
    }

    QSet<const SNStickyNote *> notes;
    for (const std::shared_ptr<SNTag> &tag : tags) {
        for (const std::shared_ptr<SNStickyNote> &note : tag->notes())
            notes.insert(note.get());
    }

    QList<QPointer<SNStickyNoteWindowController>> shown;
    for (SNStickyNoteWindowController *controller : controllers()) {
        QWidget *noteWindow = controller->window();
        if (!noteWindow || !controller->note() || !notes.contains(controller->note().get()))
            continue;
        // On the browser's level, under it: shown after it, raised, then the browser raised
        // again over them.
        QWX11WindowState::setLevel(noteWindow, QWX11WindowState::level(browser));
        noteWindow->show();
        noteWindow->raise();
        shown.append(controller);
    }
    if (!shown.isEmpty())
        browser->raise();
    m_shownForTags = shown;
}

void SNNoteWindowSet::endTagBrowsing()
{
    const bool notesWereShown = !notesShownForTags().isEmpty();
    for (SNStickyNoteWindowController *controller : controllers()) {
        QWidget *noteWindow = controller->window();
        if (!noteWindow)
            continue;
        controller->updateWindowLevel();
        noteWindow->setAttribute(Qt::WA_ShowWithoutActivating, false);
        if (notesWereShown)
            continue;
        // A window made while browsing shows.
        bool visible = true;
        for (const auto &[recorded, wasVisible] : std::as_const(m_visibilityBeforeBrowsing)) {
            if (recorded == noteWindow)
                visible = wasVisible;
        }
        noteWindow->setVisible(visible);
    }
    m_visibilityBeforeBrowsing.clear();
}

QList<SNStickyNoteWindowController *> SNNoteWindowSet::notesShownForTags() const
{
    QList<SNStickyNoteWindowController *> shown;
    for (const QPointer<SNStickyNoteWindowController> &controller : m_shownForTags) {
        if (controller)
            shown.append(controller);
    }
    return shown;
}

void SNNoteWindowSet::flushEveryNote(bool terminating)
{
    for (SNStickyNoteWindowController *controller : controllers()) {
        if (terminating)
            controller->setIsTerminating(true);
        // The windows stay open while the program ends, so their last edits are taken here.
        if (controller->isWindowLoaded()) {
            controller->flushNote();
            m_store.noteDidChange(controller->note());
        }
    }
}

void SNNoteWindowSet::notesDidMerge(const SNRecordMerger::Result &result)
{
    for (const std::shared_ptr<SNStickyNote> &note : result.removed) {
        if (SNStickyNoteWindowController *controller = controllerForNote(note.get())) {
            // The note has left the store already: closing only lets the window go.
            controller->setIsTerminating(true);
            if (controller->isWindowLoaded())
                controller->window()->close();
        }
    }
    for (const std::shared_ptr<SNStickyNote> &note : result.changed) {
        SNStickyNoteWindowController *controller = controllerForNote(note.get());
        if (controller && controller->isWindowLoaded())
            controller->noteDidMerge();
    }
    for (const std::shared_ptr<SNStickyNote> &note : result.added) {
        if (controllerForNote(note.get()))
            continue;
        // A note made on another computer opens where it was made there, kept on this screen.
        SNStickyNoteWindowController *controller = makeController(note);
        m_windowManager.addWindowWithControllerShouldShow(controller, true);
    }
}
