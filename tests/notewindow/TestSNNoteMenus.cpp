#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteMenus.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QTest>

namespace {

QStringList checkedItems(QMenu *menu)
{
    QStringList checked;
    const QList<QAction *> items = menu->actions();
    for (const QAction *item : items) {
        if (item->isChecked())
            checked.append(item->text());
    }
    return checked;
}

} // namespace

// The menus of a note window's buttons.
class TestSNNoteMenus final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void themeMenuListsThemesWithOneChecked();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    QWManualScheduler m_scheduler;
};

void TestSNNoteMenus::themeMenuListsThemesWithOneChecked()
{
    auto note = noteWithText(QStringLiteral("Menu"));
    note->setThemeName(QStringLiteral("SNHackerTheme"));
    auto controller = openNote(note);
    QMenu *menu = controller->menus()->themeMenu();

    QStringList names;
    for (const QAction *item : menu->actions())
        names.append(item->text());
    QCOMPARE(names,
        QStringList({ QStringLiteral("Yellow"), QStringLiteral("Monospace"),
            QStringLiteral("Monospace Dark"), QStringLiteral("Dark"), QStringLiteral("English"),
            QStringLiteral("Hacker"), QStringLiteral("Presentation") }));
    QCOMPARE(checkedItems(menu), QStringList({ QStringLiteral("Hacker") }));
    for (const QAction *item : menu->actions()) {
        QVERIFY(!item->icon().isNull());
        QCOMPARE(item->icon().availableSizes().first(), QSize(12, 12));
    }

    // A user theme saved elsewhere comes in after a separator.
    auto mine = SNUserTheme::theme();
    mine->setName(QStringLiteral("Mine"));
    SNThemeManager::sharedManager().addTheme(mine);
    SNThemeManager::sharedManager().save();
    const QList<QAction *> items = menu->actions();
    QCOMPARE(items.size(), 9);
    QVERIFY(items[7]->isSeparator());
    QCOMPARE(items[8]->text(), QStringLiteral("Mine"));
    QCOMPARE(checkedItems(menu), QStringList({ QStringLiteral("Hacker") }));

    items[8]->trigger();
    QCOMPARE(note->themeName(), mine->saveName());
    QCOMPARE(checkedItems(menu), QStringList({ QStringLiteral("Mine") }));

    SNThemeManager::sharedManager().removeTheme(mine);
    SNThemeManager::sharedManager().save();
}

QTEST_MAIN(TestSNNoteMenus)
#include "TestSNNoteMenus.moc"
