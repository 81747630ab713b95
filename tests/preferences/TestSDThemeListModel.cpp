#include "preferences/SDThemeListModel.h"
#include "settings/SNUserDefaults.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

class TestSDThemeListModel final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        defaults().setDefaultThemeName(u"SNYellowPadTheme"_s);
        m_registry = std::make_unique<SNThemeManager>(m_directory.path());
        m_list = std::make_unique<SDThemeListModel>(*m_registry, defaults());
        m_tester = std::make_unique<QAbstractItemModelTester>(
            m_list.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    void cleanup() { m_list.reset(); }

    void groupRowThenEveryThemeOnlyTheUsersRenamable()
    {
        const std::shared_ptr<SNUserTheme> work = SNUserTheme::theme();
        work->setName(u"Work"_s);
        m_registry->addTheme(work);
        m_list->reloadThemes();
        const int rows = m_list->numberOfRows();
        QCOMPARE(rows, m_registry->themes().size() + 1);
        // The group row: a title as written, nothing to select.
        QCOMPARE(m_list->index(0).data().toString(), u"Themes"_s);
        QCOMPARE(m_list->flags(m_list->index(0)), Qt::ItemIsEnabled);
        QVERIFY(!m_list->themeAtRow(0) && !m_list->themeAtRow(rows));
        for (int row = 1; row < rows; ++row) {
            const std::shared_ptr<SNTheme> theme = m_list->themeAtRow(row);
            QCOMPARE(theme, m_registry->themes().at(row - 1));
            QCOMPARE(m_list->rowOfTheme(theme->saveName()), row);
            QCOMPARE(m_list->index(row).data().toString(), theme->name());
            QVERIFY(!m_list->index(row).data(Qt::DecorationRole).value<QIcon>().isNull());
            QCOMPARE(m_list->isNameEditableAtRow(row), theme == work);
        }
    }

private:
    SNUserDefaults &defaults() const { return SNUserDefaults::standardUserDefaults(); }

    QTemporaryDir m_directory;
    std::unique_ptr<SNThemeManager> m_registry;
    std::unique_ptr<SDThemeListModel> m_list;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

QTEST_MAIN(TestSDThemeListModel)
#include "TestSDThemeListModel.moc"
