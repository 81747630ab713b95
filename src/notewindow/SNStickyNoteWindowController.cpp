#include "notewindow/SNStickyNoteWindowController.h"

#include "kit/QWAttributedString.h"
#include "kit/QWClock.h"
#include "kit/QWDebouncer.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWSpellChecker.h"
#include "kit/QWTextAttributes.h"
#include "kit/widgets/QWGradientView.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNTextCounter.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNNoteExporter.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNNoteTextFormatter.h"
#include "notewindow/SNRainbowizer.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNTitleBarView.h"
#include "notewindow/SNToolbarIcon.h"
#include "notewindow/SNWindowFrameString.h"
#include "notewindow/SNWindowLevel.h"
#include "notewindow/SNWindowPlacement.h"
#include "settings/SNUserDefaults.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themes/SNTimeOfDayTheme.h"
#include "themeview/SNTextColorPalette.h"
#include "themeview/SNThemeTextStyler.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QApplication>
#include <QEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextDocument>
#include <QWidgetAction>

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

namespace {

// Where the next window without a stored frame goes; each one a step further.
QPoint nextCascadePoint(const QSize &windowSize)
{
    static constexpr int cascadeStep = 24;
    static const QPoint firstOffset(80, 80);
    static QPoint point;
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    point
        = point.isNull() ? area.topLeft() + firstOffset : point + QPoint(cascadeStep, cascadeStep);
    if (!area.contains(QRect(point, windowSize)))
        point = area.topLeft() + firstOffset;
    return point;
}

} // namespace

SNStickyNoteWindowController::SNStickyNoteWindowController(
    SNStickyNoteManager &store, QObject *parent)
    : QWWindowController(parent),
      m_store(store),
      m_presenter(SNModalPresenter::defaultPresenter()),
      m_saveDelayTimer(std::make_unique<QWDebouncer>(saveDelay, [this] { save(); })),
      m_tokenizeDelayTimer(std::make_unique<QWDebouncer>(tokenizeDelay, [this] {
          tokenizeTags();
          updateWordCount();
      }))
{ }

SNStickyNoteWindowController::~SNStickyNoteWindowController()
{
    QWNotificationCenter::defaultCenter().removeObserver(this);
    m_saveDelayTimer->cancel();
    m_tokenizeDelayTimer->cancel();
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

QWGradientView *SNStickyNoteWindowController::contentView() const
{
    return m_ui ? m_ui->contentView : nullptr;
}

SNTitleBarView *SNStickyNoteWindowController::titleBarView() const
{
    return m_ui ? m_ui->titleBarView : nullptr;
}

QWidget *SNStickyNoteWindowController::noteContainerView() const
{
    return m_ui ? m_ui->noteContainerView : nullptr;
}

QAbstractScrollArea *SNStickyNoteWindowController::scrollView() const
{
    return m_ui ? m_ui->textView : nullptr;
}

QWidget *SNStickyNoteWindowController::buttonContainerView() const
{
    return m_ui ? m_ui->buttonContainerView : nullptr;
}

QWidget *SNStickyNoteWindowController::wordCountContainerView() const
{
    return m_ui ? m_ui->wordCountContainerView : nullptr;
}

QLabel *SNStickyNoteWindowController::collapsedTitleLabel() const
{
    return m_ui ? m_ui->collapsedTitleLabel : nullptr;
}

QLabel *SNStickyNoteWindowController::wordCountLabel() const
{
    return m_ui ? m_ui->wordCountLabel : nullptr;
}

QToolButton *SNStickyNoteWindowController::closeButton() const
{
    return m_ui ? m_ui->closeButton : nullptr;
}

QToolButton *SNStickyNoteWindowController::pinButton() const
{
    return m_ui ? m_ui->pinButton : nullptr;
}

QToolButton *SNStickyNoteWindowController::settingsButton() const
{
    return m_ui ? m_ui->settingsButton : nullptr;
}

QToolButton *SNStickyNoteWindowController::tagButton() const
{
    return m_ui ? m_ui->tagButton : nullptr;
}

SNTextView *SNStickyNoteWindowController::textView() const
{
    return m_ui ? m_ui->textView : nullptr;
}

QAction *SNStickyNoteWindowController::collapseMenuItem() const
{
    return m_ui ? m_ui->collapseMenuItem : nullptr;
}

QAction *SNStickyNoteWindowController::filterTagsMenuItem() const
{
    return m_ui ? m_ui->filterTagsMenuItem : nullptr;
}

QSlider *SNStickyNoteWindowController::alphaSlider() const
{
    return m_ui ? m_ui->alphaSlider : nullptr;
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
    connectCommands();
    if (m_shouldCascadeWindows)
        cascadeWindow();
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

    for (QAction *item : m_menus->pinMenu()->actions())
        connect(item, &QAction::triggered, this, [this, item] { windowLevelDidChange(item); });
    connect(m_ui->collapseMenuItem, &QAction::triggered, m_collapser.get(),
        &SNNoteCollapser::toggleCollapsedWindow);
    connect(m_ui->alphaSlider, &QSlider::valueChanged, this, [this] { alphaDidChange(); });
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

void SNStickyNoteWindowController::cascadeWindow()
{
    m_window->move(nextCascadePoint(m_window->size()));
}

void SNStickyNoteWindowController::qw_viewDidLoad()
{
    observeSpellingSettings();
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
    updateTitle();
    m_menus->updateThemeMenu();
    updateWordCount();
    updateSpellChecking();

    subscribeToNotifications();
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_ui)
                m_ui->textView->verticalScrollBar()->setValue(0);
        },
        Qt::QueuedConnection);
}

void SNStickyNoteWindowController::observeSpellingSettings()
{
    connect(&SNUserDefaults::standardUserDefaults(), &GVUserDefaults::didChangeValueForKey, this,
        [this](const QString &key) {
            if (key != SNUserDefaults::checkSpellingKey()
                && key != SNUserDefaults::autoCorrectSpellingKey())
                return;
            QMetaObject::invokeMethod(
                this, [this] { updateSpellChecking(); }, Qt::QueuedConnection);
        });
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
    std::optional<QRect> frame;
    if (m_note && m_note->isCollapsed())
        frame = SNWindowFrameString::rectFromString(m_note->collapsedWindowFrame());
    if (!frame && m_note)
        frame = SNWindowFrameString::rectFromString(m_note->windowFrame());
    if (frame)
        m_window->setGeometry(SNWindowPlacement::frameOnConnectedScreens(*frame));
    updateWindowLevel();
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
    clearOldTags();
    tokenizeTags();
    // Nothing of the loading is for undo.
    m_ui->textView->document()->clearUndoRedoStacks();
}

void SNStickyNoteWindowController::updateUI()
{
    SNTextView *text = m_ui->textView;
    connect(text, &QTextEdit::textChanged, this, &SNStickyNoteWindowController::textDidChange,
        Qt::UniqueConnection);
    text->setDelegate(this);
    // A click on the counter switches between words, paragraphs and characters.
    m_ui->wordCountLabel->installEventFilter(this);
    m_ui->wordCountLabel->setCursor(Qt::PointingHandCursor);
    m_ui->wordCountLabel->setToolTip(tr("Click to count words, paragraphs or characters"));
    // The gradient behind shows through the text.
    text->viewport()->setAutoFillBackground(false);

    m_collapser->setUpToolbar();
    m_menus->checkPinItem(m_note ? m_note->pinState() : 0);

    if (m_note && m_note->windowAlpha() <= 0.0)
        m_note->setWindowAlpha(1.0);
    const double alpha = m_note ? m_note->windowAlpha() : 1.0;
    m_window->setWindowOpacity(alpha);
    const QSignalBlocker blocker(m_ui->alphaSlider);
    m_ui->alphaSlider->setValue(int(std::lround(alpha * m_ui->alphaSlider->maximum())));
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
    return m_window ? SNWindowFrameString::stringFromRect(m_window->geometry()) : QString();
}

// MARK: - Saving

void SNStickyNoteWindowController::saveAfterDelay()
{
    updateTitle();
    m_saveDelayTimer->restart();
}

void SNStickyNoteWindowController::flushNote()
{
    if (!m_note || !m_ui)
        return;
    m_note->setAttributedString(SNHashtagScanner::taggedString(storedString()));
    m_note->setDateModified(QWClock::currentDateTime());
    if (isCollapsed())
        m_note->setCollapsedWindowFrame(frameString());
    else
        m_note->setWindowFrame(frameString());
    m_note->setWindowAlpha(double(m_ui->alphaSlider->value()) / m_ui->alphaSlider->maximum());
}

void SNStickyNoteWindowController::save()
{
    flushNote();
    m_store.noteDidChange(m_note);
}

void SNStickyNoteWindowController::textDidChange()
{
    m_wasEdited = true;
    saveAfterDelay();
    tokenizeTagsAfterDelay();
    if (m_secretUnlocked)
        rainbowize();
}

void SNStickyNoteWindowController::tokenizeTagsAfterDelay()
{
    m_tokenizeDelayTimer->restart();
}

void SNStickyNoteWindowController::tokenizeTags()
{
    if (!m_ui || !m_note)
        return;
    m_note->setTags(SNHashtagScanner::tokenizeTags(
        m_ui->textView->document()->toPlainText(), SNTagManager::sharedManager()));
}

void SNStickyNoteWindowController::clearOldTags()
{
    if (!m_ui)
        return;
    // The editor shows tags from the words; stored markers would only go stale as it edits.
    const QSignalBlocker blocker(m_ui->textView);
    SNHashtagScanner::removeTagMarkers(*m_ui->textView->document());
}

bool SNStickyNoteWindowController::stringIsValidTag(const QString &string)
{
    return SNHashtagScanner::stringIsValidTag(string);
}

void SNStickyNoteWindowController::updateTitle()
{
    if (!m_ui)
        return;
    const QString title = SNNoteTitle::titleTextOfDocument(*m_ui->textView->document());
    m_window->setWindowTitle(SNNoteTitle::windowTitle(title));
    m_ui->collapsedTitleLabel->setText(SNNoteTitle::collapsedTitle(title));
}

void SNStickyNoteWindowController::updateWordCount()
{
    if (!m_ui)
        return;
    const qint64 state = m_note ? m_note->countState() : SNTextCounter::CountWords;
    const qsizetype count
        = SNTextCounter::countOfText(m_ui->textView->document()->toPlainText(), state);
    m_ui->wordCountLabel->setText(SNTextCounter::labelText(count, state));
}

void SNStickyNoteWindowController::toggleCount(QObject *)
{
    if (!m_note)
        return;
    m_note->setCountState(SNTextCounter::nextCountState(m_note->countState()));
    updateWordCount();
    saveAfterDelay();
    if (m_secretUnlocked)
        rainbowize();
}

void SNStickyNoteWindowController::updateSpellChecking()
{
    if (!m_ui)
        return;
    const SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    const bool check = defaults.checkSpelling();
    const bool correct = defaults.autoCorrectSpelling();
    SNTextView *text = m_ui->textView;
    if ((check || correct) && !text->spellChecker()) {
        // The dictionaries load on first use only, and once the notes are on screen: a user
        // who checks nothing never waits for them, and nobody waits for them at start.
        if (!QWSpellChecker::isSharedSpellCheckerLoaded()) {
            QMetaObject::invokeMethod(
                this,
                [this] {
                    QWSpellChecker::sharedSpellChecker();
                    updateSpellChecking();
                },
                Qt::QueuedConnection);
            return;
        }
        text->setSpellChecker(&QWSpellChecker::sharedSpellChecker());
    }
    text->setAutomaticSpellingCorrectionEnabled(correct);
    if (check && text->isContinuousSpellCheckingEnabled())
        text->checkSpelling();
    else
        text->setContinuousSpellCheckingEnabled(check);
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
    // Only a frame the note does not have yet is worth a save: opening a note moves its
    // window to where it already was.
    if (!m_note)
        return;
    const QString stored = isCollapsed() ? m_note->collapsedWindowFrame() : m_note->windowFrame();
    if (stored != frameString())
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
    if (!m_isTerminating) {
        m_store.removeNote(m_note);
    } else {
        flushNote();
    }
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
    m_ui->alphaSlider->disconnect(this);
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

// MARK: - Pin state and transparency

void SNStickyNoteWindowController::windowLevelDidChange(QAction *sender)
{
    const QList<QAction *> items = m_menus->pinMenu()->actions();
    for (QAction *item : items)
        item->setChecked(false);
    sender->setChecked(true);
    if (m_note)
        m_note->setPinState(items.indexOf(sender));
    updateWindowLevel();
    saveAfterDelay();
}

void SNStickyNoteWindowController::updateWindowLevel()
{
    SNWindowLevel::applyPinState(m_window, m_note ? m_note->pinState() : 0);
}

void SNStickyNoteWindowController::alphaDidChange()
{
    const double alpha = double(m_ui->alphaSlider->value()) / m_ui->alphaSlider->maximum();
    if (m_note)
        m_note->setWindowAlpha(alpha);
    m_window->setWindowOpacity(alpha);
    saveAfterDelay();
}

bool SNStickyNoteWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (m_ui && watched == m_ui->wordCountLabel && event->type() == QEvent::MouseButtonRelease
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        toggleCount(m_ui->wordCountLabel);
        return true;
    }
    return QWWindowController::eventFilter(watched, event);
}

// MARK: - Theme

void SNStickyNoteWindowController::updateTheme()
{
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    if (!theme || !m_ui)
        return;
    const QColor textColor = theme->defaultFontColor().toQColor();

    QPalette countPalette = m_ui->wordCountLabel->palette();
    countPalette.setColor(QPalette::WindowText, textColor);
    m_ui->wordCountLabel->setPalette(countPalette);

    QFont titleFont = QApplication::font();
    titleFont.setPointSizeF(13);
    m_ui->collapsedTitleLabel->setFont(titleFont);
    QPalette titlePalette = m_ui->collapsedTitleLabel->palette();
    titlePalette.setColor(QPalette::WindowText, textColor);
    m_ui->collapsedTitleLabel->setPalette(titlePalette);

    SNTextView *text = m_ui->textView;
    text->setInsertionPointColor(theme->cursorColor().toQColor());
    text->setScrollerColor(theme->isDark() ? QColor(255, 255, 255, 90) : QColor(0, 0, 0, 70));

    m_ui->contentView->setStartColor(theme->startColor().toQColor());
    m_ui->contentView->setEndColor(theme->endColor().toQColor());

    const bool dark = theme->isDark();
    m_ui->closeButton->setIcon(
        SNToolbarIcon::iconNamed(SNToolbarIcon::nameForTheme(SNToolbarIcon::closeIconName, dark)));
    m_ui->pinButton->setIcon(
        SNToolbarIcon::iconNamed(SNToolbarIcon::nameForTheme(SNToolbarIcon::pinIconName, dark)));
    m_ui->settingsButton->setIcon(SNToolbarIcon::iconNamed(
        SNToolbarIcon::nameForTheme(SNToolbarIcon::settingsIconName, dark)));
    m_ui->tagButton->setIcon(
        SNToolbarIcon::iconNamed(SNToolbarIcon::nameForTheme(SNToolbarIcon::searchIconName, dark)));

    // None of this is an edit of the note.
    const QSignalBlocker blocker(text);
    text->setLinkTextAttributes(SNThemeTextStyler::linkFormat(*theme));
    text->setLinkCursor(QCursor(Qt::PointingHandCursor));

    // What text without a font or colour of its own is drawn in.
    text->setFont(theme->defaultFont().toQFont());
    QPalette textPalette = text->palette();
    textPalette.setColor(QPalette::Text, textColor);
    textPalette.setColor(QPalette::Base, Qt::transparent);
    text->setPalette(textPalette);

    // The text itself holds no theme, so nothing in it changes: not the formats of a
    // selection, nor the undo history. A selection keeps its formats for what replaces it.
    if (!text->textCursor().hasSelection())
        text->setCurrentCharFormat(SNThemeTextStyler::typingFormat(*theme));
}

void SNStickyNoteWindowController::didChangeTheme(QAction *sender)
{
    if (!m_note || !sender)
        return;
    m_note->setThemeName(sender->data().toString());
    updateTheme();
    m_currentTheme = m_note->theme();
    saveAfterDelay();
    m_menus->updateThemeMenu();
}

void SNStickyNoteWindowController::themesDidChange()
{
    updateTheme();
    m_menus->updateThemeMenu();
}
