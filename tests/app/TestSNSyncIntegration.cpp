#include "support/QWSyncthingPeer.h"

#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestSNSyncIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void notesCrossBetweenTwoComputers()
    {
        QWSyncthingPeer a(u"a"_s);
        QWSyncthingPeer b(u"b"_s);
        QVERIFY(a.isValid() && b.isValid());
        QVERIFY2(a.start(b), a.log().constData());
        QVERIFY2(b.start(a), b.log().constData());

        // Syncthing alone first: a file written on one side reaches the other.
        QFile probe(a.folderPath() + u"/probe.txt"_s);
        QVERIFY(probe.open(QIODevice::WriteOnly));
        probe.write("carried");
        probe.close();
        QTRY_COMPARE_WITH_TIMEOUT(contents(b.folderPath() + u"/probe.txt"_s), "carried", 60000);
        QTRY_VERIFY_WITH_TIMEOUT(QWSyncthingPeer::inSync(a, b), 60000);
        QVERIFY(a.setPeerPaused(b, true));
        QFile probe2(b.folderPath() + u"/probe2.txt"_s);
        QVERIFY(probe2.open(QIODevice::WriteOnly));
        probe2.write("later");
        probe2.close();
        QVERIFY(!QWSyncthingPeer::inSync(a, b));
        QVERIFY(!QFile::exists(a.folderPath() + u"/probe2.txt"_s));
        QVERIFY(a.setPeerPaused(b, false));
        QTRY_VERIFY_WITH_TIMEOUT(QWSyncthingPeer::inSync(a, b), 60000);
        QCOMPARE(contents(a.folderPath() + u"/probe2.txt"_s), "later");
    }
};

QTEST_MAIN(TestSNSyncIntegration)
#include "TestSNSyncIntegration.moc"
