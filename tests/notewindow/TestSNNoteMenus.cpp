#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteMenus.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QSlider>
#include <QWidgetAction>

using namespace Qt::StringLiterals;

// The menus of a note window's buttons.
class TestSNNoteMenus final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void themeMenuListsThemesWithTheNotesChecked();
    void settingsMenuHoldsTheTransparencySlider();

private:
    NoteWindowFixture f;
};

void TestSNNoteMenus::themeMenuListsThemesWithTheNotesChecked()
{
    auto note = noteWithText(u"Menu"_s);
    note->setThemeName(u"SNHackerTheme"_s);
    auto controller = openNote(note);
    QMenu *menu = controller->menus()->themeMenu();
    const auto checked = [menu] {
        QStringList names;
        for (const QAction *item : menu->actions())
            names.append(item->isChecked() ? item->text() : QString());
        names.removeAll(QString());
        return names;
    };
    SNThemeManager &registry = SNThemeManager::sharedManager();
    QCOMPARE(menu->actions().size(), registry.bundledThemes().size());
    QCOMPARE(checked(), QStringList({ u"Hacker"_s }));
    // Each with a swatch of its theme.
    for (const QAction *item : menu->actions())
        QCOMPARE(item->icon().availableSizes().value(0), QSize(12, 12));
    const auto swatch = [menu](int index) { return menu->actions()[index]->icon().pixmap(12); };
    QVERIFY(swatch(0).toImage() != swatch(3).toImage());

    // A user theme saved elsewhere comes in after a separator, and can be chosen.
    auto mine = SNUserTheme::theme();
    mine->setName(u"Mine"_s);
    registry.addTheme(mine);
    registry.save();
    const QList<QAction *> items = menu->actions();
    QCOMPARE(items.size(), registry.bundledThemes().size() + 2);
    QVERIFY(items[items.size() - 2]->isSeparator());
    QCOMPARE(checked(), QStringList({ u"Hacker"_s }));
    items.last()->trigger();
    QCOMPARE(note->themeName(), mine->saveName());
    QCOMPARE(checked(), QStringList({ u"Mine"_s }));

    registry.removeTheme(mine);
    registry.save();
}

void TestSNNoteMenus::settingsMenuHoldsTheTransparencySlider()
{
    auto controller = openNote(noteWithText(u"See-through"_s));
    QWidgetAction *item = controller->menus()->alphaMenuItem();
    QVERIFY(controller->settingsMenu()->actions().contains(item));
    QCOMPARE(item->defaultWidget(), part<QSlider>(*controller, "alphaSlider")->parentWidget());
    QVERIFY(item->isVisible());
}

QTEST_MAIN(TestSNNoteMenus)
#include "TestSNNoteMenus.moc"
