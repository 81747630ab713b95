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
        { writtenFile(folder.filePath(identifier + QStringLiteral(".desktop")), entry) });
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
    // Installed, the entry runs the program wherever it lies, and each action but quit runs
    // itself through the command line; the desktop's validator accepts it, and the entry as
    // shipped for packages too.
    void installedEntryIsValidAndEachActionRunsItself()
    {
        QWTestEnvironment environment;
        QCOMPARE(validatorComplaints(shippedEntry()), QString());
        QVERIFY(!QWApplicationsMenuEntry::isInstalled(identifier));
        const QByteArray icon("<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
        const QString program = QStringLiteral("/home/anna/my builds/100%/vellumo");
        QVERIFY(QWApplicationsMenuEntry::install(identifier, shippedEntry(), icon, program));
        QVERIFY(QWApplicationsMenuEntry::isInstalled(identifier));
        const QByteArray entry = fileBytes(QWApplicationsMenuEntry::desktopEntryPath(identifier));
        QCOMPARE(validatorComplaints(entry), QString());
        QCOMPARE(entry.count('\n'), shippedEntry().count('\n'));
        const QString main = QStringLiteral("Desktop Entry");
        QCOMPARE(valueOf(entry, main, QStringLiteral("TryExec")), program);
        // Quoted, with the percent sign doubled as Exec lines want it.
        const QString exec = QStringLiteral("\"/home/anna/my builds/100%%/vellumo\" ");
        QCOMPARE(valueOf(entry, main, QStringLiteral("Exec")), exec + QStringLiteral("%U"));
        const QStringList actions = valueOf(entry, main, QStringLiteral("Actions"))
                                        .split(QLatin1Char(';'), Qt::SkipEmptyParts);
        QCOMPARE(actions.size(), SNLaunchRequest::actionNames().size() - 1);
        for (const QString &action : actions) {
            const QString line = valueOf(
                entry, QStringLiteral("Desktop Action ") + action, QStringLiteral("Exec"));
            QVERIFY2(line.startsWith(exec), qPrintable(line));
            SNCommandLine commandLine;
            QVERIFY2(commandLine.parse(QProcess::splitCommand(line)), qPrintable(line));
            QCOMPARE(commandLine.request(QStringLiteral("/"), {}).actions, QStringList { action });
        }

        // A data folder that is a file cannot take the entry.
        QDir(environment.dataHome()).removeRecursively();
        writtenFile(environment.dataHome(), QByteArray());
        QVERIFY(!QWApplicationsMenuEntry::install(identifier, shippedEntry(), icon, program));
    }
};

QTEST_GUILESS_MAIN(TestQWApplicationsMenuEntry)
#include "TestQWApplicationsMenuEntry.moc"
