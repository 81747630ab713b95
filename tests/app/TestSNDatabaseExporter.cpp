#include "SNAppTestSupport.h"
#include "app/SNDatabaseExporter.h"

#include <QTest>

class TestSNDatabaseExporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void failureIsToldAndCancellingDoesNothing()
    {
        TestNotes notes;
        auto presenter = std::make_shared<RecordingPresenter>();
        SNDatabaseExporter exporter(notes.store, presenter);
        presenter->savePath = notes.folder.filePath(QStringLiteral("no/such/folder/stickies.db"));
        exporter.exportDatabase(nullptr);
        QCOMPARE(presenter->alerts, QStringList { SNDatabaseExporter::exportFailedMessage() });

        presenter->savePath.clear();
        exporter.exportDatabase(nullptr);
        QCOMPARE(presenter->panels.size(), 2);
        QCOMPARE(presenter->alerts.size(), 1);
    }
};

QTEST_MAIN(TestSNDatabaseExporter)
#include "TestSNDatabaseExporter.moc"
