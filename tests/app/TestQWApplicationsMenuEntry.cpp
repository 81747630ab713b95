#include "app/QWApplicationsMenuEntry.h"
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
QString validatorComplaints(const QString &path)
{
    QProcess validator;
    validator.start(QStringLiteral("desktop-file-validate"), { path });
    if (!validator.waitForStarted())
        qFatal("desktop-file-validate is not installed; ./build.sh installs it");
    validator.waitForFinished();
    const QString output
        = QString::fromUtf8(validator.readAllStandardOutput() + validator.readAllStandardError());
    return validator.exitCode() == 0 ? output.trimmed() : QStringLiteral("failed: ") + output;
}

// A key file's value as written, looked up by group and key.
QString desktopEntryValue(const QString &path, const QString &group, const QString &key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString currentGroup;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
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
    void shippedEntryIsValid();
    void execLinesPointAtTheProgram();
    void installWritesEntryAndIcon();
    void buildTreesAreRecognised();
};

void TestQWApplicationsMenuEntry::shippedEntryIsValid()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(identifier + QStringLiteral(".desktop"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(shippedEntry());
    file.close();
    QCOMPARE(validatorComplaints(path), QString());

    // The actions the desktop offers, each with its command.
    QCOMPARE(desktopEntryValue(path, QStringLiteral("Desktop Entry"), QStringLiteral("Actions")),
        QStringLiteral("new-note;show-all-notes;toggle-tags;note-from-selection;"));
    QCOMPARE(
        desktopEntryValue(path, QStringLiteral("Desktop Action new-note"), QStringLiteral("Name")),
        QStringLiteral("New Note"));
    QCOMPARE(desktopEntryValue(
                 path, QStringLiteral("Desktop Action show-all-notes"), QStringLiteral("Name")),
        QStringLiteral("Show All Notes"));
    QCOMPARE(desktopEntryValue(
                 path, QStringLiteral("Desktop Action toggle-tags"), QStringLiteral("Name")),
        QStringLiteral("Toggle Tag Browser"));
    QCOMPARE(desktopEntryValue(path, QStringLiteral("Desktop Action note-from-selection"),
                 QStringLiteral("Exec")),
        QStringLiteral("vellumo --note-from-selection"));
    QVERIFY(desktopEntryValue(path, QStringLiteral("Desktop Entry"), QStringLiteral("MimeType"))
                .contains(QStringLiteral("text/rtf;")));
}

void TestQWApplicationsMenuEntry::execLinesPointAtTheProgram()
{
    const QByteArray entry = QWApplicationsMenuEntry::entryForProgram(
        shippedEntry(), QStringLiteral("/home/anna/my builds/100%/vellumo"));
    const QList<QByteArray> lines = entry.split('\n');
    QVERIFY(lines.contains("TryExec=/home/anna/my builds/100%/vellumo"));
    QVERIFY(lines.contains("Exec=\"/home/anna/my builds/100%%/vellumo\" %U"));
    QVERIFY(lines.contains("Exec=\"/home/anna/my builds/100%%/vellumo\" --new-note"));
    QVERIFY(!entry.contains("Exec=vellumo"));
    // Everything else stays as shipped.
    QCOMPARE(entry.count('\n'), shippedEntry().count('\n'));
    QVERIFY(lines.contains("Name=Toggle Tag Browser"));

    QTemporaryDir folder;
    const QString path = folder.filePath(identifier + QStringLiteral(".desktop"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(entry);
    file.close();
    QCOMPARE(validatorComplaints(path), QString());
}

void TestQWApplicationsMenuEntry::installWritesEntryAndIcon()
{
    QWTestEnvironment environment;
    QVERIFY(!QWApplicationsMenuEntry::isInstalled(identifier));
    QVERIFY(QWApplicationsMenuEntry::desktopEntryPath(identifier)
                .startsWith(environment.dataHome() + QStringLiteral("/applications/")));

    const QByteArray icon("<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
    QVERIFY(QWApplicationsMenuEntry::install(
        identifier, shippedEntry(), icon, QStringLiteral("/opt/build/src/vellumo")));
    QVERIFY(QWApplicationsMenuEntry::isInstalled(identifier));
    QFile written(QWApplicationsMenuEntry::desktopEntryPath(identifier));
    QVERIFY(written.open(QIODevice::ReadOnly));
    QVERIFY(written.readAll().contains("\nExec=/opt/build/src/vellumo %U\n"));
    QFile writtenIcon(environment.dataHome()
        + QStringLiteral("/icons/hicolor/scalable/apps/org.vellumo.Vellumo.svg"));
    QVERIFY(writtenIcon.open(QIODevice::ReadOnly));
    QCOMPARE(writtenIcon.readAll(), icon);

    // A data folder that is a file cannot take the entry.
    QDir(environment.dataHome()).removeRecursively();
    QFile blocker(environment.dataHome());
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    QVERIFY(!QWApplicationsMenuEntry::install(
        identifier, shippedEntry(), icon, QStringLiteral("/opt/build/src/vellumo")));
}

void TestQWApplicationsMenuEntry::buildTreesAreRecognised()
{
    QTemporaryDir tree;
    QDir(tree.path()).mkpath(QStringLiteral("src"));
    const QString program = tree.filePath(QStringLiteral("src/vellumo"));
    QVERIFY(!QWApplicationsMenuEntry::isRunningFromBuildTree(program));

    QFile cache(tree.filePath(QStringLiteral("CMakeCache.txt")));
    QVERIFY(cache.open(QIODevice::WriteOnly));
    cache.close();
    QVERIFY(QWApplicationsMenuEntry::isRunningFromBuildTree(program));
    QVERIFY(
        QWApplicationsMenuEntry::isRunningFromBuildTree(tree.filePath(QStringLiteral("vellumo"))));
    // Too far up to be this program's build.
    QDir(tree.path()).mkpath(QStringLiteral("a/b"));
    QVERIFY(!QWApplicationsMenuEntry::isRunningFromBuildTree(
        tree.filePath(QStringLiteral("a/b/vellumo"))));
}

QTEST_GUILESS_MAIN(TestQWApplicationsMenuEntry)
#include "TestQWApplicationsMenuEntry.moc"
