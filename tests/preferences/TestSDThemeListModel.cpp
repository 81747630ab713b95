#include "preferences/SDThemeListModel.h"
#include "settings/SNUserDefaults.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestSDThemeListModel final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void groupRowComesFirstThenEveryTheme();
    void onlyUserThemesCanBeRenamed();
    void theDefaultThemeIsMarked();

private:
    SNUserDefaults &defaults() const { return SNUserDefaults::standardUserDefaults(); }

    QTemporaryDir m_directory;
    std::unique_ptr<SNThemeManager> m_registry;
    std::unique_ptr<SDThemeListModel> m_list;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestSDThemeListModel::init()
{
    defaults().setDefaultThemeName(QStringLiteral("SNYellowPadTheme"));
    m_registry = std::make_unique<SNThemeManager>(m_directory.path());
    m_list = std::make_unique<SDThemeListModel>(*m_registry, defaults());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_list.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
}

void TestSDThemeListModel::cleanup()
{
    m_tester.reset();
    m_list.reset();
    m_registry.reset();
}

void TestSDThemeListModel::groupRowComesFirstThenEveryTheme()
{
    QCOMPARE(m_list->numberOfRows(), 8);
    const QModelIndex group = m_list->index(0);
    QCOMPARE(group.data().toString(), QStringLiteral("Themes"));
    QCOMPARE(m_list->flags(group), Qt::ItemIsEnabled);
    QCOMPARE(group.data(Qt::SizeHintRole).toSize().height(), 35);
    QVERIFY(!m_list->themeAtRow(0));

    const QModelIndex yellow = m_list->index(1);
    QCOMPARE(m_list->themeAtRow(1), m_registry->themes().first());
    QCOMPARE(yellow.data().toString(), m_registry->themes().first()->name());
    QVERIFY(!yellow.data(Qt::DecorationRole).value<QIcon>().isNull());
    QCOMPARE(yellow.data(Qt::SizeHintRole).toSize().height(), 28);
    const int dark = m_list->rowOfTheme(QStringLiteral("SNDarkTheme"));
    QVERIFY(dark > 1);
    QCOMPARE(m_list->themeAtRow(dark)->saveName(), QStringLiteral("SNDarkTheme"));
    QVERIFY(!m_list->themeAtRow(8));
}

void TestSDThemeListModel::onlyUserThemesCanBeRenamed()
{
    const std::shared_ptr<SNUserTheme> work = SNUserTheme::theme();
    work->setName(QStringLiteral("Work"));
    m_registry->addTheme(work);
    QCOMPARE(m_list->numberOfRows(), 8);
    m_list->reloadThemes();
    QCOMPARE(m_list->numberOfRows(), 9);
    QCOMPARE(m_list->themeAtRow(8), work);
    QCOMPARE(m_list->index(8).data(Qt::EditRole).toString(), QStringLiteral("Work"));
    QVERIFY(m_list->isNameEditableAtRow(8));
    QVERIFY(m_list->flags(m_list->index(8)).testFlag(Qt::ItemIsSelectable));
    for (int row = 0; row < 8; ++row)
        QVERIFY(!m_list->isNameEditableAtRow(row));
}

void TestSDThemeListModel::theDefaultThemeIsMarked()
{
    QVERIFY(m_list->isDefaultMarkerVisibleAtRow(1));
    QVERIFY(!m_list->isDefaultMarkerVisibleAtRow(0));
    QVERIFY(!m_list->isDefaultMarkerVisibleAtRow(2));
    QVERIFY(!m_list->index(1).data(Qt::ToolTipRole).toString().isEmpty());

    const int dark = m_list->rowOfTheme(QStringLiteral("SNDarkTheme"));
    defaults().setDefaultThemeName(QStringLiteral("SNDarkTheme"));
    QSignalSpy changed(m_list.get(), &SDThemeListModel::dataChanged);
    m_list->reloadData();
    QVERIFY(!changed.isEmpty());
    QVERIFY(m_list->isDefaultMarkerVisibleAtRow(dark));
    QVERIFY(!m_list->isDefaultMarkerVisibleAtRow(1));
    QVERIFY(m_list->index(1).data(Qt::ToolTipRole).toString().isEmpty());
}

QTEST_MAIN(TestSDThemeListModel)
#include "TestSDThemeListModel.moc"
