#include "notewindow/SNStickyNoteWindowController.h"

#include "kit/QWAttributedString.h"
#include "kit/QWClock.h"
#include "kit/QWDebouncer.h"
#include "kit/QWNotificationCenter.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNMergedTextLoader.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNNoteExporter.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNNoteTextFormatter.h"
#include "notewindow/SNNoteTextWatcher.h"
#include "notewindow/SNNoteThemer.h"
#include "notewindow/SNNoteWindowState.h"
#include "notewindow/SNRainbowizer.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNTitleBarView.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themes/SNTimeOfDayTheme.h"
#include "themeview/SNTextColorPalette.h"
#include "themeview/SNThemeTextStyler.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextDocument>

const QString SNStickyNoteWindowController::showTagManagerNotification
    = QStringLiteral("SNShowTagManager");
const QString SNStickyNoteWindowController::showHelpNotification
    = QStringLiteral("Notification.showHelp");
const QString SNStickyNoteWindowController::rateAppNotification
    = QStringLiteral("Notification.rateApp");
const QString SNStickyNoteWindowController::joinMailingListNotification
    = QStringLiteral("Notification.joinMailingList");
const QString SNStickyNoteWindowController::openPreferencesNotification
    = QStringLiteral("Notification.openPreferences");

SNStickyNoteWindowController::SNStickyNoteWindowController(
    SNStickyNoteManager &store, QObject *parent)
    : QWWindowController(parent),
      m_store(store),
      m_presenter(SNModalPresenter::defaultPresenter()),
      m_saveDelayTimer(std::make_unique<QWDebouncer>(saveDelay, [this] { save(); }))
{ }

SNStickyNoteWindowController::~SNStickyNoteWindowController()
{
    QWNotificationCenter::defaultCenter().removeObserver(this);
    m_saveDelayTimer->cancel();
    // The base class destroys the window after this object is gone: nothing in it may call back.
    detachFromWindow();
}

SNStickyNoteWindowController *SNStickyNoteWindowController::controllerWithNote(
    const std::shared_ptr<SNStickyNote> &note, SNStickyNoteManager &store)
{
    auto *controller = new SNStickyNoteWindowController(store);
    controller->setNote(note);
    return controller;
}

void SNStickyNoteWindowController::setNote(const std::shared_ptr<SNStickyNote> &note)
{
    m_note = note;
}

void SNStickyNoteWindowController::setModalPresenter(std::shared_ptr<SNModalPresenter> presenter)
{
    m_presenter = presenter ? std::move(presenter) : SNModalPresenter::defaultPresenter();
}

// MARK: - Parts of the window

SNTextView *SNStickyNoteWindowController::textView() const
{
    return m_ui ? m_ui->textView : nullptr;
}

QMenu *SNStickyNoteWindowController::settingsMenu() const
{
    return m_menus ? m_menus->settingsMenu() : nullptr;
}

void SNStickyNoteWindowController::setApplicationMenu(QMenu *menu)
{
    m_applicationMenu = menu;
    if (m_menus)
        m_menus->setApplicationMenu(menu);
}

// MARK: - Loading

std::unique_ptr<QWidget> SNStickyNoteWindowController::loadWindow()
{
    auto window = std::make_unique<SNStickyWindow>();
    m_ui = std::make_unique<Ui::SNStickyNoteWindowController>();
    m_ui->setupUi(window.get());
    m_window = window.get();
    {
        // A change of layout, not of the note, made before there is any text to undo.
        const QSignalBlocker blocker(m_ui->textView);
        m_ui->textView->document()->setDocumentMargin(10);
        m_ui->textView->document()->clearUndoRedoStacks();
    }
    m_textFormatter = std::make_unique<SNNoteTextFormatter>(m_ui->textView, m_note);
    m_exporter = std::make_unique<SNNoteExporter>(
        m_window, m_note, m_store, m_presenter, [this] { return storedString(); });
    m_exporter->setNoteWasRemovedHandler([this] {
        // The note has gone already: closing must not remove it again, only flush.
        m_isTerminating = true;
        m_window->close();
    });
    // Before anything hides the toolbar: it measures the title bar as designed.
    m_collapser = std::make_unique<SNNoteCollapser>(m_window, *m_ui, m_note,
        SNNoteCollapser::SaveHooks { [this] { saveAfterDelay(); }, [this] { save(); } });
    m_menus = std::make_unique<SNNoteMenus>(m_window, *m_ui, m_note);
    if (m_applicationMenu)
        m_menus->setApplicationMenu(m_applicationMenu);
    m_textWatcher = std::make_unique<SNNoteTextWatcher>(m_window, *m_ui, m_note);
    m_themer = std::make_unique<SNNoteThemer>(*m_ui);
    m_windowState = std::make_unique<SNNoteWindowState>(m_window, *m_ui, m_note, *m_collapser);
    connectCommands();
    if (m_shouldCascadeWindows)
        m_windowState->cascadeWindow();
    return window;
}

void SNStickyNoteWindowController::connectCommands()
{
    connect(m_ui->closeButton, &QToolButton::clicked, this, [this] { close(); });
    connect(m_ui->pinButton, &QToolButton::clicked, this, [this] { showPinMenu(); });
    connect(m_ui->settingsButton, &QToolButton::clicked, this, [this] { showSettingsMenu(); });
    connect(m_ui->tagButton, &QToolButton::clicked, this, [this] { showTags(); });

    auto *strikethrough = new QAction(m_window);
    strikethrough->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(strikethrough, &QAction::triggered, this, [this] { toggleStrikethrough(nullptr); });
    m_window->addAction(strikethrough);

    const QList<QAction *> pinItems = m_menus->pinMenu()->actions();
    for (qsizetype pinState = 0; pinState < pinItems.size(); ++pinState) {
        connect(pinItems[pinState], &QAction::triggered, m_windowState.get(),
            [this, pinState] { m_windowState->setPinState(pinState); });
    }
    connect(m_windowState.get(), &SNNoteWindowState::noteDidChange, this,
        &SNStickyNoteWindowController::saveAfterDelay);
    connect(m_textWatcher.get(), &SNNoteTextWatcher::countStateDidChange, this, [this] {
        saveAfterDelay();
        if (m_secretUnlocked)
            rainbowize();
    });
    connect(m_ui->collapseMenuItem, &QAction::triggered, m_collapser.get(),
        &SNNoteCollapser::toggleCollapsedWindow);
    connect(m_ui->exportNoteItem, &QAction::triggered, this,
        [this] { saveNote(m_ui->exportNoteItem); });
    connect(m_ui->preferencesItem, &QAction::triggered, this, [this] { openPreferences(); });
    connect(m_ui->helpItem, &QAction::triggered, this, [this] { showHelp(); });
    connect(m_ui->rateAppItem, &QAction::triggered, this, [this] { rateApp(); });
    connect(m_ui->mailingListItem, &QAction::triggered, this, [this] { showMailingList(); });
    connect(m_ui->quitItem, &QAction::triggered, this, [this] { quit(); });
    connect(m_ui->filterTagsMenuItem, &QAction::triggered, this,
        [this] { showTagsWithItem(m_ui->filterTagsMenuItem); });
    connect(m_ui->showTagsItem, &QAction::triggered, this, [this] { showTags(); });
    connect(m_menus.get(), &SNNoteMenus::themeItemTriggered, this,
        &SNStickyNoteWindowController::didChangeTheme);
}

void SNStickyNoteWindowController::qw_viewDidLoad()
{
    m_collapser->setAlwaysShowToolbar(true);
    m_menus->addAlphaMenuItem();
    m_currentTheme = m_note ? m_note->theme() : nullptr;
    if (noteHasText())
        m_wasEdited = true;
    if (m_note && m_note->isCollapsed())
        m_collapser->collapseWindowAnimated(false);
    else
        m_collapser->lockHeightToTitleBar(false);

    m_collapser->addTrackingArea();
    configureWindow();
    updateNoteUI();
    updateTheme();
    updateUI();
    m_textWatcher->updateTitle();
    m_menus->updateThemeMenu();
    m_textWatcher->updateWordCount();
    m_textWatcher->updateSpellChecking();

    subscribeToNotifications();
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_ui)
                m_ui->textView->verticalScrollBar()->setValue(0);
        },
        Qt::QueuedConnection);
}

void SNStickyNoteWindowController::subscribeToNotifications()
{
    QWNotificationCenter &center = QWNotificationCenter::defaultCenter();
    center.addObserverForNameObjectHandler(this, SNTimeOfDayTheme::didChangeNotificationName(),
        nullptr, [this](const QWNotification &) { updateTheme(); });
    connect(
        qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
            if (state != Qt::ApplicationActive)
                m_collapser->hideToolbar();
        });
    center.addObserverForNameObjectHandler(this, SNThemeManager::styleDidChangeNotificationName(),
        nullptr, [this](const QWNotification &) { themesDidChange(); });
    center.addObserverForNameObjectHandler(this,
        SNTitleBarView::titleBarWasDoubleClickedNotification, m_ui->titleBarView,
        [this](const QWNotification &) { m_collapser->toggleCollapsedWindow(); });
}

void SNStickyNoteWindowController::windowDidLoad()
{
    m_windowState->restoreFrame();
}

void SNStickyNoteWindowController::configureWindow()
{
    // The window moves by its background and draws no background of its own
    // (SNStickyWindow); it tells this controller what happens to it.
    m_window->setDelegate(this);
    m_window->setMouseTracking(true);
}

void SNStickyNoteWindowController::updateNoteUI()
{
    if (!m_note)
        return;
    if (m_note->windowFrame().isEmpty())
        m_note->setWindowFrame(frameString());
    if (!noteHasText())
        return;
    {
        // Loading is not an edit.
        const QSignalBlocker blocker(m_ui->textView);
        QTextDocument &document = *m_ui->textView->document();
        m_note->attributedString()->toTextDocument(document);
        if (const std::shared_ptr<SNTheme> theme = m_note->theme())
            SNThemeTextStyler::neutralizeDocument(document, *theme);
    }
    m_textWatcher->clearOldTags();
    m_textWatcher->tokenizeTags();
    // Nothing of the loading is for undo.
    m_ui->textView->document()->clearUndoRedoStacks();
}

void SNStickyNoteWindowController::updateUI()
{
    SNTextView *text = m_ui->textView;
    connect(text, &QTextEdit::textChanged, this, &SNStickyNoteWindowController::textDidChange,
        Qt::UniqueConnection);
    text->setDelegate(this);
    // The gradient behind shows through the text.
    text->viewport()->setAutoFillBackground(false);

    m_collapser->setUpToolbar();
    m_menus->checkPinItem(m_note ? m_note->pinState() : 0);
    m_windowState->restoreAlpha();
}

bool SNStickyNoteWindowController::isCollapsed() const
{
    return m_collapser && m_collapser->isCollapsed();
}

bool SNStickyNoteWindowController::noteHasText() const
{
    if (!m_note)
        return false;
    const std::optional<QWAttributedString> text = m_note->attributedString();
    return text && text->length() > 0;
}

QString SNStickyNoteWindowController::frameString() const
{
    return m_windowState ? m_windowState->frameString() : QString();
}

// MARK: - Saving

void SNStickyNoteWindowController::saveAfterDelay()
{
    if (m_textWatcher)
        m_textWatcher->updateTitle();
    m_saveDelayTimer->restart();
}

void SNStickyNoteWindowController::flushNote()
{
    if (!m_note || !m_ui)
        return;
    // The editor's form of an unedited text may differ from the stored one in its runs; such
    // a difference is no edit, and must not reach other computers as one.
    if (std::exchange(m_textChangedSinceFlush, false)) {
        m_note->setAttributedString(SNHashtagScanner::taggedString(storedString()));
        m_note->setDateModified(QWClock::currentDateTime());
    }
    m_windowState->recordInNote();
}

void SNStickyNoteWindowController::noteDidMerge()
{
    if (!m_note || !m_ui)
        return;
    if (const std::optional<QWAttributedString> text = m_note->attributedString()) {
        const std::shared_ptr<SNTheme> theme = m_note->theme();
        if (SNMergedTextLoader::load(*m_ui->textView, *text, theme.get())) {
            m_textWatcher->clearOldTags();
            m_textWatcher->tokenizeTags();
            m_textWatcher->updateTitle();
            m_textWatcher->updateWordCount();
        }
    }
    updateTheme();
    m_currentTheme = m_note->theme();
    m_menus->updateThemeMenu();
    m_menus->checkPinItem(m_note->pinState());
    m_windowState->restoreAlpha();
    updateWindowLevel();
}

void SNStickyNoteWindowController::save()
{
    flushNote();
    m_store.noteDidChange(m_note);
}

void SNStickyNoteWindowController::textDidChange()
{
    m_wasEdited = true;
    m_textChangedSinceFlush = true;
    saveAfterDelay();
    m_textWatcher->tokenizeTagsAfterDelay();
    if (m_secretUnlocked)
        rainbowize();
}

void SNStickyNoteWindowController::toggleStrikethrough(QObject *sender)
{
    if (m_textFormatter)
        m_textFormatter->toggleStrikethrough(sender);
}

// MARK: - Text view delegate

QMenu *SNStickyNoteWindowController::textViewMenuForEventAtIndex(
    SNTextView *view, QMenu *proposedMenu, int index)
{
    SNNoteTextFormatter &formatter = *m_textFormatter;
    formatter.addPasteAsPlainTextItemToMenuWithAttributes(proposedMenu, QTextCharFormat());
    const SNNoteTextFormatter::TextRange range = formatter.selectedRange();
    if (index >= view->document()->characterCount() - 1 || range.length == 0)
        return proposedMenu;
    const QTextCharFormat attributes = formatter.formatAtIndex(index);
    if (const std::optional<SNHashtagScanner::Occurrence> tag
        = SNHashtagScanner::occurrenceAtIndex(*view->document(), index)) {
        m_ui->filterTagsMenuItem->setData(tag->name);
        return m_menus->tagsMenu();
    }
    // A child of the proposed menu, which the editor deletes after use.
    auto *menu = new QMenu(proposedMenu);
    formatter.addMakeListItemToMenuWithAttributesSelectedRanges(menu, attributes, range);
    formatter.addColorOptionsToMenuWithAttributes(menu, attributes);
    formatter.addFormattingOptionsToMenuWithAttributes(menu, attributes);
    const QList<QAction *> editorItems = proposedMenu->actions();
    for (QAction *item : editorItems) {
        proposedMenu->removeAction(item);
        menu->addAction(item);
    }
    return menu;
}

bool SNStickyNoteWindowController::textViewClickedOnLinkAtIndex(
    SNTextView *view, const QString &link, int index)
{
    if (!SNHashtagScanner::occurrenceAtIndex(*view->document(), index))
        return false;
    m_ui->filterTagsMenuItem->setData(link);
    m_menus->tagsMenu()->popup(QCursor::pos());
    return true;
}

QTextCharFormat SNStickyNoteWindowController::textViewShouldChangeTypingAttributesToAttributes(
    SNTextView *view, const QTextCharFormat &oldAttributes, const QTextCharFormat &newAttributes)
{
    return m_textFormatter->textViewShouldChangeTypingAttributesToAttributes(
        view, oldAttributes, newAttributes);
}

void SNStickyNoteWindowController::rainbowize()
{
    m_secretUnlocked = true;
    if (!m_ui || !m_note)
        return;
    // Colouring changes no words: it is saved with the next save, not as an edit of its own.
    const QSignalBlocker blocker(m_ui->textView);
    SNRainbowizer::rainbowizeDocument(*m_ui->textView->document(), m_note->countState(),
        SNTextColorPalette::colorArray(), m_ui->textView->textCursor().position());
}

// MARK: - Window delegate

void SNStickyNoteWindowController::windowDidMove(SNStickyWindow *)
{
    if (m_windowState->frameDiffersFromNote())
        saveAfterDelay();
}

void SNStickyNoteWindowController::windowDidResize(SNStickyWindow *window)
{
    windowDidMove(window);
}

QSize SNStickyNoteWindowController::windowWillResizeToSize(SNStickyWindow *, const QSize &size)
{
    return isCollapsed() ? QSize(size.width(), m_collapser->collapsedHeight()) : size;
}

void SNStickyNoteWindowController::windowDidBecomeMain(SNStickyWindow *)
{
    if (m_ui)
        m_ui->textView->setFocus(Qt::ActiveWindowFocusReason);
}

bool SNStickyNoteWindowController::windowShouldClose(SNStickyWindow *)
{
    if (m_isTerminating || !m_wasEdited)
        return true;

    return m_exporter->shouldCloseAfterExportQuestion();
}

void SNStickyNoteWindowController::windowWillClose(SNStickyWindow *)
{
    m_window->setDelegate(nullptr);
    m_collapser->removeTrackingArea();
    // The last typing, frame and look go with the note, into Recently Deleted too.
    flushNote();
    if (!m_isTerminating)
        m_store.removeNote(m_note);
    // Last: the window manager may let go of this controller now.
    announceWindowWillClose();
}

void SNStickyNoteWindowController::detachFromWindow()
{
    if (!m_window)
        return;
    m_window->setDelegate(nullptr);
    m_collapser->removeTrackingArea();
    m_collapser->stopAnimations();
    m_ui->textView->disconnect(this);
    m_ui->textView->setDelegate(nullptr);
}

// MARK: - Commands

void SNStickyNoteWindowController::close()
{
    if (m_window)
        m_window->performClose();
}

void SNStickyNoteWindowController::showPinMenu()
{
    m_menus->pinMenu()->popup(m_ui->pinButton->mapToGlobal(QPoint(0, m_ui->pinButton->height())));
}

void SNStickyNoteWindowController::showSettingsMenu()
{
    m_menus->settingsMenu()->popup(
        m_ui->settingsButton->mapToGlobal(QPoint(0, m_ui->settingsButton->height())));
}

void SNStickyNoteWindowController::showTags()
{
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        showTagManagerNotification);
}

void SNStickyNoteWindowController::showHelp()
{
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(showHelpNotification);
}

void SNStickyNoteWindowController::rateApp()
{
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(rateAppNotification);
}

void SNStickyNoteWindowController::showMailingList()
{
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        joinMailingListNotification);
}

void SNStickyNoteWindowController::openPreferences()
{
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        openPreferencesNotification);
}

void SNStickyNoteWindowController::quit()
{
    QCoreApplication::quit();
}

void SNStickyNoteWindowController::saveNote(QObject *sender)
{
    if (m_exporter)
        m_exporter->saveNote(sender);
}

QWAttributedString SNStickyNoteWindowController::storedString() const
{
    const QTextDocument &document = *m_ui->textView->document();
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    return theme ? SNThemeTextStyler::storedString(document, *theme)
                 : QWAttributedString::fromTextDocument(document);
}

void SNStickyNoteWindowController::showTagsWithItem(QAction *item)
{
    const std::shared_ptr<SNTag> tag
        = item ? SNTagManager::sharedManager().tagWithName(item->data().toString()) : nullptr;
    if (!tag) {
        m_presenter->beep();
        return;
    }
    Q_EMIT notesWithTagRequested(tag);
}

void SNStickyNoteWindowController::updateWindowLevel()
{
    if (m_windowState)
        m_windowState->updateWindowLevel();
}

// MARK: - Theme

void SNStickyNoteWindowController::updateTheme()
{
    if (const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
        theme && m_themer)
        m_themer->applyTheme(*theme);
}

void SNStickyNoteWindowController::didChangeTheme(QAction *sender)
{
    if (!m_note || !sender)
        return;
    m_note->setThemeName(sender->data().toString());
    updateTheme();
    // The theme's fonts went into the text: an edit of the text's form.
    m_textChangedSinceFlush = true;
    m_currentTheme = m_note->theme();
    saveAfterDelay();
    m_menus->updateThemeMenu();
}

void SNStickyNoteWindowController::themesDidChange()
{
    updateTheme();
    m_menus->updateThemeMenu();
}
