#include "SNAppTestSupport.h"
#include "app/QWApplicationsMenuEntry.h"
#include "app/SNCommandLine.h"
#include "app/SNLaunchRequest.h"
#include "support/QWTestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString identifier = QStringLiteral("org.vellumo.Vellumo");

QByteArray shippedEntry()
{
    QFile file(QStringLiteral(":/Vellumo/org.vellumo.Vellumo.desktop"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The desktop entry is missing from the resources");
    return file.readAll();
}

// What the freedesktop reference validator says of an entry; empty when it has no complaint.
QString validatorComplaints(const QByteArray &entry)
{
    QTemporaryDir folder;
    QProcess validator;
    validator.start(QStringLiteral("desktop-file-validate"),
        { writeFile(folder.filePath(identifier + QStringLiteral(".desktop")), entry) });
    if (!validator.waitForStarted())
        qFatal("desktop-file-validate is not installed; ./build.sh installs it");
    validator.waitForFinished();
    const QString output
        = QString::fromUtf8(validator.readAllStandardOutput() + validator.readAllStandardError());
    return validator.exitCode() == 0 ? output.trimmed() : QStringLiteral("failed: ") + output;
}

// A key's value as written in the entry, looked up by group and key.
QString valueOf(const QByteArray &entry, const QString &group, const QString &key)
{
    QString currentGroup;
    for (const QString &line : QString::fromUtf8(entry).split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']')))
            currentGroup = line.mid(1, line.size() - 2);
        else if (currentGroup == group && line.startsWith(key + QLatin1Char('=')))
            return line.mid(key.size() + 1);
    }
    return {};
}

} // namespace

class TestQWApplicationsMenuEntry final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shippedEntryIsValidAndEachActionRunsItself()
    {
        const QByteArray entry = shippedEntry();
        QCOMPARE(validatorComplaints(entry), QString());
        QVERIFY(valueOf(entry, QStringLiteral("Desktop Entry"), QStringLiteral("MimeType"))
                    .contains(QStringLiteral("text/rtf;")));
        // The desktop offers every action but quit, each through the command line.
        const QStringList actions
            = valueOf(entry, QStringLiteral("Desktop Entry"), QStringLiteral("Actions"))
                  .split(QLatin1Char(';'), Qt::SkipEmptyParts);
        QCOMPARE(actions.size(), SNLaunchRequest::actionNames().size() - 1);
        for (const QString &action : actions) {
            const QString exec = valueOf(
                entry, QStringLiteral("Desktop Action ") + action, QStringLiteral("Exec"));
            SNCommandLine commandLine;
            QVERIFY2(commandLine.parse(QProcess::splitCommand(exec)), qPrintable(exec));
            QCOMPARE(commandLine.request(QStringLiteral("/"), {}).actions, QStringList { action });
        }
    }

    void installPointsTheEntryAtTheProgram()
    {
        QWTestEnvironment environment;
        QVERIFY(!QWApplicationsMenuEntry::isInstalled(identifier));
        const QByteArray icon("<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
        const QString program = QStringLiteral("/home/anna/my builds/100%/vellumo");
        QVERIFY(QWApplicationsMenuEntry::install(identifier, shippedEntry(), icon, program));
        QVERIFY(QWApplicationsMenuEntry::isInstalled(identifier));
        QFile written(QWApplicationsMenuEntry::desktopEntryPath(identifier));
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QByteArray entry = written.readAll();
        QCOMPARE(validatorComplaints(entry), QString());
        // Every Exec line, the actions' too, quoted and escaped; everything else as shipped.
        const QList<QByteArray> lines = entry.split('\n');
        QVERIFY(lines.contains("TryExec=/home/anna/my builds/100%/vellumo"));
        QVERIFY(lines.contains("Exec=\"/home/anna/my builds/100%%/vellumo\" %U"));
        QVERIFY(lines.contains("Exec=\"/home/anna/my builds/100%%/vellumo\" --new-note"));
        QVERIFY(!entry.contains("Exec=vellumo"));
        QCOMPARE(entry.count('\n'), shippedEntry().count('\n'));
        QFile writtenIcon(environment.dataHome()
            + QStringLiteral("/icons/hicolor/scalable/apps/org.vellumo.Vellumo.svg"));
        QVERIFY(writtenIcon.open(QIODevice::ReadOnly));
        QCOMPARE(writtenIcon.readAll(), icon);

        // A data folder that is a file cannot take the entry.
        QDir(environment.dataHome()).removeRecursively();
        QFile blocker(environment.dataHome());
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        QVERIFY(!QWApplicationsMenuEntry::install(identifier, shippedEntry(), icon, program));
    }

    void buildTreesAreRecognised()
    {
        QTemporaryDir tree;
        QDir(tree.path()).mkpath(QStringLiteral("src"));
        QDir(tree.path()).mkpath(QStringLiteral("a/b"));
        const QString program = tree.filePath(QStringLiteral("src/vellumo"));
        QVERIFY(!QWApplicationsMenuEntry::isRunningFromBuildTree(program));
        QFile cache(tree.filePath(QStringLiteral("CMakeCache.txt")));
        QVERIFY(cache.open(QIODevice::WriteOnly));
        cache.close();
        QVERIFY(QWApplicationsMenuEntry::isRunningFromBuildTree(program));
        QVERIFY(QWApplicationsMenuEntry::isRunningFromBuildTree(
            tree.filePath(QStringLiteral("vellumo"))));
        // Too far up to be this program's build.
        QVERIFY(!QWApplicationsMenuEntry::isRunningFromBuildTree(
            tree.filePath(QStringLiteral("a/b/vellumo"))));
    }
};

QTEST_GUILESS_MAIN(TestQWApplicationsMenuEntry)
#include "TestQWApplicationsMenuEntry.moc"
