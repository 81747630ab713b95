#include "kit/QWDateUtilities.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QFontDatabase>
#include <QTest>
#include <QTimeZone>

// The font value and the date helper: the two kit values that depend on the machine.
class TestQWFont final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installedMeansTheFontDatabaseKnowsTheFamily()
    {
        const QString present = QFontDatabase::families().value(0);
        QVERIFY(QWFont::isFamilyInstalled(present));
        QCOMPARE(QWFont::fontWithNameSize(present, 12), QWFont(present, 12));

        const QString absent = QStringLiteral("No Such Family 7f3a");
        QVERIFY(!QWFont::isFamilyInstalled(absent));
        QVERIFY(!QWFont::fontWithNameSize(absent, 12));
        QVERIFY(!QWFont::isFamilyInstalled(QString()));
        // The family name is kept as written, installed or not.
        const QFont font = QWFont(absent, 16, true, true).toQFont();
        QCOMPARE(font.family(), absent);
        QVERIFY(font.bold() && font.italic());
    }

    void archiveRoundTripAndDamage()
    {
        const QWFont font(QStringLiteral("Georgia"), 16.5, false, true);
        QCOMPARE(
            QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(
                QWKeyedUnarchiver::parse(QWKeyedArchiver::archivedDataWithRootObject(font)).root),
            font);
        for (double size : { 0.0, -3.0, 1e9, std::nan("") }) {
            const QWArchiveValue damaged = QWArchiveValue::fromObject(QWFont::className(),
                { { QStringLiteral("family"), QWArchiveValue::fromString(QStringLiteral("Menlo")) },
                    { QStringLiteral("pointSize"), QWArchiveValue::fromDouble(size) } });
            QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(damaged));
        }
    }

    void hourFollowsTheSystemTimeZone()
    {
        const QDateTime utc(QDate(2026, 11, 21), QTime(13, 59, 30), Qt::UTC);
        QCOMPARE(QWDateUtilities::qw_hour(utc),
            utc.toTimeZone(QTimeZone::systemTimeZone()).time().hour());
        for (int hour = 0; hour < 24; ++hour)
            QCOMPARE(QWDateUtilities::qw_hour(
                         QDateTime(QDate(2026, 3, 1), QTime(hour, 30), Qt::LocalTime)),
                hour);
        QCOMPARE(QWDateUtilities::qw_hour(QDateTime()), 0);
    }
};

QTEST_MAIN(TestQWFont)
#include "TestQWFont.moc"
