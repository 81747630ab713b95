#include "notewindow/SNStickyNoteWindowController.h"

#include "app/QWWindowManager.h"
#include "app/SNUserDefaults.h"
#include "kit/QWAttributedString.h"
#include "kit/QWClock.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWRtfWriter.h"
#include "kit/QWTimer.h"
#include "kit/widgets/QWGradientView.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNModalPresenter.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNThemeSwatch.h"
#include "notewindow/SNThemeTextStyler.h"
#include "notewindow/SNTitleBarView.h"
#include "notewindow/SNToolbarIcon.h"
#include "notewindow/SNWindowFrameString.h"
#include "notewindow/SNWindowLevel.h"
#include "notewindow/SNWindowPlacement.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themes/SNTimeOfDayTheme.h"
#include "themes/SNUserTheme.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QActionGroup>
#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QGraphicsOpacityEffect>
#include <QMenu>
#include <QMessageBox>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QStandardPaths>
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
const QString SNStickyNoteWindowController::superSecretNotification
    = QStringLiteral("QWSuperSecretNotification");

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
    : QWWindowController(parent), m_presenter(SNModalPresenter::defaultPresenter())
{ }

SNStickyNoteWindowController::~SNStickyNoteWindowController()
{
    QWNotificationCenter::defaultCenter().removeObserver(this);
    if (m_saveDelayTimer)
        m_saveDelayTimer->invalidate();
    if (m_exportDelayTimer)
        m_exportDelayTimer->invalidate();
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

// MARK: - Loading

std::unique_ptr<QWidget> SNStickyNoteWindowController::loadWindow()
{
    auto window = std::make_unique<SNStickyWindow>();
    m_ui = std::make_unique<Ui::SNStickyNoteWindowController>();
    m_ui->setupUi(window.get());
    m_window = window.get();
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

    m_tagsMenu = new QMenu(m_window);
    m_tagsMenu->addActions({ m_ui->filterTagsMenuItem, m_ui->showTagsItem });

    // Ctrl+, opens the preferences from anywhere in the note. There is no mailing list to
    // join, and an item that does nothing is worse than none.
    m_window->addAction(m_ui->preferencesItem);
    m_ui->mailingListItem->setVisible(false);

    // Their shortcuts work while the note is the active window, menu open or not.
    m_window->addActions({ m_ui->exportNoteItem, m_ui->quitItem });
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
    center.addObserverForNameObjectHandler(
        this, superSecretNotification, nullptr, [this](const QWNotification &) { rainbowize(); });
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
        m_note->attributedString()->toTextDocument(*m_ui->textView->document());
    }
    tokenizeTags();
}

void SNStickyNoteWindowController::updateUI()
{
    SNTextView *text = m_ui->textView;
    {
        // A change of layout, not of the note.
        const QSignalBlocker blocker(text);
        text->document()->setDocumentMargin(10);
    }
    connect(text, &QTextEdit::textChanged, this, &SNStickyNoteWindowController::textDidChange,
        Qt::UniqueConnection);
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
    if (m_saveDelayTimer)
        m_saveDelayTimer->invalidate();
    QPointer<SNStickyNoteWindowController> weakSelf(this);
    m_saveDelayTimer
        = QWTimer::timerWithIntervalRepeatsDidFinishBlock(saveDelay, false, [weakSelf](QWTimer &) {
              if (weakSelf)
                  weakSelf->save();
          });
}

void SNStickyNoteWindowController::flushNote()
{
    if (!m_note || !m_ui)
        return;
    m_note->setAttributedString(QWAttributedString::fromTextDocument(*m_ui->textView->document()));
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

void SNStickyNoteWindowController::tokenizeTagsAfterDelay() { }

void SNStickyNoteWindowController::tokenizeTags() { }

void SNStickyNoteWindowController::updateTitle() { }

void SNStickyNoteWindowController::updateWordCount() { }

void SNStickyNoteWindowController::updateSpellChecking() { }

void SNStickyNoteWindowController::rainbowize() { }

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
        if (m_exportDelayTimer)
            m_exportDelayTimer->invalidate();
        QPointer<SNStickyNoteWindowController> weakSelf(this);
        m_exportDelayTimer = QWTimer::timerWithIntervalRepeatsDidFinishBlock(
            exportDelay, false, [weakSelf](QWTimer &) {
                if (weakSelf)
                    weakSelf->saveNote();
            });
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

bool SNStickyNoteWindowController::writeRtfToPath(const QString &path) const
{
    QWRtfWriter writer;
    if (const std::shared_ptr<SNTheme> theme = m_note ? m_note->theme() : nullptr)
        writer.setDefaultFontFamily(theme->defaultFont().family());
    const QByteArray rtf
        = writer.write(QWAttributedString::fromTextDocument(*m_ui->textView->document()));
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

    if (!text->document()->isEmpty())
        SNThemeTextStyler::restyleDocument(*text->document(), *theme, m_currentTheme.get());
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
    // Still the old theme in currentTheme: text in its default colour takes the new one.
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
