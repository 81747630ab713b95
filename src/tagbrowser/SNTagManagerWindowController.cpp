#include "tagbrowser/SNTagManagerWindowController.h"

#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/QWX11WindowState.h"
#include "tagbrowser/SNTagCloudView.h"
#include "tagbrowser/SNTagSearchField.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"
#include "ui_SNTagManagerWindowController.h"

#include <QApplication>
#include <QCursor>
#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QRegion>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <functional>

namespace {

constexpr double panelCornerRadius = 12.0;

// Sees every key release of the program before its receiver does.
class KeyUpMonitor final : public QObject
{
public:
    using Handler = std::function<bool(QKeyEvent *event)>;

    explicit KeyUpMonitor(Handler handler) : m_handler(std::move(handler))
    {
        qApp->installEventFilter(this);
    }
    ~KeyUpMonitor() override { qApp->removeEventFilter(this); }
    KeyUpMonitor(const KeyUpMonitor &) = delete;
    KeyUpMonitor &operator=(const KeyUpMonitor &) = delete;

    bool eventFilter(QObject *, QEvent *event) override
    {
        return event->type() == QEvent::KeyRelease && m_handler(static_cast<QKeyEvent *>(event));
    }

private:
    Handler m_handler;
};

} // namespace

QString SNTagManagerWindowController::allNotesShownText()
{
    return tr("All notes are currently shown");
}

QString SNTagManagerWindowController::addTagsText()
{
    return tr("Add #tags to your #notes by using the #hashtag");
}

SNTagManagerWindowController::SNTagManagerWindowController(QObject *parent)
    : QWWindowController(parent)
{ }

SNTagManagerWindowController::~SNTagManagerWindowController()
{
    m_localEventMonitor.reset();
    m_tagsObservation.cancel();
    if (m_ui) {
        // The cloud outlives this part of the controller by a moment: the base class owns the
        // window.
        m_ui->tagCloudView->setDataSource(nullptr);
        m_ui->tagCloudView->setDelegate(nullptr);
        m_ui->searchField->setCommandHandler(nullptr);
        window()->removeEventFilter(this);
    }
}

std::unique_ptr<SNTagManagerWindowController> SNTagManagerWindowController::controller()
{
    auto made = std::make_unique<SNTagManagerWindowController>();
    made->window();
    return made;
}

std::unique_ptr<QWidget> SNTagManagerWindowController::loadWindow()
{
    auto window = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
    m_ui = std::make_unique<Ui::SNTagManagerWindowController>();
    m_ui->setupUi(window.get());
    // A second window of the browser's own, transparent, one level under it. An interface file
    // holds one window, so it is made here.
    m_overlayWindow = std::make_unique<QWidget>(nullptr, Qt::Tool | Qt::FramelessWindowHint);
    return window;
}

void SNTagManagerWindowController::qw_viewDidLoad()
{
    QWidget *browser = window();
    m_ui->tagCloudView->setDataSource(this);
    m_ui->tagCloudView->setDelegate(this);
    m_ui->searchField->setCommandHandler(
        [this](const QString &command) { return doCommandBySelector(command); });
    connect(m_ui->searchField, &SNTagSearchField::textChanged, this,
        &SNTagManagerWindowController::controlTextDidChange);
    connect(m_ui->searchField, &SNTagSearchField::searchFinished, this,
        [this] { finishedSearching(m_ui->searchField); });

    // The panel draws its own rounded background; the rest of the window is clear.
    browser->setAttribute(Qt::WA_TranslucentBackground);
    browser->installEventFilter(this);
    m_ui->scrollView->viewport()->setAutoFillBackground(false);
    m_ui->tagCloudView->setAutoFillBackground(false);
    m_ui->scrollView->setStyleSheet(
        QStringLiteral("QScrollArea, QScrollArea > QWidget { background: transparent; }"));
    m_ui->searchField->setStyleSheet(QStringLiteral(
        "SNTagSearchField { background: white; color: black; border: 1px solid rgba(0,0,0,38);"
        " border-radius: 8px; padding: 3px 8px; }"));
    QFont searchFont = m_ui->searchField->font();
    searchFont.setPointSizeF(15.0);
    m_ui->searchField->setFont(searchFont);
    m_ui->searchField->setFixedHeight(m_ui->searchField->sizeHint().height());
    // As low as the search field and one line of the cloud.
    const QMargins margins = browser->layout()->contentsMargins();
    browser->setMinimumHeight(margins.top() + m_ui->searchField->height()
        + browser->layout()->spacing() + SNTagCloudView::lineHeight + margins.bottom());
    browser->resize(browser->width(), browser->minimumHeight());
    m_ui->scrollView->verticalScrollBar()->setStyleSheet(QStringLiteral(
        "QScrollBar:vertical { background: transparent; width: 8px; margin: 0; }"
        " QScrollBar::handle:vertical { background: rgba(0,0,0,70); border-radius: 4px;"
        " min-height: 24px; }"
        " QScrollBar::add-line, QScrollBar::sub-line { height: 0; }"
        " QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }"));
    QPalette labelPalette = m_ui->emptyLabel->palette();
    labelPalette.setColor(QPalette::WindowText, QColor(80, 80, 86));
    m_ui->emptyLabel->setPalette(labelPalette);
    QFont labelFont = m_ui->emptyLabel->font();
    labelFont.setPointSizeF(13.0);
    m_ui->emptyLabel->setFont(labelFont);

    awakeFromNib();
}

void SNTagManagerWindowController::awakeFromNib()
{
    QWidget *browser = window();
    m_tagsObservation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
        SNTagManager::updatedTagsNotification, nullptr,
        [this](const QWNotification &) { reloadData(); });

    // The key-up monitor: Escape, on its release anywhere in the program, closes the browser.
    const QPointer<SNTagManagerWindowController> weakSelf(this);
    m_localEventMonitor = std::make_unique<KeyUpMonitor>([weakSelf](QKeyEvent *event) {
        if (event->key() != Qt::Key_Escape || event->isAutoRepeat() || !weakSelf
            || !weakSelf->isOpen())
            return false;
        weakSelf->close(nullptr);
        return true;
    });

    m_selectedTags.clear();

    m_overlayWindow->setAttribute(Qt::WA_TranslucentBackground);
    m_overlayWindow->setWindowOpacity(1.0);
    QWX11WindowState::setLevel(m_overlayWindow.get(), QWX11WindowState::Level::KeepAbove);
    QWX11WindowState::setSkipsTaskbar(m_overlayWindow.get(), true);

    // The browser floats one level above the overlay: above every normal window, as the notes
    // it shows will be.
    browser->setWindowOpacity(1.0);
    QWX11WindowState::setLevel(browser, QWX11WindowState::Level::KeepAbove);
    QWX11WindowState::setSkipsTaskbar(browser, true);

    auto *shadow = new QGraphicsDropShadowEffect(m_ui->searchField);
    shadow->setBlurRadius(2.0);
    shadow->setOffset(0.0, 2.0);
    shadow->setColor(QColor::fromRgbF(0.0f, 0.0f, 0.0f, 0.35f));
    m_ui->searchField->setGraphicsEffect(shadow);

    reloadData();
}

SNTagSearchField *SNTagManagerWindowController::searchField()
{
    window();
    return m_ui ? m_ui->searchField : nullptr;
}

SNTagCloudView *SNTagManagerWindowController::tagCloudView()
{
    window();
    return m_ui ? m_ui->tagCloudView : nullptr;
}

QScrollArea *SNTagManagerWindowController::scrollView()
{
    window();
    return m_ui ? m_ui->scrollView : nullptr;
}

QLabel *SNTagManagerWindowController::emptyLabel()
{
    window();
    return m_ui ? m_ui->emptyLabel : nullptr;
}

void SNTagManagerWindowController::setSelectedTags(const QList<std::shared_ptr<SNTag>> &tags)
{
    m_selectedTags = tags;
    reloadData();
}

// MARK: - Opening and closing

void SNTagManagerWindowController::showWindow()
{
    if (!window())
        return;
    showOverlayWindow();
    m_ui->searchField->setFocus();
    showMainWindow();
    Q_EMIT notesWillBeBrowsed();
    m_isOpen = true;
}

void SNTagManagerWindowController::showMainWindow()
{
    QWidget *browser = window();
    QScreen *screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (screen) {
        // Centred across, and a little above the middle, as it grows downwards with the cloud.
        const QRect area = screen->availableGeometry();
        const QSize size = browser->size();
        browser->move(area.x() + (area.width() - size.width()) / 2,
            area.y() + (area.height() - size.height()) / 3);
    }
    QWWindowManager::sharedManager().showWindow(browser);
}

void SNTagManagerWindowController::close(QObject *sender)
{
    Q_UNUSED(sender);
    if (!m_isOpen || m_isClosing)
        return;
    m_isClosing = true;
    Q_EMIT notesShouldBePutBack();

    // After the event that asked for it has been handled.
    QTimer::singleShot(0, this, [this] {
        m_overlayWindow->close();
        window()->close();
        m_isOpen = false;
        m_isClosing = false;
    });
}

void SNTagManagerWindowController::finishedSearching(QObject *sender)
{
    Q_UNUSED(sender);
    close(nullptr);
}

void SNTagManagerWindowController::windowDidResignKey()
{
    if (!m_isOpen)
        return;
    // A note shown for a tag may not take the focus from the browser: it takes it back.
    if (const QWidget *active = QApplication::activeWindow();
        active && active != window() && active->testAttribute(Qt::WA_ShowWithoutActivating)) {
        QWWindowManager::sharedManager().showWindow(window());
        return;
    }
    close(nullptr);
}

bool SNTagManagerWindowController::doCommandBySelector(const QString &command)
{
    // Escape closes the browser on its release; its press must not clear the search first.
    return command == SNTagSearchField::cancelCommand();
}

// MARK: - Searching

void SNTagManagerWindowController::controlTextDidChange()
{
    tokenizeTags();
    bringWindowsToFront();
}

void SNTagManagerWindowController::tokenizeTags()
{
    SNTagSearchField *field = searchField();
    const QString text = field->text();
    if (text.isEmpty()) {
        setSelectedTags({});
        return;
    }
    // The hashtags of a search text, as the notes write them.
    const QList<SNHashtagScanner::Occurrence> occurrences
        = SNHashtagScanner::occurrencesInString(text);
    if (occurrences.isEmpty()) {
        setSelectedTags({});
        return;
    }

    // Colours only: the text, the cursor and what the user is typing stay as they are.
    const QSignalBlocker blocker(field);
    QTextCursor cursor(field->document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.setCharFormat(QTextCharFormat());
    QList<std::shared_ptr<SNTag>> selection;
    SNTagManager &index = SNTagManager::sharedManager();
    for (const SNHashtagScanner::Occurrence &occurrence : occurrences) {
        const std::shared_ptr<SNTag> tag = index.tagWithName(occurrence.name);
        QTextCharFormat colour;
        if (tag) {
            selection.append(tag);
            colour.setForeground(tag->tagColor().toQColor());
        } else {
            colour.setForeground(QColor(Qt::black));
        }
        cursor.setPosition(int(occurrence.start));
        cursor.setPosition(int(occurrence.start + occurrence.length), QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(colour);
    }
    cursor.endEditBlock();
    setSelectedTags(selection);
}

void SNTagManagerWindowController::bringWindowsToFront()
{
    Q_EMIT tagsWerePicked(m_selectedTags, window());
}

// MARK: - The cloud

void SNTagManagerWindowController::reloadData()
{
    if (!m_ui)
        return;
    QList<std::shared_ptr<SNTag>> tags = SNTagManager::sharedManager().tags();
    tags.removeIf(
        [this](const std::shared_ptr<SNTag> &tag) { return m_selectedTags.contains(tag); });
    m_tagsArray = tags;
    const bool allSelected = m_tagsArray.isEmpty() && SNTagManager::sharedManager().count() > 0;
    m_ui->emptyLabel->setText(allSelected ? allNotesShownText() : addTagsText());

    fitCloudToScrollView(false);
    m_ui->tagCloudView->reloadData();

    if (m_tagsArray.isEmpty()) {
        m_ui->emptyLabel->show();
        m_ui->scrollView->hide();
        return;
    }
    m_ui->emptyLabel->hide();
    m_ui->scrollView->show();
    QWidget *browser = window();
    const int cloudHeight = m_ui->tagCloudView->height();
    const int minimumHeight = browser->minimumHeight();
    const int height = std::min(maximumContentHeight,
        cloudHeight > SNTagCloudView::lineHeight
            ? cloudHeight - SNTagCloudView::lineHeight + minimumHeight
            : minimumHeight);
    setContentSize(QSize(browser->width(), height));
    // A cloud taller than the room left scrolls, and its scroll bar narrows the room across.
    const int visibleHeight = height - (minimumHeight - SNTagCloudView::lineHeight);
    if (cloudHeight > visibleHeight) {
        fitCloudToScrollView(true);
        m_ui->tagCloudView->positionButtons(true);
    }
    m_ui->scrollView->verticalScrollBar()->setValue(0);
}

void SNTagManagerWindowController::fitCloudToScrollView(bool withScrollBar)
{
    // Worked out from the window: the scroll view's own sizes follow only once it is shown.
    QWidget *browser = window();
    const QMargins margins = browser->layout()->contentsMargins();
    int width = browser->width() - margins.left() - margins.right();
    if (withScrollBar)
        width -= m_ui->scrollView->verticalScrollBar()->sizeHint().width();
    m_ui->tagCloudView->resize(width, m_ui->tagCloudView->height());
}

void SNTagManagerWindowController::setContentSize(const QSize &size)
{
    window()->resize(size);
    if (QLayout *layout = window()->layout())
        layout->activate();
    updateMask();
}

qint64 SNTagManagerWindowController::numberOfItemsInTagCloud(SNTagCloudView *)
{
    return m_tagsArray.size();
}

std::shared_ptr<SNTag> SNTagManagerWindowController::tagCloudViewTagForIndex(
    SNTagCloudView *, qint64 index)
{
    return index >= 0 && index < m_tagsArray.size() ? m_tagsArray.at(index) : nullptr;
}

void SNTagManagerWindowController::tagCloudViewItemWasClickedAtIndex(SNTagCloudView *, qint64 index)
{
    const std::shared_ptr<SNTag> tag = tagCloudViewTagForIndex(nullptr, index);
    if (!tag || m_selectedTags.contains(tag))
        return;
    SNTagSearchField *field = searchField();
    {
        const QSignalBlocker blocker(field);
        const QString name = QStringLiteral("%1 ").arg(tag->name());
        if (QGuiApplication::keyboardModifiers().testFlag(Qt::ShiftModifier))
            field->setText(field->text() + name);
        else
            field->setText(name);
        field->moveCursorToEnd();
    }
    tokenizeTags();
    bringWindowsToFront();
}

// MARK: - Events

bool SNTagManagerWindowController::eventFilter(QObject *watched, QEvent *event)
{
    QWidget *browser = isWindowLoaded() ? window() : nullptr;
    if (!browser || watched != browser)
        return false;
    switch (event->type()) {
    case QEvent::Paint:
        paintBackground();
        return false;
    case QEvent::Resize:
        updateMask();
        return false;
    case QEvent::WindowDeactivate:
        windowDidResignKey();
        return false;
    case QEvent::MouseButtonPress:
        // Moved by its background.
        if (static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton
            && browser->windowHandle()) {
            browser->windowHandle()->startSystemMove();
            return true;
        }
        return false;
    case QEvent::Close:
        announceWindowWillClose();
        return false;
    default:
        return false;
    }
}

void SNTagManagerWindowController::paintBackground()
{
    QWidget *browser = window();
    QPainter painter(browser);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(browser->rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath panel;
    panel.addRoundedRect(frame, panelCornerRadius, panelCornerRadius);
    painter.fillPath(panel, QColor(242, 242, 245, 235));
    painter.setPen(QPen(QColor(0, 0, 0, 60), 1.0));
    painter.drawPath(panel);
}

void SNTagManagerWindowController::updateMask()
{
    // Without a compositor the clear corners would show black: cut them off.
    QWidget *browser = window();
    QPainterPath panel;
    panel.addRoundedRect(QRectF(browser->rect()), panelCornerRadius, panelCornerRadius);
    browser->setMask(QRegion(panel.toFillPolygon().toPolygon()));
}
