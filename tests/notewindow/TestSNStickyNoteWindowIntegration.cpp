#include "SNNoteWindowTestSupport.h"
#include "notes/SNWindowFrameString.h"
#include "notewindow/SNNoteCollapser.h"
#include "notewindow/SNNoteMenus.h"
#include "support/QWProgramDriver.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

// The value of a property of the window (of the root window without one), after the "=" or
// "#" of xprop's line.
QString xprop(const QString &name, const QWidget *window = nullptr)
{
    const QString line = QWProgramDriver::run(u"xprop"_s,
        window ? QStringList { u"-id"_s, QString::number(window->winId()), name }
               : QStringList { u"-root"_s, name });
    const qsizetype mark = line.indexOf(QRegularExpression(u"[=#]"_s));
    return mark < 0 ? QString() : line.mid(mark + 1).trimmed();
}

// Where the window manager keeps the window: above or below the others, on every desktop.
QString placement(const QWidget *window)
{
    const QString state = xprop(u"_NET_WM_STATE"_s, window);
    QStringList words;
    if (state.contains(u"_NET_WM_STATE_ABOVE"_s))
        words.append(u"above"_s);
    if (state.contains(u"_NET_WM_STATE_BELOW"_s))
        words.append(u"below"_s);
    if (xprop(u"_NET_WM_DESKTOP"_s, window) == u"4294967295"_s)
        words.append(u"on every desktop"_s);
    return words.join(u' ');
}

// The window's frame as the X server has it.
QRect serverGeometry(const QWidget *window)
{
    return QWProgramDriver::windowGeometry(QString::number(window->winId()));
}

// Presses the first button at the point and drags by ten steps, as a person does, letting the
// program see each step.
void drag(const QPoint &from, const QPoint &step)
{
    const auto xdotool = [](const QStringList &arguments) {
        QWProgramDriver::xdotool(arguments);
        QTest::qWait(50);
    };
    xdotool({ u"mousemove"_s, QString::number(from.x()), QString::number(from.y()) });
    xdotool({ u"mousedown"_s, u"1"_s });
    for (int i = 1; i <= 10; ++i) {
        const QPoint to = from + step * i;
        xdotool({ u"mousemove"_s, QString::number(to.x()), QString::number(to.y()) });
    }
    xdotool({ u"mouseup"_s, u"1"_s });
}

// The windows the window manager shows, bottom-most first.
QList<WId> stackingOrder()
{
    QList<WId> windows;
    const QStringList ids = xprop(u"_NET_CLIENT_LIST_STACKING"_s).split(u',', Qt::SkipEmptyParts);
    for (const QString &id : ids)
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
        for (QAbstractButton *button : alert.buttons()) {
            if (alert.buttonRole(button) == QMessageBox::RejectRole)
                return button;
        }
        return nullptr;
    }
};

} // namespace

// Note windows under a real window manager: window states, frames, moving and resizing by the
// pointer, and the question above other windows.
class TestSNStickyNoteWindowIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), u"xcb"_s);
        QVERIFY2(!xprop(u"_NET_SUPPORTING_WM_CHECK"_s).isEmpty(), "no window manager");
    }

    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void pinStatesCarryTheWindowManagerStates()
    {
        auto floating = noteWithText(u"Above the others"_s);
        floating->setPinState(SNStickyNote::PinStateFloating);
        auto onDesktop = noteWithText(u"On the desktop"_s);
        onDesktop->setPinState(SNStickyNote::PinStateDesktop);
        auto normal = openNote(noteWithText(u"Among the others"_s));
        auto floatingController = openNote(floating);
        auto desktopController = openNote(onDesktop);

        QTRY_COMPARE(placement(floatingController->window()), u"above"_s);
        QTRY_COMPARE(placement(desktopController->window()), u"below on every desktop"_s);
        QCOMPARE(placement(normal->window()), QString());

        // Chosen from the pin menu while shown.
        const QList<QAction *> items = normal->menus()->pinMenu()->actions();
        const std::pair<int, QString> choices[]
            = { { 2, u"below on every desktop"_s }, { 1, u"above"_s }, { 0, QString() } };
        for (const auto &[pinState, expected] : choices) {
            items[pinState]->trigger();
            QTRY_COMPARE(placement(normal->window()), expected);
        }
        QVERIFY(normal->window()->isVisible());
    }

    void opensAtItsStoredFrameOrOnTheScreen()
    {
        auto note = noteWithText(u"Right here"_s);
        note->setWindowFrame(u"{{200, 150}, {280, 220}}"_s);
        auto controller = openNote(note);
        QTRY_COMPARE(serverGeometry(controller->window()), QRect(200, 150, 280, 220));
        QCOMPARE(controller->window()->geometry(), QRect(200, 150, 280, 220));

        // One stored beyond the screen, as after a monitor was unplugged, opens on it.
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        auto lost = noteWithText(u"Far away"_s);
        lost->setWindowFrame(SNWindowFrameString::stringFromRect(
            QRect(screen.right() + 1700, screen.bottom() + 1200, 280, 220)));
        auto lostController = openNote(lost);
        QTRY_VERIFY(screen.contains(serverGeometry(lostController->window())));
        QCOMPARE(serverGeometry(lostController->window()).size(), QSize(280, 220));
    }

    void draggingTheTitleBarMovesItAndTheArchive()
    {
        const QString text = u"Drag me"_s;
        auto note = noteWithText(text);
        note->setWindowFrame(u"{{300, 200}, {280, 220}}"_s);
        SNStickyNoteManager::sharedManager().addNote(note);
        auto controller = openNote(note);
        QWidget *window = controller->window();
        QTRY_COMPARE(serverGeometry(window), QRect(300, 200, 280, 220));
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);

        // An empty stretch of the title bar, between the close button and the others.
        const QPoint grab(window->width() / 2, controller->collapser()->collapsedHeight() / 2);
        QVERIFY(QList<QWidget *>({ part<QWidget>(*controller, "buttonContainerView"),
                                     part<QWidget>(*controller, "titleBarView") })
                    .contains(window->childAt(grab)));
        drag(window->mapToGlobal(grab), QPoint(12, 8));

        // Moved by about as far as the pointer went (the move starts once the pointer has left
        // the spot of the press by a few pixels).
        QTRY_VERIFY(serverGeometry(window).x() >= 300 + 100);
        QTRY_COMPARE(window->geometry(), serverGeometry(window));
        const QRect moved = window->geometry();
        QVERIFY(moved.y() >= 200 + 60);
        QCOMPARE(moved.size(), QSize(280, 220));
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QCOMPARE(
            archivedNoteWithText(text)->windowFrame(), SNWindowFrameString::stringFromRect(moved));
    }

    void draggingACornerResizesIt()
    {
        auto note = noteWithText(u"Grow me"_s);
        note->setWindowFrame(u"{{250, 180}, {280, 220}}"_s);
        auto controller = openNote(note);
        QWidget *window = controller->window();
        QTRY_COMPARE(serverGeometry(window), QRect(250, 180, 280, 220));

        // The last pixel of the lower right corner, over the text's scroll area.
        drag(window->mapToGlobal(QPoint(window->width() - 2, window->height() - 2)), QPoint(8, 6));

        QTRY_VERIFY(serverGeometry(window).width() >= 280 + 60);
        QTRY_COMPARE(window->geometry(), serverGeometry(window));
        QVERIFY(window->height() >= 220 + 40);
        // The top left corner stays where it was.
        QCOMPARE(window->geometry().topLeft(), QPoint(250, 180));
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        QCOMPARE(note->windowFrame(), SNWindowFrameString::stringFromRect(window->geometry()));
    }

    void exportQuestionShowsAboveOtherWindows()
    {
        for (const qint64 pinState :
            { SNStickyNote::PinStateFloating, SNStickyNote::PinStateDesktop }) {
            auto presenter = std::make_shared<StackingPresenter>();
            auto note = noteWithText(u"Worth asking about"_s);
            note->setPinState(pinState);
            note->setWindowFrame(u"{{150, 150}, {280, 220}}"_s);
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
                qPrintable(u"pin state %1"_s.arg(pinState)));
            QVERIFY(presenter->windowsBelowTheQuestion.contains(controller->window()->winId()));
            QVERIFY(controller->window()->isVisible());
        }
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNStickyNoteWindowIntegration)
#include "TestSNStickyNoteWindowIntegration.moc"
