#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "preferences/SNSyncState.h"
#include "preferences/SyncPreferencesViewController.h"
#include "settings/SNUserDefaults.h"
#include "support/QWTestEnvironment.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

using namespace Qt::Literals::StringLiterals;

namespace {

// Picks the folder it is told to in the real folder chooser, or cancels it.
class FolderPicker final : public SNModalPresenter
{
public:
    QString folder; // empty cancels

    QString runSavePanel(QFileDialog &panel) override
    {
        QTimer::singleShot(0, &panel, [&panel, this] {
            if (folder.isEmpty())
                return panel.reject();
            panel.setDirectory(QFileInfo(folder).path());
            panel.selectFile(QFileInfo(folder).fileName());
            static_cast<QDialog &>(panel).accept(); // as its Open button does
        });
        return SNModalPresenter::runSavePanel(panel);
    }
};

QStringList rowsOf(const QTreeWidget *list)
{
    QStringList rows;
    for (int row = 0; row < list->topLevelItemCount(); ++row)
        rows.append(list->topLevelItem(row)->text(0));
    return rows;
}

} // namespace

class TestSyncPreferencesViewController final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheComputersThatShareTheChosenFolder()
    {
        QWTestEnvironment environment;
        SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
        QTemporaryDir sync;
        QTemporaryDir deskHome;
        SNStickyNoteManager desk(deskHome.path(), u"desk-id"_s);
        // The laptop shares the folder already.
        SNSyncFolder laptopFolder(sync.path(), u"laptop-id"_s);
        QVERIFY(laptopFolder.writeDescription(u"Laptop"_s, u"machine-2"_s));

        SNSyncState state;
        SyncPreferencesViewController pane(defaults, desk, &state);
        auto picker = std::make_shared<FolderPicker>();
        pane.setModalPresenter(picker);
        auto *list = pane.view()->findChild<QTreeWidget *>(u"deviceList"_s);
        auto *stop = pane.view()->findChild<QPushButton *>(u"stopButton"_s);
        auto *name = pane.view()->findChild<QLineEdit *>(u"nameField"_s);
        QVERIFY(list && stop && name);
        QVERIFY(!stop->isEnabled());
        QCOMPARE(name->text(), QSysInfo::machineHostName());

        QVERIFY(!pane.chooseFolder());
        QVERIFY(defaults.syncFolder().isEmpty());
        picker->folder = sync.path();
        QVERIFY(pane.chooseFolder());
        QCOMPARE(defaults.syncFolder(), sync.path());
        QVERIFY(stop->isEnabled());
        QCOMPARE(rowsOf(list), QStringList { u"Laptop"_s });

        name->setText(u"Desk"_s);
        Q_EMIT name->editingFinished();
        QCOMPARE(defaults.deviceName(), u"Desk"_s);
        state.update(nullptr, u"Could not share the notes: the disk is full."_s);
        QCOMPARE(pane.statusText(), u"Could not share the notes: the disk is full."_s);

        // The host name again: the name follows the host from now on.
        name->setText(QSysInfo::machineHostName());
        Q_EMIT name->editingFinished();
        QVERIFY(defaults.stringForKey(SNUserDefaults::deviceNameKey()).isEmpty());

        QTest::mouseClick(stop, Qt::LeftButton);
        QVERIFY(defaults.syncFolder().isEmpty());
        QCOMPARE(list->topLevelItemCount(), 1);
        QVERIFY(!(list->topLevelItem(0)->flags() & Qt::ItemIsEnabled));
    }
};

QTEST_MAIN(TestSyncPreferencesViewController)
#include "TestSyncPreferencesViewController.moc"
