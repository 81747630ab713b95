#include "app/SNNoteFileReader.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace {

// What a user may open with Vellumo: each file or folder here, and beside it, named after it
// with ".expected" added, the text it must give; without that file, it must give nothing.
const QDir opened(QStringLiteral(VELLUMO_TEST_DATA_DIR "/opened"));

} // namespace

class TestSNNoteFileReader final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatHoldsText_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name :
            opened.entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (!name.endsWith(QLatin1String(".expected")))
                QTest::newRow(qPrintable(name)) << name;
        }
        QTest::newRow("missing") << QStringLiteral("missing.rtf");
    }

    void readsWhatHoldsText()
    {
        QFETCH(QString, name);
        const auto read
            = SNNoteFileReader::attributedStringWithContentsOfPath(opened.filePath(name));
        QFile expected(opened.filePath(name + QStringLiteral(".expected")));
        QCOMPARE(read.has_value(), expected.exists());
        if (read) {
            QVERIFY(expected.open(QIODevice::ReadOnly));
            QCOMPARE(read->string(), QString::fromUtf8(expected.readAll()));
        }
    }
};

QTEST_GUILESS_MAIN(TestSNNoteFileReader)
#include "TestSNNoteFileReader.moc"
