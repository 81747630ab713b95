#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "preferences/BackupsPreferencesViewController.h"
#include "preferences/SNPreferencesTestSupport.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace Qt::StringLiterals;

namespace {

QStringList rowsOf(QTreeWidget *list)
{
    QStringList rows;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        rows.append(list->topLevelItem(row)->text(1));
    return rows;
}

} // namespace

class TestBackupsPreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void restoreAddsTheMissingNotesOnceAndOpensThem()
    {
        QTemporaryDir folder;
        SNStickyNoteManager store(folder.path());
        const qsizetype welcome = store.notesArray().size();
        QList<std::shared_ptr<SNStickyNote>> opened;
        BackupsPreferencesViewController pane(store,
            [&opened](const QList<std::shared_ptr<SNStickyNote>> &notes) { opened += notes; });
        auto person = std::make_shared<AnsweringPresenter>();
        person->answers = { { u"Restore"_s }, { u"Restore"_s }, { u"Cancel"_s } };
        pane.setModalPresenter(person);
        auto *list = pane.view()->findChild<QTreeWidget *>();
        QVERIFY(list);
        QCOMPARE(rowsOf(list).size(), 1); // "No backups yet", which Restore cannot take
        QVERIFY(!pane.restoreSelectedBackup());
        QVERIFY(person->asked.isEmpty());

        pane.backUpNow();
        QCOMPARE(rowsOf(list), QStringList { QStringLiteral("%1 notes").arg(welcome) });
        QCOMPARE(pane.statusText(), QStringLiteral("Backed up %1 notes.").arg(welcome));
        QVERIFY(QFile::exists(store.backups().constFirst().path));
        QVERIFY(store.backups().constFirst().path.startsWith(pane.backupsFolder() + u'/'));

        const std::shared_ptr<SNStickyNote> lost = store.notesArray().constFirst();
        store.removeNote(lost);
        auto added = SNStickyNote::note();
        added->setAttributedString(QWAttributedString(QStringLiteral("written after the backup")));
        store.addNote(added);

        pane.selectBackupAtRow(0);
        QVERIFY(pane.restoreSelectedBackup());
        QCOMPARE(person->asked.size(), 1);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened.constFirst()->uuid(), lost->uuid());
        QCOMPARE(store.notesArray().size(), welcome + 1);
        QVERIFY(store.notesArray().contains(added));
        QCOMPARE(pane.statusText(), QStringLiteral("1 note came back."));

        // Again: everything is here already.
        QVERIFY(pane.restoreSelectedBackup());
        QCOMPARE(opened.size(), 1);
        QCOMPARE(store.notesArray().size(), welcome + 1);
        QVERIFY(pane.statusText().startsWith(QStringLiteral("0 notes came back")));

        // Said no to: nothing happens.
        store.removeNote(store.notesArray().constFirst());
        QVERIFY(!pane.restoreSelectedBackup());
        QCOMPARE(person->asked.size(), 3);
        QCOMPARE(store.notesArray().size(), welcome);
        QCOMPARE(opened.size(), 1);
    }
};

QTEST_MAIN(TestBackupsPreferencesViewController)
#include "TestBackupsPreferencesViewController.moc"
