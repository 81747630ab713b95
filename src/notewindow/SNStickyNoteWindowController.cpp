#include "notewindow/SNStickyNoteWindowController.h"

#include "kit/QWAttributedString.h"
#include "kit/QWClock.h"
#include "kit/QWDebouncer.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWSpellChecker.h"
#include "kit/QWTextAttributes.h"
#include "kit/rtf/QWRtfWriter.h"
#include "kit/widgets/QWGradientView.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNTextCounter.h"
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
#include "themes/SNUserTheme.h"
#include "themeview/SNTextColorPalette.h"
#include "themeview/SNThemeSwatch.h"
#include "themeview/SNThemeTextStyler.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QGraphicsOpacityEffect>
#include <QMenu>
#include <QMessageBox>
#include <QMouseEvent>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStandardPaths>
#include <QTextBlock>
#include <QTextCursor>
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

const QString rtfExtension = QStringLiteral("rtf");

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

// A file name may not contain the path separator; a title may.
QString proposedFileName(const QString &title)
{
    QString name = title;
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    return name.trimmed();
}

} // namespace

SNStickyNoteWindowController::SNStickyNoteWindowController(QObject *parent)
    : QWWindowController(parent),
      m_presenter(SNModalPresenter::defaultPresenter()),
      m_saveDelayTimer(std::make_unique<QWDebouncer>(saveDelay, [this] { save(); })),
      m_exportDelayTimer(std::make_unique<QWDebouncer>(exportDelay, [this] { saveNote(); })),
      m_tokenizeDelayTimer(std::make_unique<QWDebouncer>(tokenizeDelay, [this] {
          tokenizeTags();
          updateWordCount();
      }))
{ }

SNStickyNoteWindowController::~SNStickyNoteWindowController()
{
    QWNotificationCenter::defaultCenter().removeObserver(this);
    m_saveDelayTimer->cancel();
    m_exportDelayTimer->cancel();
    m_tokenizeDelayTimer->cancel();
    // The base class destroys the window after this object is gone: nothing in it may call back.
    detachFromWindow();
}

SNStickyNoteWindowController *SNStickyNoteWindowController::controllerWithNote(
    const std::shared_ptr<SNStickyNote> &note)
{
    auto *controller = new SNStickyNoteWindowController();
    controller->setNote(note);
    return controller;
}

void SNStickyNoteWindowController::setNote(const std::shared_ptr<SNStickyNote> &note)
{
    m_note = note;
    if (m_note)
        m_note->setWindowController(this);
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

void SNStickyNoteWindowController::setApplicationMenu(QMenu *menu)
{
    if (m_settingsMenu && m_applicationMenu)
        m_settingsMenu->removeAction(m_applicationMenu->menuAction());
    m_applicationMenu = menu;
    if (m_settingsMenu && menu)
        m_settingsMenu->insertMenu(m_ui->quitItem, menu);
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
    // Read before anything hides the toolbar: the height of a collapsed note.
    m_titleBarHeight = m_ui->titleBarView->maximumHeight();
    m_designedSize = window->size();
    buildMenus();
    connectCommands();
    if (m_shouldCascadeWindows)
        cascadeWindow();
    return window;
}

void SNStickyNoteWindowController::buildMenus()
{
    m_pinMenu = new QMenu(m_window);
    // Exactly one pin state holds: the items show as choices of one.
    auto *pinChoices = new QActionGroup(m_pinMenu);
    for (QAction *item : { m_ui->pinNormalItem, m_ui->pinFloatingItem, m_ui->pinDesktopItem }) {
        pinChoices->addAction(item);
        m_pinMenu->addAction(item);
    }

    m_themeMenu = new QMenu(m_window);
    m_ui->themeMenuItem->setMenu(m_themeMenu);

    m_alphaMenuItem = new QWidgetAction(m_window);

    m_settingsMenu = new QMenu(m_window);
    m_settingsMenu->addAction(m_ui->themeMenuItem);
    m_settingsMenu->addAction(m_ui->collapseMenuItem);
    // The transparency item goes in before it once it holds the slider: a menu takes the view
    // of such an item only when the item is added.
    m_alphaMenuItemSuccessor = m_settingsMenu->addSeparator();
    m_settingsMenu->addAction(m_ui->exportNoteItem);
    m_settingsMenu->addSeparator();
    m_settingsMenu->addActions(
        { m_ui->preferencesItem, m_ui->helpItem, m_ui->rateAppItem, m_ui->mailingListItem });
    m_settingsMenu->addSeparator();
    m_settingsMenu->addAction(m_ui->quitItem);
    if (m_applicationMenu)
        m_settingsMenu->insertMenu(m_ui->quitItem, m_applicationMenu);

    m_tagsMenu = new QMenu(m_window);
    m_tagsMenu->addActions({ m_ui->filterTagsMenuItem, m_ui->showTagsItem });

    // Ctrl+, opens the preferences from anywhere in the note. There is no mailing list to
    // join, and an item that does nothing is worse than none.
    m_window->addAction(m_ui->preferencesItem);
    m_ui->mailingListItem->setVisible(false);

    // Their shortcuts work while the note is the active window, menu open or not.
    m_window->addActions({ m_ui->exportNoteItem, m_ui->quitItem });
    auto *strikethrough = new QAction(m_window);
    strikethrough->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    connect(strikethrough, &QAction::triggered, this, [this] { toggleStrikethrough(nullptr); });
    m_window->addAction(strikethrough);
}

void SNStickyNoteWindowController::connectCommands()
{
    connect(m_ui->closeButton, &QToolButton::clicked, this, [this] { close(); });
    connect(m_ui->pinButton, &QToolButton::clicked, this, [this] { showPinMenu(); });
    connect(m_ui->settingsButton, &QToolButton::clicked, this, [this] { showSettingsMenu(); });
    connect(m_ui->tagButton, &QToolButton::clicked, this, [this] { showTags(); });

    for (QAction *item : m_pinMenu->actions())
        connect(item, &QAction::triggered, this, [this, item] { windowLevelDidChange(item); });
    connect(m_ui->collapseMenuItem, &QAction::triggered, this, [this] { toggleCollapsedWindow(); });
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
}

void SNStickyNoteWindowController::cascadeWindow()
{
    m_window->move(nextCascadePoint(m_window->size()));
}

void SNStickyNoteWindowController::qw_viewDidLoad()
{
    observeSpellingSettings();
    m_alwaysShowToolbar = true;
    m_alphaMenuItem->setDefaultWidget(m_ui->alphaView);
    m_settingsMenu->insertAction(m_alphaMenuItemSuccessor, m_alphaMenuItem);
    m_currentTheme = m_note ? m_note->theme() : nullptr;
    if (noteHasText())
        m_wasEdited = true;
    if (m_note && m_note->isCollapsed()) {
        m_isCollapsed = true;
        collapseWindowAnimated(false);
    } else {
        lockHeightToTitleBar(false);
    }

    addTrackingArea();
    configureWindow();
    updateNoteUI();
    updateTheme();
    updateUI();
    updateTitle();
    updateThemeMenu();
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
                hideToolbar();
        });
    center.addObserverForNameObjectHandler(this, SNThemeManager::styleDidChangeNotificationName(),
        nullptr, [this](const QWNotification &) { themesDidChange(); });
    center.addObserverForNameObjectHandler(this,
        SNTitleBarView::titleBarWasDoubleClickedNotification, m_ui->titleBarView,
        [this](const QWNotification &) { toggleCollapsedWindow(); });
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

    if (m_alwaysShowToolbar) {
        showToolbar();
    } else {
        m_ui->buttonContainerView->hide();
        setToolbarOpacity(0);
    }

    const QList<QAction *> pinItems = m_pinMenu->actions();
    const qint64 pinState = m_note ? m_note->pinState() : 0;
    const qsizetype checkedIndex = pinState >= 0 && pinState < pinItems.size() ? pinState : 0;
    for (qsizetype i = 0; i < pinItems.size(); ++i)
        pinItems[i]->setChecked(i == checkedIndex);

    if (m_note && m_note->windowAlpha() <= 0.0)
        m_note->setWindowAlpha(1.0);
    const double alpha = m_note ? m_note->windowAlpha() : 1.0;
    m_window->setWindowOpacity(alpha);
    const QSignalBlocker blocker(m_ui->alphaSlider);
    m_ui->alphaSlider->setValue(int(std::lround(alpha * m_ui->alphaSlider->maximum())));
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
    if (m_isCollapsed)
        m_note->setCollapsedWindowFrame(frameString());
    else
        m_note->setWindowFrame(frameString());
    m_note->setWindowAlpha(double(m_ui->alphaSlider->value()) / m_ui->alphaSlider->maximum());
}

void SNStickyNoteWindowController::save()
{
    flushNote();
    SNStickyNoteManager::sharedManager().saveInBackground();
}

void SNStickyNoteWindowController::textDidChange()
{
    m_wasEdited = true;
    saveAfterDelay();
    tokenizeTagsAfterDelay();
    if (m_secretUnlocked)
        rainbowize();
}

QString SNStickyNoteWindowController::strikethroughActionName()
{
    return tr("Strikethrough");
}

QString SNStickyNoteWindowController::changeColorActionName()
{
    return tr("Change Color");
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

// MARK: - Formatting

bool SNStickyNoteWindowController::formattingItemState(const QAction *item)
{
    // Checkable items have flipped by the time they report a trigger; the state they showed
    // is kept beside it.
    return item && item->property("qw_state").toBool();
}

SNStickyNoteWindowController::TextRange SNStickyNoteWindowController::selectedRange() const
{
    if (!m_ui)
        return {};
    const QTextCursor cursor = m_ui->textView->textCursor();
    return { cursor.selectionStart(), cursor.selectionEnd() - cursor.selectionStart() };
}

QTextCharFormat SNStickyNoteWindowController::formatAtIndex(qsizetype index) const
{
    const QTextDocument *document = m_ui->textView->document();
    const QTextBlock block = document->findBlock(int(index));
    for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
        const QTextFragment fragment = it.fragment();
        if (fragment.isValid() && fragment.position() <= index
            && index < fragment.position() + fragment.length())
            return fragment.charFormat();
    }
    return block.charFormat();
}

void SNStickyNoteWindowController::editFormatInRange(
    TextRange range, const std::function<void(QTextCharFormat &)> &edit)
{
    SNTextView *text = m_ui->textView;
    if (range.length <= 0) {
        QTextCharFormat format = text->currentCharFormat();
        edit(format);
        text->setCurrentCharFormat(format);
        return;
    }
    QTextDocument *document = text->document();
    const qsizetype end = range.location + range.length;
    QTextCursor batch(document);
    batch.beginEditBlock();
    for (QTextBlock block = document->findBlock(int(range.location));
         block.isValid() && block.position() < end; block = block.next()) {
        // Collected first: each change may split or merge the fragments being walked.
        QList<std::pair<int, int>> pieces;
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const int from = std::max<int>(fragment.position(), int(range.location));
            const int to = std::min<int>(fragment.position() + fragment.length(), int(end));
            if (fragment.isValid() && from < to)
                pieces.append({ from, to });
        }
        for (const auto &[from, to] : std::as_const(pieces)) {
            QTextCursor piece(document);
            piece.setPosition(from);
            piece.setPosition(to, QTextCursor::KeepAnchor);
            QTextCharFormat format = piece.charFormat();
            edit(format);
            piece.setCharFormat(format);
        }
    }
    batch.endEditBlock();
}

void SNStickyNoteWindowController::toggleBold(QAction *sender)
{
    if (!m_ui)
        return;
    SNTextView *text = m_ui->textView;
    text->setFocus();
    if (!sender) {
        text->toggleBold();
        return;
    }
    QTextCharFormat format;
    format.setFontWeight(formattingItemState(sender) ? QFont::Normal : QFont::Bold);
    text->mergeCurrentCharFormat(format);
}

void SNStickyNoteWindowController::toggleItalic(QAction *sender)
{
    if (!m_ui)
        return;
    SNTextView *text = m_ui->textView;
    text->setFocus();
    if (!sender) {
        text->toggleItalic();
        return;
    }
    QTextCharFormat format;
    format.setFontItalic(!formattingItemState(sender));
    text->mergeCurrentCharFormat(format);
}

void SNStickyNoteWindowController::toggleUnderline(QAction *)
{
    if (!m_ui)
        return;
    m_ui->textView->setFocus();
    m_ui->textView->toggleUnderline();
}

void SNStickyNoteWindowController::toggleStrikethrough(QObject *sender)
{
    if (!m_ui)
        return;
    const TextRange range = selectedRange();
    bool struckThrough = false;
    if (const auto *item = qobject_cast<const QAction *>(sender)) {
        struckThrough = formattingItemState(item);
    } else {
        const QTextCharFormat format = range.length > 0 ? formatAtIndex(range.location)
                                                        : m_ui->textView->currentCharFormat();
        struckThrough = format.fontStrikeOut();
    }
    strikethroughWithRange(struckThrough, range);
}

void SNStickyNoteWindowController::strikethroughWithRange(bool struckThrough, TextRange range)
{
    if (!m_ui || range.location == notFound)
        return;
    editFormatInRange(range, [struckThrough](QTextCharFormat &format) {
        if (struckThrough) {
            format.clearProperty(QTextFormat::FontStrikeOut);
            format.clearProperty(QWTextAttributes::ExactStrikethroughStyleProperty);
            format.clearProperty(QWTextAttributes::StrokeColorProperty);
        } else {
            format.setFontStrikeOut(true);
            format.setProperty(QWTextAttributes::ExactStrikethroughStyleProperty,
                QWTextAttributes::LineStyleSingle);
        }
    });
    if (range.length > 0)
        m_ui->textView->setUndoActionName(strikethroughActionName());
    m_ui->textView->viewport()->update();
}

void SNStickyNoteWindowController::changeColorFromMenuItem(QAction *sender)
{
    if (!sender)
        return;
    const QVariant represented = sender->data();
    const std::optional<QWColor> color = represented.canConvert<QColor>()
        ? std::optional<QWColor>(QWColor::fromQColor(represented.value<QColor>()))
        : std::nullopt;
    changeColorWithRange(color, selectedRange());
}

void SNStickyNoteWindowController::changeColorWithRange(
    const std::optional<QWColor> &color, TextRange range)
{
    // No colour is no change: undoing a change over text without a colour of its own does
    // nothing either.
    if (!m_ui || !color || range.location == notFound)
        return;
    const QBrush brush(color->toQColor());
    // The theme's own text colour is no colour of the text's: it follows the next theme.
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    const bool themeColor = theme && brush.color() == theme->defaultFontColor().toQColor();
    editFormatInRange(range, [&brush, themeColor](QTextCharFormat &format) {
        format.clearProperty(QWTextAttributes::ExactForegroundColorProperty);
        if (themeColor)
            format.clearForeground();
        else
            format.setForeground(brush);
    });
    if (range.length > 0)
        m_ui->textView->setUndoActionName(changeColorActionName());
    m_ui->textView->viewport()->update();
}

void SNStickyNoteWindowController::orderFrontColorPanel(QObject *)
{
    if (!m_ui)
        return;
    const TextRange range = selectedRange();
    if (!m_colorPanel) {
        m_colorPanel = new QColorDialog(m_window);
        m_colorPanel->setWindowTitle(tr("Colors"));
        m_colorPanel->setOption(QColorDialog::DontUseNativeDialog);
        m_colorPanel->setAttribute(Qt::WA_DeleteOnClose);
        SNWindowLevel::applyDialogLevel(m_colorPanel, m_note ? m_note->pinState() : 0);
    }
    m_colorPanel->disconnect(this);
    const QTextCharFormat current
        = range.length > 0 ? formatAtIndex(range.location) : m_ui->textView->currentCharFormat();
    if (current.hasProperty(QTextFormat::ForegroundBrush))
        m_colorPanel->setCurrentColor(current.foreground().color());
    connect(m_colorPanel, &QColorDialog::colorSelected, this, [this, range](const QColor &color) {
        const qsizetype length = m_ui->textView->document()->characterCount() - 1;
        // The text may have shrunk while the dialog was open.
        TextRange within = range;
        within.location = std::min(within.location, length);
        within.length = std::min(within.length, length - within.location);
        changeColorWithRange(QWColor::fromQColor(color), within);
    });
    m_colorPanel->open();
    m_colorPanel->raise();
}

QColorDialog *SNStickyNoteWindowController::colorPanel() const
{
    return m_colorPanel;
}

void SNStickyNoteWindowController::pastePlainText(QObject *)
{
    if (m_ui)
        m_ui->textView->pasteAsPlainText();
}

// MARK: - The right-click menu

void SNStickyNoteWindowController::addPasteAsPlainTextItemToMenuWithAttributes(
    QMenu *menu, const QTextCharFormat &)
{
    const QList<QAction *> items = menu->actions();
    for (qsizetype i = 0; i < items.size(); ++i) {
        QString title = items[i]->text();
        title = title.left(title.indexOf(QLatin1Char('\t')));
        title.remove(QLatin1Char('&'));
        if (title != QLatin1String("Paste")
            && items[i]->objectName() != QLatin1String("edit-paste"))
            continue;
        auto *item = new QAction(tr("Paste Plain Text"), menu);
        item->setEnabled(
            !m_ui->textView->isReadOnly() && !QGuiApplication::clipboard()->text().isEmpty());
        connect(item, &QAction::triggered, this, [this, item] { pastePlainText(item); });
        menu->insertAction(items.value(i + 1), item);
        return;
    }
}

void SNStickyNoteWindowController::addColorOptionsToMenuWithAttributes(
    QMenu *menu, const QTextCharFormat &)
{
    auto *colors = new QMenu(tr("Colors"), menu);
    const QList<QWColor> &palette = SNTextColorPalette::colorArray();
    const QStringList &names = SNTextColorPalette::colorNames();
    const qreal ratio = m_window ? m_window->devicePixelRatioF() : 1.0;
    for (qsizetype i = 0; i < palette.size(); ++i) {
        const QColor color = palette[i].toQColor();
        QAction *item = colors->addAction(
            QIcon(SNTextColorPalette::colorImageWithColor(color, ratio)), names.value(i));
        item->setData(color);
        connect(item, &QAction::triggered, this, [this, item] { changeColorFromMenuItem(item); });
    }
    colors->addSeparator();
    QAction *show = colors->addAction(tr("Show Colors"));
    show->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    connect(show, &QAction::triggered, this, [this, show] { orderFrontColorPanel(show); });
    menu->addMenu(colors);
    menu->addSeparator();
}

void SNStickyNoteWindowController::addFormattingOptionsToMenuWithAttributes(
    QMenu *menu, const QTextCharFormat &attributes)
{
    const bool bold = attributes.hasProperty(QTextFormat::FontWeight)
        && attributes.fontWeight() >= QFont::DemiBold;
    const bool underlined
        = attributes.underlineStyle() != QTextCharFormat::NoUnderline || attributes.fontUnderline();
    struct Item
    {
        QString title;
        QKeySequence key;
        bool state;
        std::function<void(QAction *)> action;
    };
    const Item items[] = {
        { tr("Bold"), QKeySequence(Qt::CTRL | Qt::Key_B), bold,
            [this](QAction *item) { toggleBold(item); } },
        { tr("Italic"), QKeySequence(Qt::CTRL | Qt::Key_I), attributes.fontItalic(),
            [this](QAction *item) { toggleItalic(item); } },
        { tr("Underline"), QKeySequence(Qt::CTRL | Qt::Key_U), underlined,
            [this](QAction *item) { toggleUnderline(item); } },
        { tr("Strikethrough"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
            attributes.fontStrikeOut(), [this](QAction *item) { toggleStrikethrough(item); } },
    };
    for (const Item &entry : items) {
        QAction *item = menu->addAction(entry.title);
        item->setShortcut(entry.key);
        item->setCheckable(true);
        item->setChecked(entry.state);
        item->setProperty("qw_state", entry.state);
        connect(item, &QAction::triggered, this, [item, action = entry.action] { action(item); });
    }
    menu->addSeparator();
}

void SNStickyNoteWindowController::addMakeListItemToMenuWithAttributesSelectedRanges(
    QMenu *, const QTextCharFormat &, TextRange)
{
    // Lists are not made from this menu.
}

QMenu *SNStickyNoteWindowController::textViewMenuForEventAtIndex(
    SNTextView *view, QMenu *proposedMenu, int index)
{
    addPasteAsPlainTextItemToMenuWithAttributes(proposedMenu, QTextCharFormat());
    const TextRange range = selectedRange();
    if (index >= view->document()->characterCount() - 1 || range.length == 0)
        return proposedMenu;
    const QTextCharFormat attributes = formatAtIndex(index);
    if (const std::optional<SNHashtagScanner::Occurrence> tag
        = SNHashtagScanner::occurrenceAtIndex(*view->document(), index)) {
        m_ui->filterTagsMenuItem->setData(tag->name);
        return m_tagsMenu;
    }
    // A child of the proposed menu, which the editor deletes after use.
    auto *menu = new QMenu(proposedMenu);
    addMakeListItemToMenuWithAttributesSelectedRanges(menu, attributes, range);
    addColorOptionsToMenuWithAttributes(menu, attributes);
    addFormattingOptionsToMenuWithAttributes(menu, attributes);
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
    m_tagsMenu->popup(QCursor::pos());
    return true;
}

QTextCharFormat SNStickyNoteWindowController::textViewShouldChangeTypingAttributesToAttributes(
    SNTextView *view, const QTextCharFormat &oldAttributes, const QTextCharFormat &newAttributes)
{
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    if (!theme)
        return newAttributes;
    // An emptied note starts again in its theme, whatever the deleted text was in.
    if (view->document()->isEmpty())
        return SNThemeTextStyler::typingFormat(*theme);
    if (!newAttributes.isImageFormat())
        return newAttributes;
    // After an image, typing goes on in the font and colour used before it.
    QTextCharFormat attributes = newAttributes;
    for (const int property :
        { int(QTextFormat::ObjectType), int(QTextFormat::ImageName), int(QTextFormat::ImageWidth),
            int(QTextFormat::ImageHeight), int(QWTextAttributes::AttachmentFileNameProperty) })
        attributes.clearProperty(property);
    const QTextCharFormat themeFormat = SNThemeTextStyler::typingFormat(*theme);
    const QTextCharFormat &fontSource
        = oldAttributes.hasProperty(QTextFormat::FontPointSize) ? oldAttributes : themeFormat;
    for (const int property : { int(QTextFormat::FontFamilies), int(QTextFormat::FontPointSize),
             int(QTextFormat::FontWeight), int(QTextFormat::FontItalic) }) {
        if (fontSource.hasProperty(property))
            attributes.setProperty(property, fontSource.property(property));
        else
            attributes.clearProperty(property);
    }
    attributes.clearProperty(QWTextAttributes::ExactForegroundColorProperty);
    if (oldAttributes.hasProperty(QTextFormat::ForegroundBrush))
        attributes.setForeground(oldAttributes.foreground());
    else
        attributes.clearForeground();
    return attributes;
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
    const QString stored = m_isCollapsed ? m_note->collapsedWindowFrame() : m_note->windowFrame();
    if (stored != frameString())
        saveAfterDelay();
}

void SNStickyNoteWindowController::windowDidResize(SNStickyWindow *window)
{
    windowDidMove(window);
}

QSize SNStickyNoteWindowController::windowWillResizeToSize(SNStickyWindow *, const QSize &size)
{
    return m_isCollapsed ? QSize(size.width(), collapsedHeight()) : size;
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

    QMessageBox alert(m_window);
    alert.setIcon(QMessageBox::Warning);
    alert.setWindowTitle(QGuiApplication::applicationDisplayName());
    alert.setText(tr("Would you like to export this note?"));
    alert.setInformativeText(
        tr("If you do not export this note, its contents will be permanently lost."));
    QPushButton *exportButton = alert.addButton(tr("Export"), QMessageBox::AcceptRole);
    QPushButton *cancelButton = alert.addButton(tr("Cancel"), QMessageBox::RejectRole);
    alert.addButton(tr("Delete Note"), QMessageBox::DestructiveRole);
    alert.setDefaultButton(exportButton);
    alert.setEscapeButton(cancelButton);
    SNWindowLevel::applyDialogLevel(&alert, m_note ? m_note->pinState() : 0);

    const QAbstractButton *answer = m_presenter->runAlert(alert);
    if (answer == cancelButton)
        return false;
    if (answer == exportButton) {
        // Once the question has gone, so that the save panel does not open over it.
        m_exportDelayTimer->restart();
        return false;
    }
    return true;
}

void SNStickyNoteWindowController::windowWillClose(SNStickyWindow *)
{
    m_window->setDelegate(nullptr);
    removeTrackingArea();
    if (!m_isTerminating) {
        SNStickyNoteManager &store = SNStickyNoteManager::sharedManager();
        store.removeNote(m_note);
        store.save();
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
    removeTrackingArea();
    if (m_frameAnimation)
        m_frameAnimation->stop();
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
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
    m_pinMenu->popup(m_ui->pinButton->mapToGlobal(QPoint(0, m_ui->pinButton->height())));
}

void SNStickyNoteWindowController::showSettingsMenu()
{
    m_settingsMenu->popup(
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

void SNStickyNoteWindowController::saveNote(QObject *)
{
    saveNoteShouldRemove(false);
}

void SNStickyNoteWindowController::saveNote()
{
    saveNoteShouldRemove(true);
}

void SNStickyNoteWindowController::saveNoteShouldRemove(bool shouldRemove)
{
    if (!m_window)
        return;
    QFileDialog panel(m_window, tr("Export Note"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setLabelText(QFileDialog::Accept, tr("Choose"));
    panel.setNameFilter(tr("Rich Text (*.rtf)"));
    panel.setDefaultSuffix(rtfExtension);
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.selectFile(proposedFileName(m_window->windowTitle()));
    SNWindowLevel::applyDialogLevel(&panel, m_note ? m_note->pinState() : 0);

    const QString path = m_presenter->runSavePanel(panel);
    if (path.isEmpty())
        return;
    if (!writeRtfToPath(path)) {
        showExportFailure();
        return;
    }
    if (!shouldRemove)
        return;
    SNStickyNoteManager &store = SNStickyNoteManager::sharedManager();
    store.removeNote(m_note);
    store.save();
    // The note has gone already: closing must not remove it again, only flush.
    m_isTerminating = true;
    m_window->close();
}

QWAttributedString SNStickyNoteWindowController::storedString() const
{
    const QTextDocument &document = *m_ui->textView->document();
    const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr;
    return theme ? SNThemeTextStyler::storedString(document, *theme)
                 : QWAttributedString::fromTextDocument(document);
}

bool SNStickyNoteWindowController::writeRtfToPath(const QString &path) const
{
    QWRtfWriter writer;
    if (const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr)
        writer.setDefaultFontFamily(theme->defaultFont().family());
    const QByteArray rtf = writer.write(SNHashtagScanner::taggedString(storedString()));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    const bool written = file.write(rtf) == rtf.size();
    file.close();
    return written && file.error() == QFileDevice::NoError;
}

void SNStickyNoteWindowController::showExportFailure()
{
    QMessageBox alert(m_window);
    alert.setIcon(QMessageBox::Warning);
    alert.setWindowTitle(QGuiApplication::applicationDisplayName());
    alert.setText(tr("Could not export note"));
    alert.setInformativeText(
        tr("An error occured when trying to export this note.\nPlease try again"));
    alert.setStandardButtons(QMessageBox::Ok);
    SNWindowLevel::applyDialogLevel(&alert, m_note ? m_note->pinState() : 0);
    m_presenter->runAlert(alert);
}

void SNStickyNoteWindowController::showTagsWithItem(QAction *item)
{
    const std::shared_ptr<SNTag> tag
        = item ? SNTagManager::sharedManager().tagWithName(item->data().toString()) : nullptr;
    if (!tag) {
        m_presenter->beep();
        return;
    }
    QWWindowManager &manager = QWWindowManager::sharedManager();
    const QList<SNStickyNoteWindowController *> controllers
        = manager.windowControllersForClass<SNStickyNoteWindowController>();
    for (SNStickyNoteWindowController *controller : controllers) {
        QWidget *noteWindow = controller->window();
        if (!noteWindow)
            continue;
        if (controller->note() && tag->containsNote(controller->note().get())) {
            noteWindow->show();
            noteWindow->raise();
        } else {
            noteWindow->hide();
        }
    }
    manager.showWindow(window());
}

// MARK: - Pin state and transparency

void SNStickyNoteWindowController::windowLevelDidChange(QAction *sender)
{
    const QList<QAction *> items = m_pinMenu->actions();
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

// MARK: - Collapsing

int SNStickyNoteWindowController::collapsedHeight() const
{
    // The title bar's height as designed: it is that high whenever the toolbar shows.
    return m_titleBarHeight;
}

void SNStickyNoteWindowController::toggleCollapsedWindow()
{
    if (m_isCollapsed)
        uncollapseWindowAnimated(true);
    else
        collapseWindowAnimated(true);
}

void SNStickyNoteWindowController::lockHeightToTitleBar(bool locked)
{
    if (locked) {
        m_window->setMinimumHeight(collapsedHeight());
        m_window->setMaximumHeight(collapsedHeight());
    } else {
        m_window->setMaximumHeight(QWIDGETSIZE_MAX);
        m_window->setMinimumHeight(minimumExpandedHeight);
    }
}

void SNStickyNoteWindowController::animateFrame(
    const QRect &frame, std::function<void()> completion)
{
    if (m_frameAnimation)
        m_frameAnimation->stop();
    auto *animation = new QPropertyAnimation(m_window, "geometry", this);
    animation->setDuration(frameAnimationDuration);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    animation->setEndValue(frame);
    connect(animation, &QPropertyAnimation::finished, this, std::move(completion));
    m_frameAnimation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void SNStickyNoteWindowController::collapseWindowAnimated(bool animate)
{
    m_ui->collapseMenuItem->setText(tr("Expand Window"));
    m_isCollapsed = true;
    m_note->setIsCollapsed(true);
    m_ui->textView->setReadOnly(true);
    m_ui->wordCountContainerView->hide();
    m_ui->collapsedTitleLabel->show();

    // Keeps the top edge: y grows downwards, so only the height changes.
    QRect target = m_window->geometry();
    target.setHeight(collapsedHeight());

    if (animate) {
        m_window->setMinimumHeight(collapsedHeight());
        animateFrame(target, [this] {
            lockHeightToTitleBar(true);
            m_note->setCollapsedWindowFrame(frameString());
            saveAfterDelay();
        });
        return;
    }
    lockHeightToTitleBar(true);
    m_window->setGeometry(target);
    saveAfterDelay();
}

void SNStickyNoteWindowController::uncollapseWindowAnimated(bool animate)
{
    m_ui->collapseMenuItem->setText(tr("Collapse Window"));
    m_isCollapsed = false;
    m_note->setIsCollapsed(false);
    m_ui->textView->setReadOnly(false);
    m_ui->wordCountContainerView->show();
    m_ui->collapsedTitleLabel->hide();

    const std::optional<QRect> stored = SNWindowFrameString::rectFromString(m_note->windowFrame());
    m_window->setMaximumHeight(QWIDGETSIZE_MAX);

    if (!animate) {
        // Back exactly where the note was stored.
        QRect frame = stored.value_or(QRect(m_window->pos(), m_designedSize));
        lockHeightToTitleBar(false);
        m_window->setGeometry(frame);
        saveAfterDelay();
        return;
    }

    // Grows downwards from where the collapsed note stands now, keeping its width.
    QRect frame = m_window->geometry();
    frame.setHeight(stored ? stored->height() : m_designedSize.height());
    if (const QScreen *screen = m_window->screen()) {
        const QRect screenFrame = screen->geometry();
        if (frame.bottom() > screenFrame.bottom())
            frame.moveBottom(screenFrame.bottom());
    }
    animateFrame(frame, [this] {
        lockHeightToTitleBar(false);
        save();
    });
}

// MARK: - Hover toolbar

void SNStickyNoteWindowController::addTrackingArea()
{
    if (m_trackingArea)
        return;
    m_ui->contentView->installEventFilter(this);
    m_trackingArea = true;
}

void SNStickyNoteWindowController::removeTrackingArea()
{
    if (!m_trackingArea)
        return;
    m_ui->contentView->removeEventFilter(this);
    m_trackingArea = false;
}

bool SNStickyNoteWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (m_ui && watched == m_ui->contentView) {
        if (event->type() == QEvent::Enter)
            mouseEntered();
        else if (event->type() == QEvent::Leave)
            mouseExited();
    }
    if (m_ui && watched == m_ui->wordCountLabel && event->type() == QEvent::MouseButtonRelease
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        toggleCount(m_ui->wordCountLabel);
        return true;
    }
    return QWWindowController::eventFilter(watched, event);
}

QGraphicsOpacityEffect *SNStickyNoteWindowController::toolbarOpacityEffect()
{
    QWidget *container = m_ui->buttonContainerView;
    auto *effect = qobject_cast<QGraphicsOpacityEffect *>(container->graphicsEffect());
    if (!effect) {
        effect = new QGraphicsOpacityEffect(container);
        effect->setOpacity(container->isVisible() ? 1.0 : 0.0);
        container->setGraphicsEffect(effect);
    }
    return effect;
}

void SNStickyNoteWindowController::setToolbarOpacity(qreal opacity)
{
    if (opacity >= 1.0) {
        // Fully shown draws best without an effect in the way.
        m_ui->buttonContainerView->setGraphicsEffect(nullptr);
        return;
    }
    toolbarOpacityEffect()->setOpacity(opacity);
}

void SNStickyNoteWindowController::showToolbar()
{
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    m_ui->buttonContainerView->show();
    setToolbarOpacity(1.0);
    m_ui->titleBarView->setMaximumHeight(collapsedHeight());
    m_ui->titleBarView->setMinimumHeight(collapsedHeight());
}

void SNStickyNoteWindowController::hideToolbar()
{
    if (m_alwaysShowToolbar)
        return;
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    m_ui->buttonContainerView->hide();
    setToolbarOpacity(0);
    m_ui->titleBarView->setMinimumHeight(0);
    m_ui->titleBarView->setMaximumHeight(0);
}

void SNStickyNoteWindowController::mouseEntered()
{
    if (QGuiApplication::applicationState() != Qt::ApplicationActive || m_alwaysShowToolbar)
        return;
    animateToolbar(true);
}

void SNStickyNoteWindowController::mouseExited()
{
    if (m_alwaysShowToolbar)
        return;
    animateToolbar(false);
}

void SNStickyNoteWindowController::animateToolbar(bool shown)
{
    if (m_toolbarAnimation)
        m_toolbarAnimation->stop();
    QGraphicsOpacityEffect *effect = toolbarOpacityEffect();
    // Shown from the start; fading out leaves it unhidden at no opacity.
    m_ui->buttonContainerView->show();
    m_ui->titleBarView->setMinimumHeight(0);

    auto *group = new QParallelAnimationGroup(this);
    auto *fade = new QPropertyAnimation(effect, "opacity");
    fade->setDuration(toolbarAnimationDuration);
    fade->setEndValue(shown ? 1.0 : 0.0);
    group->addAnimation(fade);
    auto *slide = new QPropertyAnimation(m_ui->titleBarView, "maximumHeight");
    slide->setDuration(toolbarAnimationDuration);
    slide->setEndValue(shown ? collapsedHeight() : 0);
    group->addAnimation(slide);
    if (shown)
        connect(group, &QAbstractAnimation::finished, this, [this] { showToolbar(); });
    m_toolbarAnimation = group;
    group->start(QAbstractAnimation::DeleteWhenStopped);
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

void SNStickyNoteWindowController::updateThemeMenu()
{
    // Later: this may run from one of these very items.
    const QList<QAction *> oldItems = m_themeMenu->actions();
    for (QAction *item : oldItems) {
        m_themeMenu->removeAction(item);
        item->deleteLater();
    }

    const std::shared_ptr<SNTheme> noteTheme = m_note ? m_note->theme() : nullptr;
    const QString currentSaveName = noteTheme ? noteTheme->saveName() : QString();
    const auto addItem = [&](const SNTheme &theme) {
        QAction *item
            = new QAction(SNThemeSwatch::colorImageWithTheme(theme), theme.name(), m_themeMenu);
        item->setData(theme.saveName());
        item->setCheckable(true);
        item->setChecked(theme.saveName() == currentSaveName);
        connect(item, &QAction::triggered, this, [this, item] { didChangeTheme(item); });
        m_themeMenu->addAction(item);
    };

    SNThemeManager &registry = SNThemeManager::sharedManager();
    for (const std::shared_ptr<SNTheme> &theme : registry.bundledThemes())
        addItem(*theme);
    const SNThemeManager::UserThemeList userThemes = registry.userThemes();
    if (!userThemes.isEmpty()) {
        m_themeMenu->addSeparator();
        for (const std::shared_ptr<SNUserTheme> &theme : userThemes)
            addItem(*theme);
    }
}

void SNStickyNoteWindowController::didChangeTheme(QAction *sender)
{
    if (!m_note || !sender)
        return;
    m_note->setThemeName(sender->data().toString());
    updateTheme();
    m_currentTheme = m_note->theme();
    saveAfterDelay();
    updateThemeMenu();
}

void SNStickyNoteWindowController::themesDidChange()
{
    updateTheme();
    updateThemeMenu();
}
