#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWColorWell.h"
#include "kit/widgets/QWGradientView.h"
#include "notewindow/SNNoteWindowTestSupport.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SDThemeListModel.h"
#include "preferences/SNPreferencesTestSupport.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <memory>

class TestSDApperancePreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void listsEveryThemeUnderItsGroupRow();
    void namesAreTrimmedAndMadeUnique();
    void escapeRemovesAThemeThatNeverHadAName();
    void builtInThemesArePreviewedAndMadeDefaultOnly();
    void renamingAThemeKeepsItsNotesInIt();
    void rapidChangesSaveOnceAfterTheLast();
    void wellsAndFontButtonOpenTheirPanels();
    void deletingAsksUnlessSuppressed();
    void closingWhileNamingNeedsAName();

private:
    SNThemeManager &registry() const { return SNThemeManager::sharedManager(); }
    SDThemeListModel &list() const { return *m_controller->themeList(); }
    int rowOf(const QString &saveName) const { return list().rowOfTheme(saveName); }
    void editRow(int row) { m_controller->tableView()->edit(list().index(row)); }
    // Adds a theme through the editor and types its name, as a person would.
    void addThemeNamed(const QString &typed);
    std::shared_ptr<SNUserTheme> userTheme(const QString &name) const
    {
        return registry().userThemeWithName(name);
    }

    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::shared_ptr<AnsweringPresenter> m_presenter;
    std::unique_ptr<SDApperancePreferencesViewController> m_controller;
};

void TestSDApperancePreferencesViewController::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    QWScheduler::setCurrent(m_scheduler.get());
    registry().updateThemes({});
    registry().save();
    SNUserDefaults::standardUserDefaults().setDefaultThemeName(QStringLiteral("SNYellowPadTheme"));
    SNUserDefaults::standardUserDefaults().setSuppressThemeDeletionAlert(false);
    m_presenter = std::make_shared<AnsweringPresenter>();
    m_controller = std::make_unique<SDApperancePreferencesViewController>();
    m_controller->setModalPresenter(m_presenter);
    m_controller->view()->show();
}

void TestSDApperancePreferencesViewController::cleanup()
{
    m_controller.reset();
    QWScheduler::setCurrent(nullptr);
    m_scheduler.reset();
}

void TestSDApperancePreferencesViewController::addThemeNamed(const QString &typed)
{
    m_controller->groupsActionWasClicked(0);
    QLineEdit *field = m_controller->editingTextField();
    QVERIFY(field);
    QTest::keyClicks(field, typed);
    QTest::keyClick(field, Qt::Key_Return);
    settle();
}

void TestSDApperancePreferencesViewController::listsEveryThemeUnderItsGroupRow()
{
    QCOMPARE(m_controller->moduleTitle(), QStringLiteral("Themes"));
    QCOMPARE(list().numberOfRows(), 8);
    QCOMPARE(m_controller->tableView()->rowHeight(0), 35);
    QCOMPARE(m_controller->tableView()->rowHeight(1), 28);
    // Opens on the default theme.
    QCOMPARE(m_controller->selectedRow(), rowOf(QStringLiteral("SNYellowPadTheme")));
    QCOMPARE(m_controller->fontLabelText(), QStringLiteral("14pt Helvetica Neue"));
    QCOMPARE(
        m_controller->gradientView()->startColor(), list().themeAtRow(1)->startColor().toQColor());
    QVERIFY(registry().userThemes().isEmpty());
}

void TestSDApperancePreferencesViewController::namesAreTrimmedAndMadeUnique()
{
    addThemeNamed(QStringLiteral("  Work  "));
    addThemeNamed(QStringLiteral("Work"));
    addThemeNamed(QStringLiteral("Work"));
    // Built-in names are free for the user's own themes.
    addThemeNamed(QStringLiteral("Yellow"));

    QStringList names;
    for (const std::shared_ptr<SNUserTheme> &theme : registry().userThemes())
        names.append(theme->name());
    QCOMPARE(names,
        QStringList({ QStringLiteral("Work"), QStringLiteral("Work 1"), QStringLiteral("Work 2"),
            QStringLiteral("Yellow") }));
    QCOMPARE(list().numberOfRows(), 12);
    QCOMPARE(list().index(10).data().toString(), QStringLiteral("Work 2"));
    QVERIFY(list().isNameEditableAtRow(10));
    QCOMPARE(m_controller->currentTheme(), registry().userThemes().constLast());

    // A theme keeps a name that is its own; a name another theme has gets a number.
    const auto rename = [this](int row, const QString &name) {
        editRow(row);
        QLineEdit *field = m_controller->editingTextField();
        QVERIFY(field);
        field->setText(name);
        QTest::keyClick(field, Qt::Key_Return);
        settle();
    };
    rename(8, QStringLiteral("Work"));
    QCOMPARE(list().themeAtRow(8)->name(), QStringLiteral("Work"));
    rename(11, QStringLiteral("Work 1"));
    QCOMPARE(list().themeAtRow(11)->name(), QStringLiteral("Work 1 1"));

    // What was named is in the file.
    SNThemeManager reader(registry().userThemeDirectory());
    QCOMPARE(reader.userThemes().count(), 4);
    QCOMPARE(reader.userThemes().at(2)->name(), QStringLiteral("Work 2"));
}

void TestSDApperancePreferencesViewController::escapeRemovesAThemeThatNeverHadAName()
{
    m_controller->groupsActionWasClicked(0);
    QCOMPARE(registry().userThemes().count(), 1);
    QTest::keyClick(m_controller->editingTextField(), Qt::Key_Escape);
    settle();
    QVERIFY(registry().userThemes().isEmpty());
    QCOMPARE(list().numberOfRows(), 8);
    QVERIFY(!m_controller->editingTextField());

    // A blank name does the same.
    addThemeNamed(QStringLiteral("   "));
    QVERIFY(registry().userThemes().isEmpty());

    // Escape while renaming keeps the name the theme had.
    addThemeNamed(QStringLiteral("Work"));
    const int row = rowOf(QStringLiteral("SNUserTheme-Work"));
    editRow(row);
    QTest::keyClicks(m_controller->editingTextField(), QStringLiteral(" and more"));
    QTest::keyClick(m_controller->editingTextField(), Qt::Key_Escape);
    settle();
    QCOMPARE(registry().userThemes().count(), 1);
    QCOMPARE(registry().userThemes().first()->name(), QStringLiteral("Work"));
}

void TestSDApperancePreferencesViewController::builtInThemesArePreviewedAndMadeDefaultOnly()
{
    const int dark = rowOf(QStringLiteral("SNDarkTheme"));
    m_controller->selectRow(dark);
    const std::shared_ptr<SNTheme> theme = m_controller->currentTheme();
    QCOMPARE(theme->name(), QStringLiteral("Dark"));
    for (QWColorWell *well : { m_controller->startColorWell(), m_controller->endColorWell(),
             m_controller->textColorWell(), m_controller->linkColorWell(),
             m_controller->cursorColorWell() })
        QVERIFY(!well->isEnabled());
    QVERIFY(!m_controller->fontButton()->isEnabled());
    QCOMPARE(m_controller->startColorWell()->color(), theme->startColor().toQColor());
    QCOMPARE(m_controller->gradientView()->endColor(), theme->endColor().toQColor());

    // Changes cannot reach a built-in theme.
    const QWColor before = theme->startColor();
    m_controller->startColorWell()->setColor(Qt::red, true);
    QCOMPARE(theme->startColor(), before);
    m_controller->didChangeFont(QFont(QStringLiteral("DejaVu Serif"), 30));
    QCOMPARE(theme->defaultFont().pointSize(), 14.0);
    m_controller->deleteSelectedGroups();
    QCOMPARE(m_presenter->asked.count(), 1);
    QCOMPARE(m_presenter->asked.first().text, QStringLiteral("This theme can not be deleted."));
    QCOMPARE(list().numberOfRows(), 8);

    QVERIFY(m_controller->defaultThemeButton()->isEnabled());
    m_controller->defaultThemeButton()->click();
    QCOMPARE(
        SNUserDefaults::standardUserDefaults().defaultThemeName(), QStringLiteral("SNDarkTheme"));
    QVERIFY(!m_controller->defaultThemeButton()->isEnabled());
    QVERIFY(list().isDefaultMarkerVisibleAtRow(dark));
    QVERIFY(!list().isDefaultMarkerVisibleAtRow(1));
    QCOMPARE(m_controller->selectedRow(), dark);

    m_controller->selectRow(1);
    QVERIFY(m_controller->defaultThemeButton()->isEnabled());
}

void TestSDApperancePreferencesViewController::renamingAThemeKeepsItsNotesInIt()
{
    addThemeNamed(QStringLiteral("Work"));
    const std::shared_ptr<SNUserTheme> work = userTheme(QStringLiteral("Work"));
    QVERIFY(work);
    const std::shared_ptr<SNStickyNote> note = noteWithText(QStringLiteral("Quarterly plan"));
    note->setThemeName(work->saveName());
    SNStickyNoteManager::sharedManager().addNote(note);
    const std::unique_ptr<SNStickyNoteWindowController> window = openNote(note);
    QCOMPARE(note->theme(), work);

    const int row = rowOf(work->saveName());
    editRow(row);
    m_controller->editingTextField()->setText(QStringLiteral("Office"));
    QTest::keyClick(m_controller->editingTextField(), Qt::Key_Return);
    settle();

    QCOMPARE(work->name(), QStringLiteral("Office"));
    QCOMPARE(note->themeName(), QStringLiteral("SNUserTheme-Office"));
    QCOMPARE(note->theme(), work);
    SNStickyNoteManager::sharedManager().removeNote(note);
}

void TestSDApperancePreferencesViewController::rapidChangesSaveOnceAfterTheLast()
{
    addThemeNamed(QStringLiteral("Sunset"));
    const std::shared_ptr<SNUserTheme> sunset = userTheme(QStringLiteral("Sunset"));
    QCOMPARE(m_controller->currentTheme(), sunset);
    QVERIFY(m_controller->startColorWell()->isEnabled());

    int saves = 0;
    QWNotificationCenter::defaultCenter().addObserverForNameObjectHandler(this,
        SNThemeManager::styleDidChangeNotificationName(), nullptr,
        [&saves](const QWNotification &) { ++saves; });
    const QList<QColor> colours
        = { QColor(200, 40, 40), QColor(210, 60, 40), QColor(220, 80, 40), QColor(230, 100, 40) };
    for (const QColor &colour : colours) {
        m_controller->startColorWell()->setColor(colour, true);
        m_scheduler->advanceBy(0.3);
    }
    m_controller->didChangeFont(QFont(QStringLiteral("DejaVu Serif"), 18));
    QCOMPARE(m_controller->fontLabelText(), QStringLiteral("18pt DejaVu Serif"));
    m_scheduler->advanceBy(0.49);
    QCOMPARE(saves, 0);
    m_scheduler->advanceBy(0.01);
    QCOMPARE(saves, 1);
    m_scheduler->advanceBy(5.0);
    QCOMPARE(saves, 1);
    QWNotificationCenter::defaultCenter().removeObserver(this);

    QCOMPARE(m_controller->gradientView()->startColor(), colours.constLast());
    SNThemeManager reader(registry().userThemeDirectory());
    QCOMPARE(reader.userThemes().first()->startColor().toQColor(), colours.constLast());
    QCOMPARE(reader.userThemes().first()->defaultFont().family(), QStringLiteral("DejaVu Serif"));
}

void TestSDApperancePreferencesViewController::wellsAndFontButtonOpenTheirPanels()
{
    addThemeNamed(QStringLiteral("Moss"));
    const std::shared_ptr<SNUserTheme> moss = userTheme(QStringLiteral("Moss"));
    m_controller->linkColorWell()->click();
    QColorDialog *panel = m_controller->colorPanel();
    QVERIFY(panel && panel->isVisible());
    panel->setCurrentColor(QColor(30, 120, 60));
    QCOMPARE(moss->linkColor().toQColor().rgb(), qRgb(30, 120, 60));

    // On a built-in theme the panel follows the selection but changes nothing.
    m_controller->selectRow(rowOf(QStringLiteral("SNDarkTheme")));
    const QRgb darkLinks = m_controller->currentTheme()->linkColor().toQColor().rgb();
    QCOMPARE(panel->currentColor().rgb(), darkLinks);
    panel->setCurrentColor(Qt::yellow);
    QCOMPARE(m_controller->currentTheme()->linkColor().toQColor().rgb(), darkLinks);
    m_controller->fontButton()->click();
    QVERIFY(!m_controller->fontPanel());

    m_controller->selectRow(rowOf(moss->saveName()));
    m_controller->fontButton()->click();
    QVERIFY(m_controller->fontPanel() && m_controller->fontPanel()->isVisible());
    m_controller->fontPanel()->setCurrentFont(QFont(QStringLiteral("DejaVu Sans Mono"), 11));
    QCOMPARE(moss->defaultFont().pointSize(), 11.0);
    // Hiding the page puts the panels away.
    m_controller->qw_viewWillDisappear();
    QVERIFY(!panel->isVisible());
    QVERIFY(!m_controller->fontPanel()->isVisible());
}

void TestSDApperancePreferencesViewController::deletingAsksUnlessSuppressed()
{
    // Nothing chosen: a beep.
    m_controller->tableView()->clearSelection();
    m_controller->deleteSelectedGroups();
    QCOMPARE(m_presenter->beeps, 1);

    addThemeNamed(QStringLiteral("One"));
    addThemeNamed(QStringLiteral("Two"));
    // The Delete key neither deletes a theme nor writes to the user's journal.
    {
        const QWTestEnvironment log;
        QTest::keyClick(m_controller->tableView(), Qt::Key_Delete);
        QVERIFY2(log.messages().isEmpty(), qPrintable(log.messages().join(u'\n')));
    }
    QCOMPARE(registry().userThemes().count(), 2);
    m_presenter->answers = { { QStringLiteral("Cancel"), true } };
    m_controller->groupsActionWasClicked(1);
    QCOMPARE(registry().userThemes().count(), 2);
    QCOMPARE(m_presenter->asked.constLast().text,
        QStringLiteral("Are you sure you want to delete this theme?"));
    QCOMPARE(m_presenter->asked.constLast().informativeText,
        QStringLiteral("This action can not be undone."));
    QVERIFY(!SNUserDefaults::standardUserDefaults().suppressThemeDeletionAlert());

    m_presenter->answers = { { QStringLiteral("Delete"), true } };
    m_controller->groupsActionWasClicked(1);
    QCOMPARE(registry().userThemes().count(), 1);
    QVERIFY(!userTheme(QStringLiteral("Two")));
    QVERIFY(SNUserDefaults::standardUserDefaults().suppressThemeDeletionAlert());
    QCOMPARE(m_controller->selectedRow(), list().numberOfRows() - 1);

    const int asked = int(m_presenter->asked.count());
    m_controller->groupsActionWasClicked(1);
    QVERIFY(registry().userThemes().isEmpty());
    QCOMPARE(m_presenter->asked.count(), asked);
}

void TestSDApperancePreferencesViewController::closingWhileNamingNeedsAName()
{
    m_controller->setModuleIsVisible(true);
    m_controller->groupsActionWasClicked(0);
    QVERIFY(!m_controller->windowShouldClose());
    QCOMPARE(m_presenter->asked.constLast().text, QStringLiteral("Please enter a theme name"));

    m_controller->editingTextField()->setText(QStringLiteral(" Draft "));
    QVERIFY(m_controller->windowShouldClose());
    QVERIFY(userTheme(QStringLiteral("Draft")));
    QVERIFY(!m_controller->editingTextField());
    QVERIFY(m_controller->windowShouldClose());
}

QTEST_MAIN(TestSDApperancePreferencesViewController)
#include "TestSDApperancePreferencesViewController.moc"
