#include "SNNoteWindowTestSupport.h"
#include "notewindow/SNNoteMenus.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QSlider>
#include <QWidgetAction>

using namespace Qt::StringLiterals;

// The menus of a note window's buttons: the theme menu follows the themes there are, and the
// settings menu holds the transparency slider.
class TestSNNoteMenus final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void menusOfferTheThemesAndTheTransparency();

private:
    NoteWindowFixture f;
};

void TestSNNoteMenus::menusOfferTheThemesAndTheTransparency()
{
    auto note = noteWithText(u"Menu"_s);
    note->setThemeName(u"SNHackerTheme"_s);
    auto controller = openNote(note);
    QWidgetAction *alpha = controller->menus()->alphaMenuItem();
    QVERIFY(controller->settingsMenu()->actions().contains(alpha));
    QCOMPARE(alpha->defaultWidget(), part<QSlider>(*controller, "alphaSlider")->parentWidget());
    QMenu *menu = controller->menus()->themeMenu();
    const auto checked = [menu] {
        QStringList names;
        for (const QAction *item : menu->actions())
            names.append(item->isChecked() ? item->text() : QString());
        names.removeAll(QString());
        return names;
    };
    QCOMPARE(checked(), QStringList({ u"Hacker"_s }));

    // A user theme saved elsewhere comes in after a separator, and can be chosen.
    SNThemeManager &registry = SNThemeManager::sharedManager();
    auto mine = SNUserTheme::theme();
    mine->setName(u"Mine"_s);
    registry.addTheme(mine);
    registry.save();
    const QList<QAction *> items = menu->actions();
    QVERIFY(items[items.size() - 2]->isSeparator());
    items.last()->trigger();
    QCOMPARE(note->themeName(), mine->saveName());
    QCOMPARE(checked(), QStringList({ u"Mine"_s }));

    registry.removeTheme(mine);
    registry.save();
}

QTEST_MAIN(TestSNNoteMenus)
#include "TestSNNoteMenus.moc"
