#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteExporter.h"
#include "support/QWTestFiles.h"

#include <QSignalSpy>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

// Exporting a note: the question before a note with text is deleted, the save panel, the RTF
// file and the alert when it cannot be written.
class TestSNNoteExporter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void closingOrExportingANoteWithText_data()
    {
        QTest::addColumn<QString>("answer"); // empty: the Export command of the menu, no question
        QTest::addColumn<QString>("panelAnswer"); // a file name in the export folder; empty cancels
        QTest::addColumn<int>("alerts");
        QTest::addColumn<bool>("noteKept");
        QTest::addColumn<bool>("written");
        QTest::newRow("cancel") << u"Cancel"_s << QString() << 1 << true << false;
        QTest::newRow("delete") << u"Delete Note"_s << QString() << 1 << false << false;
        QTest::newRow("export, cancel the panel") << u"Export"_s << QString() << 1 << true << false;
        QTest::newRow("export") << u"Export"_s << u"pancakes.rtf"_s << 1 << false << true;
        // The failure is said, and the note stays.
        QTest::newRow("export fails")
            << u"Export"_s << u"missing/folder/x.rtf"_s << 2 << true << false;
        QTest::newRow("export command") << QString() << u"keep.rtf"_s << 0 << true << true;
    }

    void closingOrExportingANoteWithText()
    {
        QFETCH(QString, answer);
        QFETCH(QString, panelAnswer);
        QFETCH(int, alerts);
        QFETCH(bool, noteKept);
        QFETCH(bool, written);
        const QString text = u"Recipe: "_s + QLatin1String(QTest::currentDataTag());
        auto note = noteWithText(text);
        SNStickyNoteManager::sharedManager().addNote(note);
        QVERIFY(archivedNoteWithText(text));
        // Not touched in this session: the text alone makes it worth asking.
        auto controller = openNote(note, f.presenter);
        QSignalSpy willClose(controller.get(), &QWWindowController::windowWillClose);
        const QString path
            = panelAnswer.isEmpty() ? QString() : m_exportFolder.filePath(panelAnswer);
        f.presenter->alertAnswers = { answer, u"OK"_s };
        f.presenter->panelAnswers = { path };

        if (answer.isEmpty()) {
            controller->saveNote(controller->settingsMenu());
        } else {
            // As the window manager asks; the close button goes the same way.
            controller->window()->close();
            const ScriptedPresenter::Alert question = f.presenter->alerts.value(0);
            QCOMPARE(question.parent, controller->window());
            // Return exports, Escape cancels: neither key loses the note.
            QCOMPARE(question.defaultButton, u"Export"_s);
            QCOMPARE(question.escapeButton, u"Cancel"_s);
            // The save panel waits until the question has gone.
            f.scheduler->advanceBy(SNNoteExporter::exportDelay - 0.01);
            QCOMPARE(f.presenter->panels, 0);
            f.scheduler->advanceBy(0.01);
        }

        QCOMPARE(f.presenter->panels, answer.isEmpty() || answer == u"Export"_s ? 1 : 0);
        QCOMPARE(f.presenter->alerts.size(), alerts);
        QCOMPARE(SNStickyNoteManager::sharedManager().notesArray().contains(note), noteKept);
        QCOMPARE(bool(archivedNoteWithText(text)), noteKept);
        QCOMPARE(controller->window()->isVisible(), noteKept);
        QCOMPARE(willClose.count(), noteKept ? 0 : 1);
        const QByteArray rtf = fileBytes(path);
        QCOMPARE(rtf.startsWith("{\\rtf1") && rtf.contains(text.toLatin1()), written);
    }

private:
    NoteWindowFixture f;
    QTemporaryDir m_exportFolder;
};

QTEST_MAIN(TestSNNoteExporter)
#include "TestSNNoteExporter.moc"
