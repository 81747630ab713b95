#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteExporter.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

// Exporting a note: the question before a note with text is deleted, the save panel, the RTF
// file and the alert when it cannot be written.
class TestSNNoteExporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void noteWithTextAsksAndCancelKeepsIt();
    void questionStaysAboveAFloatingNote();
    void exportThenCancelKeepsTheNote();
    void exportWritesRtfAndRemovesTheNote();
    void failedExportSaysSoAndKeepsTheNote();
    void exportCommandKeepsTheNote();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::shared_ptr<ScriptedPresenter> m_presenter;
    QTemporaryDir m_exportFolder;
};

void TestSNNoteExporter::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    m_presenter = std::make_shared<ScriptedPresenter>();
}

void TestSNNoteExporter::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNNoteExporter::noteWithTextAsksAndCancelKeepsIt()
{
    auto note = noteWithText(QStringLiteral("Call the plumber"));
    SNStickyNoteManager::sharedManager().addNote(note);
    // Not touched in this session: the text alone makes it worth asking.
    auto controller = openNote(note, m_presenter);
    QVERIFY(controller->wasEdited());
    // What the shared stores schedule on their first use is not the window's.
    const int scheduled = m_scheduler->scheduledCount();

    m_presenter->alertAnswers = { QStringLiteral("Cancel") };
    controller->close();

    QCOMPARE(m_presenter->alerts.size(), 1);
    const ScriptedPresenter::Alert &alert = m_presenter->alerts.first();
    QCOMPARE(alert.text, QStringLiteral("Would you like to export this note?"));
    QCOMPARE(alert.informativeText,
        QStringLiteral("If you do not export this note, its contents will be permanently lost."));
    QCOMPARE(alert.buttons,
        QStringList(
            { QStringLiteral("Export"), QStringLiteral("Cancel"), QStringLiteral("Delete Note") }));
    QCOMPARE(alert.roles,
        QList<QMessageBox::ButtonRole>(
            { QMessageBox::AcceptRole, QMessageBox::RejectRole, QMessageBox::DestructiveRole }));
    QCOMPARE(alert.defaultButton, QStringLiteral("Export"));
    QCOMPARE(alert.escapeButton, QStringLiteral("Cancel"));
    QCOMPARE(alert.parent, controller->window());
    QVERIFY(controller->window()->isVisible());
    QVERIFY(storeHolds(note));

    // A close asked for by the window manager goes through the same question.
    m_presenter->alertAnswers = { QStringLiteral("Cancel") };
    QVERIFY(!controller->window()->close());
    QCOMPARE(m_presenter->alerts.size(), 2);
    QVERIFY(controller->window()->isVisible());
    QVERIFY(storeHolds(note));
    QCOMPARE(m_scheduler->scheduledCount(), scheduled);
}

void TestSNNoteExporter::questionStaysAboveAFloatingNote()
{
    std::vector<std::unique_ptr<SNStickyNoteWindowController>> controllers;
    for (const qint64 pinState : { SNStickyNote::PinStateFloating, SNStickyNote::PinStateDesktop,
             SNStickyNote::PinStateNormal }) {
        auto note = noteWithText(QStringLiteral("Pinned %1").arg(pinState));
        note->setPinState(pinState);
        SNStickyNoteManager::sharedManager().addNote(note);
        controllers.push_back(openNote(note, m_presenter));
    }

    m_presenter->alertAnswers
        = { QStringLiteral("Cancel"), QStringLiteral("Cancel"), QStringLiteral("Cancel") };
    for (const auto &controller : controllers)
        controller->close();

    QCOMPARE(m_presenter->alerts.size(), 3);
    // Above the floating note, and never down on the desktop with a pinned one.
    QVERIFY(m_presenter->alerts[0].staysOnTop);
    QVERIFY(m_presenter->alerts[1].staysOnTop);
    QVERIFY(!m_presenter->alerts[2].staysOnTop);
}

void TestSNNoteExporter::exportThenCancelKeepsTheNote()
{
    auto note = noteWithText(QStringLiteral("Groceries"));
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);

    m_presenter->alertAnswers = { QStringLiteral("Export") };
    m_presenter->panelAnswers = { QString() };
    controller->close();
    QVERIFY(controller->window()->isVisible());
    // The save panel waits until the question has gone.
    m_scheduler->advanceBy(SNNoteExporter::exportDelay - 0.01);
    QVERIFY(m_presenter->panels.isEmpty());
    m_scheduler->advanceBy(0.01);

    QCOMPARE(m_presenter->panels.size(), 1);
    const ScriptedPresenter::Panel &panel = m_presenter->panels.first();
    QCOMPARE(panel.acceptLabel, QStringLiteral("Choose"));
    QCOMPARE(panel.acceptMode, QFileDialog::AcceptSave);
    QCOMPARE(panel.proposedName, controller->window()->windowTitle() + QStringLiteral(".rtf"));
    QCOMPARE(panel.defaultSuffix, QStringLiteral("rtf"));
    QCOMPARE(panel.nameFilters.size(), 1);
    QVERIFY(panel.nameFilters.first().contains(QStringLiteral("*.rtf")));
    QVERIFY(controller->window()->isVisible());
    QVERIFY(storeHolds(note));
    QVERIFY(!controller->isTerminating());
}

void TestSNNoteExporter::exportWritesRtfAndRemovesTheNote()
{
    const QString text = QStringLiteral("Recipe: pancakes");
    auto note = noteWithText(text);
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);
    QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);

    const QString path = m_exportFolder.filePath(QStringLiteral("pancakes.rtf"));
    m_presenter->alertAnswers = { QStringLiteral("Export") };
    m_presenter->panelAnswers = { path };
    controller->close();
    m_scheduler->advanceBy(SNNoteExporter::exportDelay);

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray rtf = file.readAll();
    QVERIFY(rtf.startsWith("{\\rtf1"));
    QVERIFY(rtf.contains("Recipe: pancakes"));
    QVERIFY(!storeHolds(note));
    QVERIFY(!archivedNoteWithText(text));
    QVERIFY(controller->isTerminating());
    QVERIFY(!controller->window()->isVisible());
    QCOMPARE(willClose.count(), 1);
    // Closed after the export: no second question.
    QCOMPARE(m_presenter->alerts.size(), 1);
}

void TestSNNoteExporter::failedExportSaysSoAndKeepsTheNote()
{
    auto note = noteWithText(QStringLiteral("Unwritable"));
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);

    m_presenter->alertAnswers = { QStringLiteral("Export"), QStringLiteral("OK") };
    m_presenter->panelAnswers = { m_exportFolder.filePath(QStringLiteral("missing/folder/x.rtf")) };
    controller->close();
    m_scheduler->advanceBy(SNNoteExporter::exportDelay);

    QCOMPARE(m_presenter->alerts.size(), 2);
    QCOMPARE(m_presenter->alerts[1].text, QStringLiteral("Could not export note"));
    QCOMPARE(m_presenter->alerts[1].informativeText,
        QStringLiteral("An error occured when trying to export this note.\nPlease try again"));
    QVERIFY(controller->window()->isVisible());
    QVERIFY(storeHolds(note));
    QVERIFY(!controller->isTerminating());
}

void TestSNNoteExporter::exportCommandKeepsTheNote()
{
    auto note = noteWithText(QStringLiteral("Keep me"));
    SNStickyNoteManager::sharedManager().addNote(note);
    auto controller = openNote(note, m_presenter);
    const QString path = m_exportFolder.filePath(QStringLiteral("keep.rtf"));
    m_presenter->panelAnswers = { path };

    controller->saveNote(controller->settingsMenu());

    QVERIFY(QFileInfo::exists(path));
    QVERIFY(storeHolds(note));
    QVERIFY(controller->window()->isVisible());
    QVERIFY(m_presenter->alerts.isEmpty());
}

QTEST_MAIN(TestSNNoteExporter)
#include "TestSNNoteExporter.moc"
