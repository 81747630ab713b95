#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWColorWell.h"
#include "kit/widgets/QWGradientView.h"
#include "notewindow/SNNoteWindowTestSupport.h"
#include "preferences/SDApperancePreferencesViewController.h"
#include "preferences/SDThemeListModel.h"
#include "preferences/SNPreferencesTestSupport.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QLineEdit>
#include <QTableView>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using Editor = SDApperancePreferencesViewController;

// The theme editor as the user works it: naming, changing and deleting themes through its list,
// wells and panels. What the list does alone is tested with it.
class TestSDApperancePreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_fixture.emplace();
        registry().updateThemes({});
        registry().save();
        SNUserDefaults::standardUserDefaults().setDefaultThemeName(u"SNYellowPadTheme"_s);
        m_editor = std::make_unique<Editor>();
        m_editor->setModalPresenter(m_fixture->presenter);
        m_editor->view()->show();
    }

    void cleanup()
    {
        m_editor.reset();
        m_fixture.reset();
    }

    void namingATheme_data()
    {
        // Names typed for new themes in turn, split by "|"; one after ">" is typed over the first
        // theme's name. Then the user's themes, as listed and as saved.
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("escape"); // ends the last name typed
        QTest::addColumn<QString>("names");
        QTest::newRow("trimmed") << u"  Work  "_s << false << u"Work"_s;
        QTest::newRow("taken: numbered") << u"Work|Work|Work"_s << false << u"Work|Work 1|Work 2"_s;
        QTest::newRow("built-in names free") << u"Yellow"_s << false << u"Yellow"_s;
        QTest::newRow("blank: dropped") << u"   "_s << false << QString();
        QTest::newRow("Escape: dropped") << u"Work"_s << true << QString();
        QTest::newRow("own name kept") << u"Work|Work|>Work"_s << false << u"Work|Work 1"_s;
        QTest::newRow("another's: numbered")
            << u"Work|Work 1|>Work 1"_s << false << u"Work 1 1|Work 1"_s;
        QTest::newRow("blank rename") << u"Work|> "_s << false << u"Work"_s;
        QTest::newRow("Escape: old name") << u"Work|>Office"_s << true << u"Work"_s;
    }

    void namingATheme()
    {
        QFETCH(QString, typed);
        QFETCH(bool, escape);
        QFETCH(QString, names);
        const QStringList steps = typed.split(u'|');
        for (qsizetype i = 0; i < steps.size(); ++i) {
            const Qt::Key end = escape && i == steps.size() - 1 ? Qt::Key_Escape : Qt::Key_Return;
            if (steps.at(i).startsWith(u'>'))
                typeName(
                    steps.at(i).mid(1), rowOf(registry().userThemes().first()->saveName()), end);
            else
                typeName(steps.at(i), 0, end);
        }
        QStringList listed;
        for (int row = 1; row < list().numberOfRows(); ++row) {
            if (list().isNameEditableAtRow(row))
                listed.append(list().index(row).data().toString());
        }
        QStringList saved;
        for (const auto &theme : SNThemeManager(registry().userThemeDirectory()).userThemes())
            saved.append(theme->name());
        QCOMPARE(listed, names.split(u'|', Qt::SkipEmptyParts));
        QCOMPARE(saved, listed);
    }

    void builtInThemesCannotBeChangedOrDeleted()
    {
        QCOMPARE(m_editor->selectedRow(), rowOf(u"SNYellowPadTheme"_s)); // new notes' theme
        const int dark = rowOf(u"SNDarkTheme"_s);
        m_editor->selectRow(dark);
        const std::shared_ptr<SNTheme> theme = m_editor->currentTheme();
        QCOMPARE(theme, list().themeAtRow(dark));

        // A font chosen in a panel still open cannot reach it, nor can it be deleted.
        const QWFont font = theme->defaultFont();
        m_editor->didChangeFont(QFont(u"DejaVu Serif"_s, 30));
        m_editor->deleteSelectedGroups();
        QCOMPARE(theme->defaultFont(), font);
        QCOMPARE(m_fixture->presenter->asked, QStringList { Editor::cannotDeleteMessage() });
    }

    void renamingAThemeKeepsItsNotesInIt()
    {
        typeName(u"Work"_s);
        const std::shared_ptr<SNUserTheme> work = userTheme(u"Work"_s);
        const std::shared_ptr<SNStickyNote> note = noteWithText(u"Quarterly plan"_s);
        note->setThemeName(work->saveName());
        SNStickyNoteManager::sharedManager().addNote(note);
        const std::unique_ptr<SNStickyNoteWindowController> window = openNote(note);
        QCOMPARE(note->theme(), work);

        typeName(u"Office"_s, rowOf(work->saveName()));
        QCOMPARE(work->name(), u"Office"_s);
        QCOMPARE(note->themeName(), work->saveName());
        QCOMPARE(note->theme(), work);
        SNStickyNoteManager::sharedManager().removeNote(note);
    }

    void changesInThePanelsSaveOnceAfterTheLast()
    {
        typeName(u"Sunset"_s);
        int saves = 0;
        const QWNotificationCenter::Observation observation
            = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
                SNThemeManager::styleDidChangeNotificationName(), nullptr,
                [&saves](const QWNotification &) { ++saves; });
        m_editor->startColorWell()->click();
        const QColor last(230, 100, 40);
        for (const QColor &colour : { QColor(200, 40, 40), QColor(220, 80, 40), last }) {
            m_editor->colorPanel()->setCurrentColor(colour);
            m_fixture->time.advanceBy(0.3);
        }
        m_editor->fontButton()->click();
        m_editor->fontPanel()->setCurrentFont(QFont(u"DejaVu Serif"_s, 18));
        QCOMPARE(m_editor->gradientView()->startColor(), last);
        m_fixture->time.advanceBy(0.49);
        QCOMPARE(saves, 0);
        m_fixture->time.advanceBy(0.01);
        QCOMPARE(saves, 1);
        m_fixture->time.advanceBy(5.0);
        QCOMPARE(saves, 1);
        const SNThemeManager reader(registry().userThemeDirectory());
        QCOMPARE(reader.userThemes().first()->startColor().toQColor(), last);
        QCOMPARE(reader.userThemes().first()->defaultFont().pointSize(), 18.0);

        // On a built-in theme the open colour panel shows its colour, and changes nothing.
        m_editor->selectRow(rowOf(u"SNDarkTheme"_s));
        const QRgb dark = m_editor->currentTheme()->startColor().toQColor().rgb();
        QCOMPARE(m_editor->colorPanel()->currentColor().rgb(), dark);
        m_editor->colorPanel()->setCurrentColor(Qt::yellow);
        QCOMPARE(m_editor->currentTheme()->startColor().toQColor().rgb(), dark);
        // Hiding the page puts the panels away.
        m_editor->qw_viewWillDisappear();
        QVERIFY(!m_editor->colorPanel()->isVisible() && !m_editor->fontPanel()->isVisible());
    }

    void deletingAsksUnlessSuppressed()
    {
        AnsweringPresenter &person = *m_fixture->presenter;
        m_editor->tableView()->clearSelection(); // nothing chosen: a beep
        m_editor->deleteSelectedGroups();
        QCOMPARE(person.beeps, 1);

        typeName(u"One"_s);
        typeName(u"Two"_s);
        // The Delete key neither deletes a theme nor writes to the user's journal.
        {
            const QWTestEnvironment log;
            QTest::keyClick(m_editor->tableView(), Qt::Key_Delete);
            QVERIFY2(log.messages().isEmpty(), qPrintable(log.messages().join(u'\n')));
        }
        QCOMPARE(registry().userThemes().count(), 2);

        person.answers = { { u"Cancel"_s, true }, { u"Delete"_s, true } };
        m_editor->groupsActionWasClicked(1);
        QCOMPARE(registry().userThemes().count(), 2);
        QVERIFY(!SNUserDefaults::standardUserDefaults().suppressThemeDeletionAlert());
        m_editor->groupsActionWasClicked(1);
        QVERIFY(!userTheme(u"Two"_s));
        QVERIFY(SNUserDefaults::standardUserDefaults().suppressThemeDeletionAlert());
        QCOMPARE(m_editor->selectedRow(), list().numberOfRows() - 1);
        // Not asked again.
        m_editor->groupsActionWasClicked(1);
        QVERIFY(registry().userThemes().isEmpty());
        QCOMPARE(person.asked, QStringList(2, Editor::deleteConfirmationMessage()));
    }

    void closingWhileNamingNeedsAName()
    {
        m_editor->setModuleIsVisible(true);
        m_editor->groupsActionWasClicked(0);
        QVERIFY(!m_editor->windowShouldClose());
        QCOMPARE(m_fixture->presenter->asked, QStringList { Editor::missingNameMessage() });
        // The alert took the focus, yet the theme is still being named.
        settle();
        QCOMPARE(registry().userThemes().count(), 1);
        QVERIFY(m_editor->editingTextField());
        m_editor->editingTextField()->setText(u" Draft "_s);
        QVERIFY(m_editor->windowShouldClose());
        QVERIFY(userTheme(u"Draft"_s));
        QVERIFY(!m_editor->editingTextField());
    }

private:
    SNThemeManager &registry() const { return SNThemeManager::sharedManager(); }
    SDThemeListModel &list() const { return *m_editor->themeList(); }
    int rowOf(const QString &saveName) const { return list().rowOfTheme(saveName); }
    std::shared_ptr<SNUserTheme> userTheme(const QString &name) const
    {
        return registry().userThemeWithName(name);
    }
    // Types a name into the field of the row (of a new theme for 0) and ends with the key.
    void typeName(const QString &name, int row = 0, Qt::Key end = Qt::Key_Return)
    {
        if (row > 0)
            m_editor->tableView()->edit(list().index(row));
        else
            m_editor->groupsActionWasClicked(0);
        QLineEdit *field = m_editor->editingTextField();
        QVERIFY(field);
        field->setText(name);
        QTest::keyClick(field, end);
        settle();
    }

    std::optional<PreferencesFixture> m_fixture;
    std::unique_ptr<Editor> m_editor;
};

QTEST_MAIN(TestSDApperancePreferencesViewController)
#include "TestSDApperancePreferencesViewController.moc"
