#include "QWTestWindowController.h"
#include "kit/widgets/QWWindowManager.h"
#include "support/QWProgramDriver.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using QWProgramDriver::run;

// The manager keeps the stacking order itself; a real window manager shows whether the order
// it restores is the one the user sees.
class TestQWWindowManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bringingToTheFrontRestoresTheStackingFromBeforeHiding()
    {
        QWWindowManager manager;
        QList<QWWindowController *> c;
        QList<WId> id;
        for (int offset : { 0, 50, 100 }) {
            c.append(new QWTestWindowController(QRect(100 + offset, 100 + offset, 300, 200)));
            id.append(c.last()->window()->winId());
        }
        manager.addWindowControllers(c);
        // Ours that the window manager shows, front-most first, and the active window.
        const auto windows = [](const QString &property) {
            QList<WId> ids;
            const QString output = run(u"xprop"_s, { u"-root"_s, property });
            for (const auto &match : QRegularExpression(u"0x[0-9a-f]+"_s).globalMatch(output))
                ids.prepend(match.captured().toULongLong(nullptr, 16));
            return ids;
        };
        const auto stacking = [&] {
            QList<WId> shown = windows(u"_NET_CLIENT_LIST_STACKING"_s);
            shown.removeIf([&](WId window) { return !id.contains(window); });
            return shown;
        };
        const auto active = [&] { return windows(u"_NET_ACTIVE_WINDOW"_s).value(0); };
        QTRY_COMPARE(stacking(), (QList<WId> { id[2], id[1], id[0] }));
        QTRY_COMPARE(active(), id[2]);

        // The user brings the first forward through the window manager, not the program.
        run(u"xdotool"_s, { u"windowactivate"_s, QString::number(id[0]) });
        QTRY_COMPARE(stacking(), (QList<WId> { id[0], id[2], id[1] }));
        QTRY_VERIFY(c[0]->window()->isActiveWindow()); // what the program learns the order from
        manager.hideAllWindowControllers();
        QTRY_VERIFY(stacking().isEmpty());
        manager.showWindow(c[1]->window());
        QTRY_COMPARE(stacking(), QList<WId> { id[1] });

        manager.bringWindowControllersToTheFront();
        QTRY_COMPARE(stacking(), (QList<WId> { id[0], id[2], id[1] }));
        QTRY_COMPARE(active(), id[0]);
        // And it stays so: nothing restacks the windows afterwards.
        QTest::qWait(300);
        QCOMPARE(stacking(), (QList<WId> { id[0], id[2], id[1] }));
    }
};

QTEST_MAIN(TestQWWindowManagerIntegration)
#include "TestQWWindowManagerIntegration.moc"
