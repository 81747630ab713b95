#include "preferences/QWPreferencesWindowController.h"

#include "kit/widgets/QWWindowCloseKeys.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "preferences/BackupsPreferencesViewController.h"
#include "preferences/GeneralPreferencesViewController.h"
#include "preferences/QWAboutViewController.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SNHotKeyState.h"
#include "preferences/SNSyncState.h"
#include "preferences/SyncPreferencesViewController.h"
#include "settings/SNApplicationInfo.h"
#include "settings/SNUserDefaults.h"
#include "ui_QWPreferencesWindowController.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QListWidget>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int sidebarRowHeight = 32;
constexpr int resizeDuration = 150; // milliseconds

// Sees whether an alert went away by Escape or by its window's close button: a message box
// with one button reports either as a press of that button.
class AlertDismissalWatcher final : public QObject
{
public:
    explicit AlertDismissalWatcher(QMessageBox &alert) : m_alert(alert)
    {
        alert.installEventFilter(this);
    }
    bool wasDismissed() const { return m_dismissed; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != &m_alert)
            return false;
        if (event->type() == QEvent::KeyPress
            && static_cast<QKeyEvent *>(event)->matches(QKeySequence::Cancel))
            m_dismissed = true;
        // A button's own click closes the box too, but names the button first.
        if (event->type() == QEvent::Close && !m_alert.clickedButton())
            m_dismissed = true;
        return false;
    }

private:
    QMessageBox &m_alert;
    bool m_dismissed = false;
};

} // namespace

QString QWPreferencesWindowController::windowTitleText()
{
    return tr("Preferences");
}

QString QWPreferencesWindowController::quitAlertMessage()
{
    return tr("%1 will continue to run in the background")
        .arg(SNApplicationInfo::applicationName());
}

QString QWPreferencesWindowController::quitAlertInformativeText()
{
    return tr("You can access the preferences by clicking on the icon located in the top menubar.");
}

QString QWPreferencesWindowController::quitAlertButtonTitle()
{
    return tr("Okay");
}

QColor QWPreferencesWindowController::backgroundColor()
{
    const double white = 0.95f;
    return QColor::fromRgbF(float(white), float(white), float(white), 1.0f);
}

std::unique_ptr<QWPreferencesWindowController> QWPreferencesWindowController::controller()
{
    return std::make_unique<QWPreferencesWindowController>();
}

QWPreferencesWindowController::QWPreferencesWindowController(QObject *parent)
    : QWWindowController(parent), m_presenter(SNModalPresenter::defaultPresenter())
{ }

QWPreferencesWindowController::~QWPreferencesWindowController()
{
    // The modules' views sit in the window: they go first, while the window still stands.
    if (m_resizeAnimation)
        m_resizeAnimation->stop();
    if (isWindowLoaded())
        window()->removeEventFilter(this);
    m_currentModule = nullptr;
    m_modules.clear();
}

void QWPreferencesWindowController::setModalPresenter(
    const std::shared_ptr<SNModalPresenter> &presenter)
{
    m_presenter = presenter ? presenter : SNModalPresenter::defaultPresenter();
    if (SDApperancePreferencesViewController *themes = appearanceViewController())
        themes->setModalPresenter(m_presenter);
    if (BackupsPreferencesViewController *backups = backupsViewController())
        backups->setModalPresenter(m_presenter);
    if (SyncPreferencesViewController *sync = syncViewController())
        sync->setModalPresenter(m_presenter);
}

void QWPreferencesWindowController::setNoteStore(SNStickyNoteManager *store, NotesOpener opener)
{
    m_noteStore = store;
    m_notesOpener = std::move(opener);
}

void QWPreferencesWindowController::setSyncState(SNSyncState *state)
{
    m_syncState = state;
}

void QWPreferencesWindowController::setHotKeyState(SNHotKeyState *state)
{
    m_hotKeyState = state;
    if (GeneralPreferencesViewController *general = generalViewController())
        general->setHotKeyState(state);
}

std::unique_ptr<QWidget> QWPreferencesWindowController::loadWindow()
{
    auto window = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::QWPreferencesWindowController>();
    m_ui->setupUi(window.get());
    return window;
}

void QWPreferencesWindowController::qw_viewDidLoad()
{
    m_canHide = true;

    QWidget *shown = window();
    QPalette palette = shown->palette();
    palette.setColor(QPalette::Window, backgroundColor());
    shown->setPalette(palette);
    shown->setAutoFillBackground(true);
    configureWindow();

    m_ui->tableView->setStyleSheet(QStringLiteral(
        "QListWidget { background: transparent; outline: 0; }"
        "QListWidget::item { padding-left: 8px; border-radius: 5px; color: palette(text); }"
        "QListWidget::item:selected { background: palette(highlight);"
        " color: palette(highlighted-text); }"));
    connect(m_ui->tableView, &QListWidget::itemSelectionChanged, this,
        &QWPreferencesWindowController::tableViewSelectionDidChange);

    auto general = std::make_unique<GeneralPreferencesViewController>();
    general->setHotKeyState(m_hotKeyState);
    auto themes = std::make_unique<SDApperancePreferencesViewController>();
    themes->setModalPresenter(m_presenter);
    SNStickyNoteManager &store = m_noteStore ? *m_noteStore : SNStickyNoteManager::sharedManager();
    auto backups = std::make_unique<BackupsPreferencesViewController>(store, m_notesOpener);
    backups->setModalPresenter(m_presenter);
    auto sync = std::make_unique<SyncPreferencesViewController>(
        SNUserDefaults::standardUserDefaults(), store, m_syncState);
    sync->setModalPresenter(m_presenter);
    auto about = std::make_unique<QWAboutViewController>();
    m_modules.push_back(std::move(general));
    m_modules.push_back(std::move(themes));
    m_modules.push_back(std::move(backups));
    m_modules.push_back(std::move(sync));
    m_modules.push_back(std::move(about));
    for (const std::unique_ptr<QWModuleViewController> &module : m_modules) {
        connect(module.get(), &QWViewController::resizeRequested, this,
            [this](QWViewController *controller) {
                // A page out of view changes nothing; it is measured again when it is chosen.
                if (controller == m_currentModule)
                    resizeWindowIfNeededForViewControllerAnimated(m_currentModule, true);
            });
    }

    reloadSidebar();
    m_isLoaded = true;
    selectModuleAtRow(generalModuleRow);
}

void QWPreferencesWindowController::configureWindow()
{
    QWidget *shown = window();
    shown->setWindowTitle(windowTitleText());
    // Pages size the window themselves; maximising a preferences window helps no one.
    shown->setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
        | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    // The window is the controller's delegate: it hears of closing, resizing and the keyboard.
    shown->installEventFilter(this);
    QWWindowCloseKeys::install(shown);
}

void QWPreferencesWindowController::reloadSidebar()
{
    QListWidget *list = m_ui->tableView;
    const QSignalBlocker blocker(list);
    list->clear();
    for (int row = 0; row < numberOfRowsInTableView(); ++row) {
        auto *item = new QListWidgetItem(moduleAtRow(row)->moduleTitle(), list);
        item->setSizeHint(QSize(0, sidebarRowHeight));
        if (!tableViewShouldSelectRow(row))
            item->setFlags(item->flags() & ~Qt::ItemIsSelectable);
    }
}

QListWidget *QWPreferencesWindowController::tableView() const
{
    return m_ui ? m_ui->tableView : nullptr;
}

QWidget *QWPreferencesWindowController::sidebarView() const
{
    return m_ui ? m_ui->sidebarView : nullptr;
}

QWidget *QWPreferencesWindowController::contentView() const
{
    return m_ui ? m_ui->moduleContentView->parentWidget() : nullptr;
}

QWidget *QWPreferencesWindowController::moduleContentView() const
{
    return m_ui ? m_ui->moduleContentView : nullptr;
}

QList<QWModuleViewController *> QWPreferencesWindowController::modules() const
{
    QList<QWModuleViewController *> list;
    for (const std::unique_ptr<QWModuleViewController> &module : m_modules)
        list.append(module.get());
    return list;
}

QWModuleViewController *QWPreferencesWindowController::moduleAtRow(int row) const
{
    if (row < 0 || row >= int(m_modules.size()))
        return nullptr;
    return m_modules[size_t(row)].get();
}

GeneralPreferencesViewController *QWPreferencesWindowController::generalViewController() const
{
    return qobject_cast<GeneralPreferencesViewController *>(moduleAtRow(generalModuleRow));
}

SDApperancePreferencesViewController *
QWPreferencesWindowController::appearanceViewController() const
{
    return qobject_cast<SDApperancePreferencesViewController *>(moduleAtRow(themesModuleRow));
}

BackupsPreferencesViewController *QWPreferencesWindowController::backupsViewController() const
{
    return qobject_cast<BackupsPreferencesViewController *>(moduleAtRow(backupsModuleRow));
}

SyncPreferencesViewController *QWPreferencesWindowController::syncViewController() const
{
    return qobject_cast<SyncPreferencesViewController *>(moduleAtRow(syncModuleRow));
}

QWAboutViewController *QWPreferencesWindowController::aboutViewController() const
{
    return qobject_cast<QWAboutViewController *>(moduleAtRow(aboutModuleRow));
}

int QWPreferencesWindowController::numberOfRowsInTableView() const
{
    return int(m_modules.size());
}

bool QWPreferencesWindowController::tableViewShouldSelectRow(int) const
{
    return true;
}

void QWPreferencesWindowController::selectModuleAtRow(int row)
{
    window();
    if (!m_ui || !m_ui->tableView)
        return;
    m_ui->tableView->setCurrentRow(row, QItemSelectionModel::ClearAndSelect);
}

void QWPreferencesWindowController::tableViewSelectionDidChange()
{
    const QList<QListWidgetItem *> selected = m_ui->tableView->selectedItems();
    const int row = selected.isEmpty() ? -1 : m_ui->tableView->row(selected.first());
    QWModuleViewController *module = moduleAtRow(row);
    if (!module)
        return;
    module->setParentWindow(window());
    setCurrentModule(module);
}

void QWPreferencesWindowController::setCurrentModule(QWModuleViewController *module)
{
    if (!module || module == m_currentModule)
        return;
    QWModuleViewController *old = m_currentModule;
    if (old)
        old->qw_viewWillDisappear();
    module->qw_viewWillAppear();

    if (old) {
        if (QWidget *oldView = old->view()) {
            m_ui->moduleContentLayout->removeWidget(oldView);
            oldView->hide();
            oldView->setParent(nullptr);
        }
        old->setParentWindowController(nullptr);
        old->qw_viewDidDisappear();
        old->setModuleIsVisible(false);
    }
    module->setModuleIsVisible(true);
    m_currentModule = module;
    module->setParentWindowController(this);

    QWidget *view = module->view();
    module->setParentWindow(window());
    view->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);

    // The wanted size is read before the view joins the window, which sizes it to the area.
    const bool resizable = module->moduleIsResizable();
    if (!resizable && !window()->isFullScreen())
        resizeWindowIfNeededForViewControllerAnimated(module, true);
    qw_setResizable(resizable);

    m_ui->moduleContentLayout->addWidget(view);
    view->show();
    m_currentView = view;

    module->qw_viewDidAppear();

    const QString title = module->moduleWindowTitle().isEmpty() ? module->moduleTitle()
                                                                : module->moduleWindowTitle();
    if (!title.isEmpty())
        window()->setWindowTitle(title);
}

QSize QWPreferencesWindowController::wantedSizeOfModule(QWModuleViewController *module) const
{
    if (!module)
        return {};
    QSize wanted = module->viewMinSize();
    if (wanted.isEmpty()) {
        QWidget *view = module->view();
        // The interface file gives the size; the fonts of this desktop may need more.
        wanted = view ? view->size().expandedTo(view->minimumSizeHint()) : QSize();
        // Wrapped text needs as many lines as the page's width gives it.
        if (view && view->hasHeightForWidth())
            wanted.setHeight(std::max(wanted.height(), view->heightForWidth(wanted.width())));
    }
    return wanted;
}

int QWPreferencesWindowController::moduleAreaLeftEdge() const
{
    return m_ui->sidebarView->maximumWidth() + m_ui->separatorLine->sizeHint().width()
        + 2 * m_ui->contentLayout->spacing();
}

int QWPreferencesWindowController::verticalSpaceOutsideModuleArea() const
{
    // The module area runs from the window's top edge to its bottom edge.
    const QMargins margins = m_ui->contentLayout->contentsMargins();
    return margins.top() + margins.bottom();
}

bool QWPreferencesWindowController::resizeWindowIfNeededForViewControllerAnimated(
    QWModuleViewController *module, bool animated)
{
    const QSize wanted = wantedSizeOfModule(module);
    if (!isWindowLoaded() || wanted.isEmpty())
        return false;
    QWidget *shown = window();
    const QMargins sidebarMargins = m_ui->sidebarLayout->contentsMargins();
    const int rowsHeight = numberOfRowsInTableView()
        * (std::max(m_ui->tableView->sizeHintForRow(0), sidebarRowHeight)
            + m_ui->tableView->spacing());
    const int sidebarHeight = sidebarMargins.top() + sidebarMargins.bottom() + rowsHeight
        + 2 * m_ui->tableView->frameWidth();
    const int moduleHeight = wanted.height() + verticalSpaceOutsideModuleArea();
    const QSize size(wanted.width() + moduleAreaLeftEdge(), std::max(sidebarHeight, moduleHeight));
    qw_originalSetContentSizeAnimated(size, animated && shown->isVisible());
    return true;
}

QSize QWPreferencesWindowController::windowSizeWithController(QWModuleViewController *module)
{
    const QSize wanted = wantedSizeOfModule(module);
    return { wanted.width() + moduleAreaLeftEdge(),
        wanted.height() + verticalSpaceOutsideModuleArea() };
}

QSize QWPreferencesWindowController::windowWillResizeToSize(const QSize &proposed)
{
    if (!m_currentModule || m_currentModule->moduleIsResizable())
        return proposed;
    return windowSizeWithController(m_currentModule);
}

void QWPreferencesWindowController::qw_setResizable(bool resizable)
{
    m_resizable = resizable;
    QWidget *shown = window();
    if (m_resizeAnimation && m_resizeAnimation->state() == QAbstractAnimation::Running)
        return; // the animation applies the rule when it ends
    if (resizable) {
        shown->setMinimumSize(windowSizeWithController(m_currentModule));
        shown->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    } else {
        shown->setFixedSize(shown->size());
    }
}

void QWPreferencesWindowController::qw_originalSetContentSizeAnimated(
    const QSize &size, bool animated)
{
    QWidget *shown = window();
    if (m_resizeAnimation)
        m_resizeAnimation->stop();
    // The top-left corner stays where it is; only the size changes.
    shown->setMinimumSize(0, 0);
    shown->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    if (!animated) {
        shown->resize(size);
        if (!m_resizable)
            shown->setFixedSize(size);
        return;
    }
    auto *animation = new QPropertyAnimation(shown, "size", shown);
    animation->setDuration(resizeDuration);
    animation->setEndValue(size);
    connect(animation, &QPropertyAnimation::finished, this, [this, size] {
        if (!isWindowLoaded())
            return;
        window()->resize(size);
        qw_setResizable(m_resizable);
    });
    m_resizeAnimation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void QWPreferencesWindowController::showWindow()
{
    QWidget *shown = window();
    if (!m_wasShown) {
        m_wasShown = true;
        if (const QScreen *screen = QGuiApplication::screenAt(QCursor::pos())
                ? QGuiApplication::screenAt(QCursor::pos())
                : QGuiApplication::primaryScreen()) {
            QRect frame = shown->frameGeometry();
            frame.moveCenter(screen->availableGeometry().center());
            shown->move(frame.topLeft());
        }
    }
    QWWindowController::showWindow();
}

void QWPreferencesWindowController::actuallyShowWindow()
{
    if (m_currentModule)
        m_currentModule->qw_viewWillAppear();
    showWindow();
    if (m_currentModule)
        m_currentModule->qw_viewDidAppear();
}

void QWPreferencesWindowController::windowDidResignKey()
{
    for (const std::unique_ptr<QWModuleViewController> &module : m_modules)
        module->windowDidResignKey();
}

bool QWPreferencesWindowController::windowShouldClose()
{
    if (QWModuleViewController *themes = moduleAtRow(themesModuleRow);
        themes && !themes->windowShouldClose())
        return false;
    if (m_terminating || SNUserDefaults::suppressQuitAlert())
        return true;

    QMessageBox alert(QMessageBox::Information, windowTitleText(), quitAlertMessage(),
        QMessageBox::NoButton, window());
    alert.setInformativeText(quitAlertInformativeText());
    QPushButton *okay = alert.addButton(quitAlertButtonTitle(), QMessageBox::AcceptRole);
    alert.setDefaultButton(okay);
    alert.setCheckBox(new QCheckBox(tr("Do not show this message again"), &alert));
    AlertDismissalWatcher watcher(alert);
    const QAbstractButton *pressed = m_presenter->runAlert(alert);
    if (pressed == okay && !watcher.wasDismissed() && alert.checkBox()->isChecked())
        SNUserDefaults::setSuppressQuitAlert(true);
    return true;
}

bool QWPreferencesWindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (!isWindowLoaded() || watched != window())
        return QWWindowController::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Close:
        if (!windowShouldClose()) {
            event->ignore();
            return true;
        }
        announceWindowWillClose();
        break;
    case QEvent::WindowDeactivate:
        windowDidResignKey();
        break;
    case QEvent::MouseButtonPress: {
        // Dragging the window's background moves it; a click on it does nothing.
        const auto *press = static_cast<QMouseEvent *>(event);
        if (press->button() == Qt::LeftButton)
            m_dragOrigin = press->globalPosition().toPoint();
        break;
    }
    case QEvent::MouseMove: {
        const auto *move = static_cast<QMouseEvent *>(event);
        if (m_dragOrigin && move->buttons().testFlag(Qt::LeftButton)
            && (move->globalPosition().toPoint() - *m_dragOrigin).manhattanLength()
                >= QApplication::startDragDistance()) {
            m_dragOrigin.reset();
            if (window()->windowHandle())
                window()->windowHandle()->startSystemMove();
        }
        break;
    }
    case QEvent::MouseButtonRelease:
        m_dragOrigin.reset();
        break;
    default:
        break;
    }
    return QWWindowController::eventFilter(watched, event);
}
