#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNTitleBarView.h"
#include "notewindow/SNWindowFrameString.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>

namespace {

// What an X tool prints, or nothing when it could not run.
QString runTool(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(10000) || process.exitCode() != 0)
        return {};
    return QString::fromLocal8Bit(process.readAllStandardOutput());
}

QString windowId(const QWidget *window)
{
    return QString::number(window->winId());
}

QString property(const QWidget *window, const QString &name)
{
    return runTool(QStringLiteral("xprop"), { QStringLiteral("-id"), windowId(window), name });
}

QStringList netWmStates(const QWidget *window)
{
    const QString line = property(window, QStringLiteral("_NET_WM_STATE"));
    const qsizetype equals = line.indexOf(QLatin1Char('='));
    if (equals < 0)
        return {};
    QStringList states = line.mid(equals + 1).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (QString &state : states)
        state = state.trimmed();
    return states;
}

QString desktop(const QWidget *window)
{
    const QString line = property(window, QStringLiteral("_NET_WM_DESKTOP"));
    const qsizetype equals = line.indexOf(QLatin1Char('='));
    return equals < 0 ? QString() : line.mid(equals + 1).trimmed();
}

// The window's frame as the X server has it, from a tool of its own.
QRect serverGeometry(const QWidget *window)
{
    const QString shell = runTool(QStringLiteral("xdotool"),
        { QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), windowId(window) });
    QHash<QString, int> values;
    for (const QString &line : shell.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList pair = line.split(QLatin1Char('='));
        if (pair.size() == 2)
            values.insert(pair[0], pair[1].toInt());
    }
    return QRect(values.value(QStringLiteral("X")), values.value(QStringLiteral("Y")),
        values.value(QStringLiteral("WIDTH")), values.value(QStringLiteral("HEIGHT")));
}

bool xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    const bool finished = process.waitForFinished(10000) && process.exitCode() == 0;
    // Let the program see what the tool did.
    QTest::qWait(50);
    return finished;
}

// The windows the window manager shows, bottom-most first.
QList<WId> stackingOrder()
{
    const QString line = runTool(QStringLiteral("xprop"),
        { QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING") });
    QList<WId> windows;
    const qsizetype hash = line.indexOf(QLatin1Char('#'));
    if (hash < 0)
        return windows;
    for (const QString &id : line.mid(hash + 1).split(QLatin1Char(','), Qt::SkipEmptyParts))
        windows.append(WId(id.trimmed().toULongLong(nullptr, 16)));
    return windows;
}

// Shows the question for real, notes where the window manager put it, then cancels.
class StackingPresenter final : public SNModalPresenter
{
public:
    QList<WId> windowsBelowTheQuestion;
    bool questionWasStacked = false;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        alert.show();
        questionWasStacked
            = QTest::qWaitFor([&] { return stackingOrder().contains(alert.winId()); }, 5000);
        QTest::qWait(200);
        const QList<WId> order = stackingOrder();
        windowsBelowTheQuestion = order.mid(0, order.indexOf(alert.winId()));
        alert.hide();
        const QList<QAbstractButton *> buttons = alert.buttons();
        for (QAbstractButton *button : buttons) {
            if (alert.buttonRole(button) == QMessageBox::RejectRole)
                return button;
        }
        return nullptr;
    }
};

} // namespace

// Note windows under a real window manager: window states, frames and moving by the title bar.
class TestSNStickyNoteWindowIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void pinStatesCarryTheWindowManagerStates();
    void opensAtItsStoredFrame();
    void draggingTheTitleBarMovesItAndTheArchive();
    void draggingACornerResizesIt();
    void noteStoredBeyondTheScreenOpensOnIt();
    void exportQuestionShowsAboveOtherWindows();

private:
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNoteWindowIntegration::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QVERIFY2(!runTool(QStringLiteral("xprop"),
                 { QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK") })
                  .isEmpty(),
        "no window manager");
}

void TestSNStickyNoteWindowIntegration::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
}

void TestSNStickyNoteWindowIntegration::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNStickyNoteWindowIntegration::pinStatesCarryTheWindowManagerStates()
{
    const QString above = QStringLiteral("_NET_WM_STATE_ABOVE");
    const QString below = QStringLiteral("_NET_WM_STATE_BELOW");
    const QString everyDesktop = QStringLiteral("4294967295");

    auto normal = noteWithText(QStringLiteral("Among the others"));
    auto floating = noteWithText(QStringLiteral("Above the others"));
    floating->setPinState(SNStickyNote::PinStateFloating);
    auto desktopNote = noteWithText(QStringLiteral("On the desktop"));
    desktopNote->setPinState(SNStickyNote::PinStateDesktop);
    auto normalController = openNote(normal);
    auto floatingController = openNote(floating);
    auto desktopController = openNote(desktopNote);

    QTRY_VERIFY(netWmStates(floatingController->window()).contains(above));
    QTRY_VERIFY(netWmStates(desktopController->window()).contains(below));
    QTRY_COMPARE(desktop(desktopController->window()), everyDesktop);
    QVERIFY(!netWmStates(floatingController->window()).contains(below));
    QVERIFY(!netWmStates(desktopController->window()).contains(above));
    QVERIFY(!netWmStates(normalController->window()).contains(above));
    QVERIFY(!netWmStates(normalController->window()).contains(below));
    QVERIFY(desktop(normalController->window()) != everyDesktop);

    // Chosen from the pin menu while shown.
    const QList<QAction *> items = normalController->menus()->pinMenu()->actions();
    items[2]->trigger();
    QTRY_VERIFY(netWmStates(normalController->window()).contains(below));
    QTRY_COMPARE(desktop(normalController->window()), everyDesktop);
    items[1]->trigger();
    QTRY_VERIFY(netWmStates(normalController->window()).contains(above));
    QTRY_VERIFY(!netWmStates(normalController->window()).contains(below));
    items[0]->trigger();
    QTRY_VERIFY(!netWmStates(normalController->window()).contains(above));
    QTRY_VERIFY(desktop(normalController->window()) != everyDesktop);
    QVERIFY(normalController->window()->isVisible());
}

void TestSNStickyNoteWindowIntegration::opensAtItsStoredFrame()
{
    auto note = noteWithText(QStringLiteral("Right here"));
    note->setWindowFrame(QStringLiteral("{{200, 150}, {280, 220}}"));
    auto controller = openNote(note);

    QTRY_COMPARE(serverGeometry(controller->window()), QRect(200, 150, 280, 220));
    QCOMPARE(controller->window()->geometry(), QRect(200, 150, 280, 220));
}

void TestSNStickyNoteWindowIntegration::draggingTheTitleBarMovesItAndTheArchive()
{
    const QString text = QStringLiteral("Drag me");
    auto note = noteWithText(text);
    note->setWindowFrame(QStringLiteral("{{300, 200}, {280, 220}}"));
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note);
    QWidget *window = controller->window();
    QTRY_COMPARE(serverGeometry(window), QRect(300, 200, 280, 220));
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);

    // An empty stretch of the title bar, between the close button and the others.
    const QPoint grab = window->mapToGlobal(
        QPoint(window->width() / 2, controller->collapser()->collapsedHeight() / 2));
    QVERIFY(window->childAt(window->mapFromGlobal(grab))
            == part<QWidget>(*controller, "buttonContainerView")
        || window->childAt(window->mapFromGlobal(grab))
            == part<QWidget>(*controller, "titleBarView"));
    QVERIFY(xdotool(
        { QStringLiteral("mousemove"), QString::number(grab.x()), QString::number(grab.y()) }));
    QVERIFY(xdotool({ QStringLiteral("mousedown"), QStringLiteral("1") }));
    for (int step = 1; step <= 10; ++step) {
        QVERIFY(xdotool({ QStringLiteral("mousemove"), QString::number(grab.x() + step * 12),
            QString::number(grab.y() + step * 8) }));
    }
    QVERIFY(xdotool({ QStringLiteral("mouseup"), QStringLiteral("1") }));

    // Moved by about as far as the pointer went (the move starts once the pointer has left
    // the spot of the press by a few pixels).
    QTRY_VERIFY(serverGeometry(window).x() >= 300 + 100);
    QTRY_COMPARE(window->geometry(), serverGeometry(window));
    const QRect moved = window->geometry();
    QVERIFY(moved.y() >= 200 + 60);
    QCOMPARE(moved.size(), QSize(280, 220));

    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    const auto archived = archivedNoteWithText(text);
    QVERIFY(archived);
    QCOMPARE(archived->windowFrame(), SNWindowFrameString::stringFromRect(moved));
    SNStickyNoteManager::sharedManager().removeNote(note);
}

void TestSNStickyNoteWindowIntegration::draggingACornerResizesIt()
{
    auto note = noteWithText(QStringLiteral("Grow me"));
    note->setWindowFrame(QStringLiteral("{{250, 180}, {280, 220}}"));
    auto controller = openNote(note);
    QWidget *window = controller->window();
    QTRY_COMPARE(serverGeometry(window), QRect(250, 180, 280, 220));

    // The last pixel of the lower right corner, over the text's scroll area.
    const QPoint corner = window->mapToGlobal(QPoint(window->width() - 2, window->height() - 2));
    QVERIFY(xdotool(
        { QStringLiteral("mousemove"), QString::number(corner.x()), QString::number(corner.y()) }));
    QVERIFY(xdotool({ QStringLiteral("mousedown"), QStringLiteral("1") }));
    for (int step = 1; step <= 10; ++step) {
        QVERIFY(xdotool({ QStringLiteral("mousemove"), QString::number(corner.x() + step * 8),
            QString::number(corner.y() + step * 6) }));
    }
    QVERIFY(xdotool({ QStringLiteral("mouseup"), QStringLiteral("1") }));

    QTRY_VERIFY(serverGeometry(window).width() >= 280 + 60);
    QTRY_COMPARE(window->geometry(), serverGeometry(window));
    QVERIFY(window->height() >= 220 + 40);
    // The top left corner stays where it was.
    QCOMPARE(window->geometry().topLeft(), QPoint(250, 180));
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    QCOMPARE(note->windowFrame(), SNWindowFrameString::stringFromRect(window->geometry()));
}

void TestSNStickyNoteWindowIntegration::noteStoredBeyondTheScreenOpensOnIt()
{
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    auto note = noteWithText(QStringLiteral("Far away"));
    note->setWindowFrame(SNWindowFrameString::stringFromRect(
        QRect(screen.right() + 1700, screen.bottom() + 1200, 280, 220)));
    auto controller = openNote(note);

    QTRY_VERIFY(screen.contains(serverGeometry(controller->window())));
    QCOMPARE(serverGeometry(controller->window()).size(), QSize(280, 220));
}

void TestSNStickyNoteWindowIntegration::exportQuestionShowsAboveOtherWindows()
{
    for (const qint64 pinState :
        { SNStickyNote::PinStateFloating, SNStickyNote::PinStateDesktop }) {
        auto presenter = std::make_shared<StackingPresenter>();
        auto note = noteWithText(QStringLiteral("Worth asking about"));
        note->setPinState(pinState);
        note->setWindowFrame(QStringLiteral("{{150, 150}, {280, 220}}"));
        auto controller = openNote(note, presenter);
        // Another program's window, over the same place.
        QWidget other;
        other.setGeometry(200, 180, 400, 300);
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(&other));
        QTRY_VERIFY(stackingOrder().contains(other.winId()));

        controller->close();

        QVERIFY(presenter->questionWasStacked);
        QVERIFY2(presenter->windowsBelowTheQuestion.contains(other.winId()),
            qPrintable(QStringLiteral("pin state %1").arg(pinState)));
        QVERIFY(presenter->windowsBelowTheQuestion.contains(controller->window()->winId()));
        QVERIFY(controller->window()->isVisible());
    }
}

QTEST_MAIN(TestSNStickyNoteWindowIntegration)
#include "TestSNStickyNoteWindowIntegration.moc"
