#include "SNAppTestSupport.h"
#include "app/SNNotesMenuDelegate.h"

#include <QMenu>
#include <QTest>

class TestSNNotesMenuDelegate final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsNewestFirstAndShowsWhatIsPicked()
    {
        TestNotes notes;
        for (const auto &note : notes.store.notesArray())
            notes.store.removeNote(note);
        const QDateTime start(QDate(2024, 5, 1), QTime(9, 0));
        for (const auto &[text, day] :
            { std::pair { "middle", 1 }, { "newest", 2 }, { "oldest", 0 } }) {
            auto note = SNStickyNote::note();
            note->setAttributedString(QWAttributedString(QString::fromLatin1(text)));
            note->setDateCreated(start.addDays(day));
            notes.store.addNote(note);
        }
        notes.windows.showAllNotes(false);
        SNNotesMenuDelegate delegate(notes.windows, notes.windowManager);
        QMenu menu;
        delegate.menuNeedsUpdate(&menu);
        delegate.menuNeedsUpdate(&menu); // no piling up
        QStringList order;
        for (QAction *item : menu.actions())
            order.append(
                textOf(qobject_cast<SNStickyNoteWindowController *>(item->data().value<QObject *>())
                           ->note()));
        QCOMPARE(order,
            (QStringList {
                QStringLiteral("newest"), QStringLiteral("middle"), QStringLiteral("oldest") }));

        menu.actions().at(1)->trigger();
        QCOMPARE(notes.visibleCount(), 1);
        QVERIFY(notes.windows.controllerForNote(notes.store.notesArray().constFirst().get())
                    ->window()
                    ->isVisible());
        // An item whose note window has gone does nothing.
        QAction stale;
        QObject gone;
        stale.setData(QVariant::fromValue<QObject *>(&gone));
        delegate.showWindowControllerFromMenuItem(&stale);
        QCOMPARE(notes.visibleCount(), 1);
    }
};

QTEST_MAIN(TestSNNotesMenuDelegate)
#include "TestSNNotesMenuDelegate.moc"
