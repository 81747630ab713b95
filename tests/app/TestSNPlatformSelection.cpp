#include "app/SNPlatformSelection.h"

#include <QTest>

class TestSNPlatformSelection final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void waylandSessionsRunThroughXWayland_data();
    void waylandSessionsRunThroughXWayland();
};

void TestSNPlatformSelection::waylandSessionsRunThroughXWayland_data()
{
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<QByteArray>("sessionType");
    QTest::addColumn<QByteArray>("waylandDisplay");
    QTest::addColumn<QByteArray>("x11Display");
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<QByteArray>("requested");

    const QList<QByteArray> none;
    QTest::newRow("wayland session") << none << QByteArray("wayland") << QByteArray("wayland-0")
                                     << QByteArray(":0") << QByteArray() << QByteArray("xcb");
    QTest::newRow("wayland display only") << none << QByteArray() << QByteArray("wayland-1")
                                          << QByteArray(":1") << QByteArray() << QByteArray("xcb");
    QTest::newRow("x11 session") << none << QByteArray("x11") << QByteArray() << QByteArray(":0")
                                 << QByteArray() << QByteArray();
    QTest::newRow("user chose wayland")
        << none << QByteArray("wayland") << QByteArray("wayland-0") << QByteArray(":0")
        << QByteArray("wayland") << QByteArray();
    QTest::newRow("platform argument")
        << QList<QByteArray> { "-platform", "wayland" } << QByteArray("wayland")
        << QByteArray("wayland-0") << QByteArray(":0") << QByteArray() << QByteArray();
    QTest::newRow("platform argument with =")
        << QList<QByteArray> { "--platform=wayland" } << QByteArray("wayland")
        << QByteArray("wayland-0") << QByteArray(":0") << QByteArray() << QByteArray();
    QTest::newRow("no XWayland to reach")
        << none << QByteArray("wayland") << QByteArray("wayland-0") << QByteArray() << QByteArray()
        << QByteArray();
    QTest::newRow("a file named like the option")
        << QList<QByteArray> { "-platform.rtf" } << QByteArray("wayland") << QByteArray("wayland-0")
        << QByteArray(":0") << QByteArray() << QByteArray("xcb");
}

void TestSNPlatformSelection::waylandSessionsRunThroughXWayland()
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

QTEST_GUILESS_MAIN(TestSNPlatformSelection)
#include "TestSNPlatformSelection.moc"
