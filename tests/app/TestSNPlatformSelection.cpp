#include "app/SNPlatformSelection.h"

#include <QTest>

class TestSNPlatformSelection final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waylandSessionsRunThroughXWayland_data()
    {
        QTest::addColumn<QList<QByteArray>>("arguments");
        QTest::addColumn<QByteArray>("sessionType");
        QTest::addColumn<QByteArray>("waylandDisplay");
        QTest::addColumn<QByteArray>("x11Display");
        QTest::addColumn<QByteArray>("chosen");
        QTest::addColumn<QByteArray>("requested");

        const QList<QByteArray> none;
        const QByteArray wayland("wayland"), display("wayland-0"), x11(":0"), unset, xcb("xcb");
        QTest::newRow("wayland session") << none << wayland << display << x11 << unset << xcb;
        QTest::newRow("wayland display only") << none << unset << display << x11 << unset << xcb;
        QTest::newRow("x11 session") << none << QByteArray("x11") << unset << x11 << unset << unset;
        QTest::newRow("user chose wayland")
            << none << wayland << display << x11 << wayland << unset;
        QTest::newRow("platform argument") << QList<QByteArray> { "-platform", "wayland" }
                                           << wayland << display << x11 << unset << unset;
        QTest::newRow("platform argument with =") << QList<QByteArray> { "--platform=wayland" }
                                                  << wayland << display << x11 << unset << unset;
        QTest::newRow("no XWayland to reach")
            << none << wayland << display << unset << unset << unset;
        QTest::newRow("a file named like the option")
            << QList<QByteArray> { "-platform.rtf" } << wayland << display << x11 << unset << xcb;
    }

    void waylandSessionsRunThroughXWayland()
    {
        QFETCH(QList<QByteArray>, arguments);
        QFETCH(QByteArray, sessionType);
        QFETCH(QByteArray, waylandDisplay);
        QFETCH(QByteArray, x11Display);
        QFETCH(QByteArray, chosen);
        QFETCH(QByteArray, requested);
        QCOMPARE(SNPlatformSelection::platformToRequest(
                     arguments, sessionType, waylandDisplay, x11Display, chosen),
            requested);
    }
};

QTEST_GUILESS_MAIN(TestSNPlatformSelection)
#include "TestSNPlatformSelection.moc"
