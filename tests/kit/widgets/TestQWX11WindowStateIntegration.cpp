#include "kit/widgets/QWX11WindowState.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>
#include <QWindow>

#include <memory>

using Level = QWX11WindowState::Level;

namespace {

const QString above = QStringLiteral("_NET_WM_STATE_ABOVE");
const QString below = QStringLiteral("_NET_WM_STATE_BELOW");
const QString skipTaskbar = QStringLiteral("_NET_WM_STATE_SKIP_TASKBAR");
const QString allDesktops = QStringLiteral("4294967295");

// Qt replaces the X11 window of a window shown again after a change of level, and only its
// QWindow knows the new one.
WId nativeId(const QWidget &window)
{
    return window.windowHandle() ? window.windowHandle()->winId() : 0;
}

// What the X server holds, read by a program that is not ours: the value after "=" (after "#"
// for a window), or for WM_STATE the window state ("Normal" once the window manager shows it).
QString xprop(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xprop"), arguments);
    process.waitForFinished(5000);
    const QString output = QString::fromLocal8Bit(process.readAllStandardOutput());
    const QRegularExpressionMatch match
        = QRegularExpression(QStringLiteral("(?:= |window state: |# )(.*)")).match(output);
    return match.hasMatch() ? match.captured(1).trimmed() : QString();
}

QString property(const QWidget &window, const QString &name)
{
    return xprop({ QStringLiteral("-id"), QString::number(nativeId(window)), name });
}

QStringList states(const QWidget &window)
{
    return property(window, QStringLiteral("_NET_WM_STATE")).split(QStringLiteral(", "));
}

QString desktop(const QWidget &window)
{
    return property(window, QStringLiteral("_NET_WM_DESKTOP"));
}

bool isMapped(const QWidget &window)
{
    return property(window, QStringLiteral("WM_STATE")) == QStringLiteral("Normal");
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
    void init()
    {
        m_window = makeWindow();
        m_window->show();
        QTRY_VERIFY(isMapped(*m_window));
    }
    void cleanup() { m_window.reset(); }

    void eachLevelCarriesItsStateApartFromTheTaskbar();
    void statesSurviveHidingAndShowing();
    void statesSetBeforeTheFirstShowComeWithTheMapping();
    void activationIsGrantedWhileAnotherProgramIsActive();

private:
    // Frameless, as a note is: its geometry is its frame.
    std::unique_ptr<QWidget> makeWindow() const
    {
        auto window = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
        window->setGeometry(m_frame);
        return window;
    }
    void verifyShownInPlace(const QWidget &window) const
    {
        QVERIFY(window.isVisible());
        QVERIFY(isMapped(window));
        QCOMPARE(window.geometry(), m_frame);
    }

    const QRect m_frame { 200, 150, 240, 180 };
    std::unique_ptr<QWidget> m_window;
};

void TestQWX11WindowStateIntegration::eachLevelCarriesItsStateApartFromTheTaskbar()
{
    QWidget &window = *m_window;
    QWX11WindowState::setLevel(&window, Level::KeepAbove);
    QCOMPARE(QWX11WindowState::level(&window), Level::KeepAbove);
    QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QTRY_VERIFY(states(window).contains(above));
    QVERIFY(!states(window).contains(below));
    QVERIFY(desktop(window) != allDesktops);
    verifyShownInPlace(window);

    QWX11WindowState::setLevel(&window, Level::KeepBelow);
    QCOMPARE(window.windowFlags() & (Qt::WindowStaysOnTopHint | Qt::WindowStaysOnBottomHint),
        Qt::WindowStaysOnBottomHint);
    QVERIFY(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    QTRY_VERIFY(states(window).contains(below) && !states(window).contains(above));
    QTRY_COMPARE(desktop(window), allDesktops);
    verifyShownInPlace(window);

    QWX11WindowState::setLevel(&window, Level::Normal);
    QTRY_VERIFY(!states(window).contains(below) && !states(window).contains(above));
    QTRY_COMPARE(desktop(window), QStringLiteral("0")); // back on the workspace in view
    verifyShownInPlace(window);

    // The taskbar presence switches apart from the level.
    QVERIFY(!states(window).contains(skipTaskbar));
    QWX11WindowState::setSkipsTaskbar(&window, true);
    QVERIFY(QWX11WindowState::skipsTaskbar(&window));
    QWX11WindowState::setLevel(&window, Level::KeepAbove);
    QTRY_VERIFY(states(window).contains(skipTaskbar) && states(window).contains(above));
    QWX11WindowState::setSkipsTaskbar(&window, false);
    QTRY_VERIFY(!states(window).contains(skipTaskbar));
    QVERIFY(states(window).contains(above));
    verifyShownInPlace(window);
}

void TestQWX11WindowStateIntegration::statesSurviveHidingAndShowing()
{
    QWidget &window = *m_window;
    const auto hideAndShow = [&] {
        window.hide();
        QTRY_VERIFY(!isMapped(window));
        window.show();
        QTRY_VERIFY(isMapped(window));
    };
    QWX11WindowState::setLevel(&window, Level::KeepBelow);
    QWX11WindowState::setSkipsTaskbar(&window, true);
    QTRY_COMPARE(desktop(window), allDesktops);
    // A new X11 window after the change of level: the hints follow as requests.
    hideAndShow();
    QTRY_VERIFY(states(window).contains(below) && states(window).contains(skipTaskbar));
    QTRY_COMPARE(desktop(window), allDesktops);

    // Changed while hidden: back in the new state, with nothing of the old.
    window.hide();
    QWX11WindowState::setLevel(&window, Level::KeepAbove);
    QWX11WindowState::setSkipsTaskbar(&window, false);
    QVERIFY(!window.isVisible());
    window.show();
    QTRY_VERIFY(isMapped(window) && states(window).contains(above));
    QVERIFY(!states(window).contains(below) && !states(window).contains(skipTaskbar));
    QVERIFY(desktop(window) != allDesktops);
    verifyShownInPlace(window);

    // No change of level: the same X11 window, given its hints again before it is mapped.
    QWX11WindowState::setSkipsTaskbar(&window, true);
    QTRY_VERIFY(states(window).contains(skipTaskbar));
    const WId before = nativeId(window);
    hideAndShow();
    QCOMPARE(nativeId(window), before);
    QVERIFY(states(window).contains(above) && states(window).contains(skipTaskbar));
}

void TestQWX11WindowStateIntegration::statesSetBeforeTheFirstShowComeWithTheMapping()
{
    std::unique_ptr<QWidget> window = makeWindow();
    QWX11WindowState::setLevel(window.get(), Level::KeepBelow);
    QWX11WindowState::setSkipsTaskbar(window.get(), true);
    window->show();
    // Before any event is handled: the window manager takes the window in with them rather
    // than showing it in the taskbar first.
    QVERIFY(states(*window).contains(skipTaskbar));
    QCOMPARE(desktop(*window), allDesktops);
    QTRY_VERIFY(isMapped(*window) && states(*window).contains(below));
    QVERIFY(states(*window).contains(skipTaskbar));
    verifyShownInPlace(*window);
}

void TestQWX11WindowStateIntegration::activationIsGrantedWhileAnotherProgramIsActive()
{
    const auto active = [] {
        return xprop({ QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW") })
            .toULongLong(nullptr, 0);
    };
    // A new window of another program takes the focus under openbox.
    QProcess other;
    other.start(QStringLiteral("xmessage"),
        { QStringLiteral("-geometry"), QStringLiteral("+700+500"), QStringLiteral("other") });
    QVERIFY(other.waitForStarted());
    QTRY_VERIFY(active() != 0 && active() != nativeId(*m_window));
    QTRY_VERIFY(!m_window->isActiveWindow());

    QVERIFY(QWX11WindowState::requestActivation(m_window.get()));
    QTRY_COMPARE(active(), nativeId(*m_window));
    QTRY_VERIFY(m_window->isActiveWindow());

    // Nothing is asked for a hidden window.
    m_window->hide();
    QVERIFY(!QWX11WindowState::requestActivation(m_window.get()));
    other.kill();
    other.waitForFinished();
}

QTEST_MAIN(TestQWX11WindowStateIntegration)
#include "TestQWX11WindowStateIntegration.moc"
