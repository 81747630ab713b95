#include "kit/widgets/QWX11WindowState.h"
#include "support/QWProgramDriver.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using Level = QWX11WindowState::Level;

namespace {

const QRect frame(200, 150, 240, 180);

// Frameless, as a note is: its geometry is its frame.
std::unique_ptr<QWidget> makeWindow()
{
    auto window = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
    window->setGeometry(frame);
    return window;
}

// Qt replaces the X11 window of a window shown again after a change of level: only its QWindow
// knows the new one.
WId nativeId(const QWidget &window)
{
    return window.windowHandle() ? window.windowHandle()->winId() : 0;
}

// What the X server holds, read by a program that is not ours: the value after "=" (after "#"
// for a window), or for WM_STATE the window state ("Normal" once the window manager shows it).
QString xprop(const QWidget *window, const QString &property)
{
    const QString id = window ? QString::number(nativeId(*window)) : QString();
    const QString output = QWProgramDriver::run(u"xprop"_s,
        window ? QStringList { u"-id"_s, id, property } : QStringList { u"-root"_s, property });
    return QRegularExpression(u"(?:= |window state: |# )(.*)"_s)
        .match(output)
        .captured(1)
        .trimmed();
}

bool isMapped(const QWidget &window)
{
    return xprop(&window, u"WM_STATE"_s) == u"Normal"_s;
}

// The states of ours among the window's, and its workspace (4294967295: all of them).
QString seen(const QWidget &window)
{
    QString result;
    const QStringList states = xprop(&window, u"_NET_WM_STATE"_s).split(u", "_s);
    for (const QString &state : { u"ABOVE"_s, u"BELOW"_s, u"SKIP_TASKBAR"_s }) {
        if (states.contains(u"_NET_WM_STATE_"_s + state))
            result += state + u' ';
    }
    return result + u"desktop "_s + xprop(&window, u"_NET_WM_DESKTOP"_s);
}

} // namespace

class TestQWX11WindowStateIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(QWX11WindowState::isX11(), "runs on an X server (tests/support/run-under-x11.sh)");
    }

    void statesReachTheWindowManager_data()
    {
        QTest::addColumn<QString>("when"); // the window is changed: shown, hidden, not yet shown
        QTest::addColumn<Level>("fromLevel");
        QTest::addColumn<bool>("fromSkips");
        QTest::addColumn<Level>("level");
        QTest::addColumn<bool>("skips");
        QTest::addColumn<QString>("seen");
        const QString below = u"BELOW SKIP_TASKBAR desktop 4294967295"_s;
        QTest::newRow("kept above, out of the taskbar")
            << u"shown"_s << Level::Normal << false << Level::KeepAbove << true
            << u"ABOVE SKIP_TASKBAR desktop 0"_s;
        QTest::newRow("kept below, out of the taskbar")
            << u"shown"_s << Level::KeepAbove << false << Level::KeepBelow << true << below;
        QTest::newRow("back to normal, on the workspace in view")
            << u"shown"_s << Level::KeepBelow << true << Level::Normal << false << u"desktop 0"_s;
        // Nothing of the old state is left.
        QTest::newRow("changed while hidden") << u"hidden"_s << Level::KeepBelow << true
                                              << Level::KeepAbove << false << u"ABOVE desktop 0"_s;
        // The window manager takes the window in with them rather than showing it in the
        // taskbar first: they are there before any event is handled.
        QTest::newRow("before the first show")
            << u"not yet shown"_s << Level::Normal << false << Level::KeepBelow << true << below;
    }

    void statesReachTheWindowManager()
    {
        QFETCH(QString, when);
        QFETCH(Level, fromLevel);
        QFETCH(bool, fromSkips);
        QFETCH(Level, level);
        QFETCH(bool, skips);
        QFETCH(QString, seen);
        const std::unique_ptr<QWidget> window = makeWindow();
        QWX11WindowState::setLevel(window.get(), fromLevel);
        QWX11WindowState::setSkipsTaskbar(window.get(), fromSkips);
        if (when != u"not yet shown") {
            window->show();
            QTRY_VERIFY(isMapped(*window));
            if (when == u"hidden")
                window->hide();
        }
        QWX11WindowState::setLevel(window.get(), level);
        QWX11WindowState::setSkipsTaskbar(window.get(), skips);
        QVERIFY(window->windowFlags().testFlag(Qt::FramelessWindowHint));
        window->show();
        if (when == u"not yet shown")
            QCOMPARE(::seen(*window), seen);
        for (int round = 0; round < 2; ++round) { // shown where it was, again after hiding
            QTRY_COMPARE(::seen(*window), seen);
            QTRY_VERIFY(isMapped(*window));
            QCOMPARE(window->geometry(), frame);
            window->hide();
            QTRY_VERIFY(!isMapped(*window));
            window->show();
        }
    }

    void activationIsGrantedWhileAnotherProgramIsActive()
    {
        const std::unique_ptr<QWidget> window = makeWindow();
        window->show();
        QTRY_VERIFY(isMapped(*window));
        const auto active
            = [] { return xprop(nullptr, u"_NET_ACTIVE_WINDOW"_s).toULongLong(nullptr, 0); };
        // A new window of another program takes the focus under openbox.
        QProcess other;
        other.start(u"xmessage"_s, { u"-geometry"_s, u"+700+500"_s, u"other"_s });
        QVERIFY(other.waitForStarted());
        QTRY_VERIFY(active() != 0 && active() != nativeId(*window));
        QTRY_VERIFY(!window->isActiveWindow());

        QVERIFY(QWX11WindowState::requestActivation(window.get()));
        QTRY_COMPARE(active(), nativeId(*window));
        QTRY_VERIFY(window->isActiveWindow());
        other.kill();
        other.waitForFinished();
    }
};

QTEST_MAIN(TestQWX11WindowStateIntegration)
#include "TestQWX11WindowStateIntegration.moc"
