#include "kit/QWFont.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QFontDatabase>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The font value, which depends on the fonts the machine has.
class TestQWFont final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installedMeansTheFontDatabaseKnowsTheFamily()
    {
        const QString present = QFontDatabase::families().value(0);
        QVERIFY(QWFont::isFamilyInstalled(present));
        QCOMPARE(QWFont::fontWithNameSize(present, 12), QWFont(present, 12));
        const QString absent = u"No Such Family 7f3a"_s;
        QVERIFY(!QWFont::isFamilyInstalled(absent) && !QWFont::isFamilyInstalled(QString()));
        QVERIFY(!QWFont::fontWithNameSize(absent, 12));
        // The family name is kept as written, installed or not.
        const QFont font = QWFont(absent, 16, true, true).toQFont();
        QVERIFY(font.family() == absent && font.bold() && font.italic());
    }

    // The keyed archiver's test reads fonts back whole; a size no font has is no font.
    void damagedArchives()
    {
        for (double size : { 0.0, -3.0, 1e9, std::nan("") }) {
            const QWArchiveValue damaged = QWArchiveValue::fromObject(QWFont::className(),
                { { u"family"_s, QWArchiveValue::fromString(u"Menlo"_s) },
                    { u"pointSize"_s, QWArchiveValue::fromDouble(size) } });
            QVERIFY(!QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(damaged));
        }
    }
};

QTEST_MAIN(TestQWFont)
#include "TestQWFont.moc"
