#include "kit/widgets/QWWindowController.h"
#include "kit/widgets/QWWindowManager.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>
#include <QWindow>

class TestWindowController final : public QWWindowController
{
    Q_OBJECT

public:
    explicit TestWindowController(int offset) : m_offset(offset) { }

protected:
    std::unique_ptr<QWidget> loadWindow() override
    {
        auto window = std::make_unique<QWidget>(nullptr, Qt::Window | Qt::FramelessWindowHint);
        window->setGeometry(100 + m_offset, 100 + m_offset, 300, 200);
        return window;
    }

private:
    int m_offset;
};

static QList<WId> rootWindows(const QString &property)
{
    QProcess xprop;
    xprop.start(QStringLiteral("xprop"), { QStringLiteral("-root"), property });
    xprop.waitForFinished(5000);
    QList<WId> ids;
    const QRegularExpression hex(QStringLiteral("0x[0-9a-f]+"));
    for (const QRegularExpressionMatch &match :
        hex.globalMatch(QString::fromLocal8Bit(xprop.readAllStandardOutput())))
        ids.append(match.captured().toULongLong(nullptr, 16));
    return ids;
}

// The manager keeps the stacking order itself; a real window manager shows whether the order
// it restores is the one the user sees.
class TestQWWindowManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bringingToTheFrontRestoresTheStackingFromBeforeHiding();
};

void TestQWWindowManagerIntegration::bringingToTheFrontRestoresTheStackingFromBeforeHiding()
{
    QWWindowManager manager;
    auto *a = new TestWindowController(0);
    auto *b = new TestWindowController(50);
    auto *c = new TestWindowController(100);
    manager.addWindowControllers({ a, b, c });
    const auto id = [](QWWindowController *controller) {
        return controller->window()->windowHandle()->winId();
    };
    // Ours that are shown, front-most first.
    const auto stacking = [&] {
        QList<WId> shown;
        for (WId window : rootWindows(QStringLiteral("_NET_CLIENT_LIST_STACKING"))) {
            for (QWWindowController *controller : { a, b, c }) {
                if (controller->window()->isVisible() && id(controller) == window)
                    shown.prepend(window);
            }
        }
        return shown;
    };
    const auto active = [] { return rootWindows(QStringLiteral("_NET_ACTIVE_WINDOW")).value(0); };
    QTRY_COMPARE(stacking(), (QList<WId> { id(c), id(b), id(a) }));
    QTRY_COMPARE(active(), id(c));

    // The user brings a forward through the window manager, not through the program.
    QProcess::execute(
        QStringLiteral("xdotool"), { QStringLiteral("windowactivate"), QString::number(id(a)) });
    QTRY_COMPARE(stacking(), (QList<WId> { id(a), id(c), id(b) }));
    QTRY_VERIFY(a->window()->isActiveWindow());

    manager.hideAllWindowControllers();
    QTRY_VERIFY(stacking().isEmpty());
    manager.showWindow(b->window());
    QTRY_COMPARE(stacking(), QList<WId> { id(b) });

    manager.bringWindowControllersToTheFront();
    QTRY_COMPARE(stacking(), (QList<WId> { id(a), id(c), id(b) }));
    QTRY_COMPARE(active(), id(a));
    // And it stays so: nothing restacks the windows afterwards.
    QTest::qWait(300);
    QCOMPARE(stacking(), (QList<WId> { id(a), id(c), id(b) }));
}

QTEST_MAIN(TestQWWindowManagerIntegration)
#include "TestQWWindowManagerIntegration.moc"
