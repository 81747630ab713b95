#include "SNAppTestSupport.h"
#include "app/SNRecentlyDeletedMenuDelegate.h"
#include "kit/QWClock.h"

#include <QMenu>
#include <QTest>

class TestSNRecentlyDeletedMenuDelegate final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QWClock::setCurrentDateTimeProvider({}); }

    void listsDeletedNotesNewestFirstAndBringsThePickedOneBack()
    {
        QDateTime now = QDateTime::currentDateTime().addSecs(-3600);
        QWClock::setCurrentDateTimeProvider([&now] { return now; });
        TestNotes notes;
        SNRecentlyDeletedMenuDelegate delegate(notes.store, notes.windows);
        QMenu menu;
        // The welcome notes go first: they come last in the menu.
        for (const auto &note : notes.store.notesArray())
            notes.store.removeNote(note);
        const qsizetype welcome = notes.store.recentlyDeletedNotes().size();
        notes.windows.showAllNotes(false);

        const QString longTitle = QString(60, QLatin1Char('w'));
        QList<std::shared_ptr<SNStickyNote>> deleted;
        for (const QString &text :
            { QStringLiteral("Shopping & errands\nmilk"), longTitle, QStringLiteral("  \n") }) {
            auto note = SNStickyNote::note();
            note->setAttributedString(QWAttributedString(text));
            note->setWindowFrame(QStringLiteral("{{300, 200}, {250, 180}}"));
            notes.store.addNote(note);
            now = now.addSecs(60);
            notes.store.removeNote(note);
            deleted.append(note);
        }
        delegate.menuNeedsUpdate(&menu);
        delegate.menuNeedsUpdate(&menu); // no piling up
        const QList<QAction *> items = menu.actions();
        // A note without text is not kept.
        QCOMPARE(items.size(), welcome + 2);
        QVERIFY(items.at(1)->text().startsWith(QStringLiteral("Shopping && errands — ")));

        // Brought back as it was, in a window that shows; gone from the list.
        items.at(1)->trigger();
        const std::shared_ptr<SNStickyNote> back = notes.store.notesArray().constLast();
        QCOMPARE(back->uuid(), deleted.at(0)->uuid());
        QCOMPARE(textOf(back), QStringLiteral("Shopping & errands\nmilk"));
        SNStickyNoteWindowController *window = notes.windows.controllerForNote(back.get());
        QVERIFY(window);
        QTRY_VERIFY(window->window()->isVisible());
        QCOMPARE(window->window()->geometry(), QRect(300, 200, 250, 180));
        delegate.menuNeedsUpdate(&menu);
        QCOMPARE(menu.actions().size(), welcome + 1);
        // An item of a menu still open elsewhere does nothing: its note is back already.
        const qsizetype stored = notes.store.notesArray().size();
        QAction stale;
        stale.setData(back->uuid());
        delegate.restoreNoteFromMenuItem(&stale);
        QCOMPARE(notes.store.notesArray().size(), stored);
        QCOMPARE(notes.windows.controllers().size(), stored);
    }
};

QTEST_MAIN(TestSNRecentlyDeletedMenuDelegate)
#include "TestSNRecentlyDeletedMenuDelegate.moc"
