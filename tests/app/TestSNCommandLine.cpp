#include "app/SNCommandLine.h"
#include "app/SNLaunchRequest.h"

#include <QCoreApplication>
#include <QTest>
#include <QUrl>

namespace {

QStringList arguments(const QStringList &rest)
{
    return QStringList { QStringLiteral("vellumo") } + rest;
}

} // namespace

class TestSNCommandLine final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesBecomeAbsoluteFileUrls();
    void urlsPassAsTheyAre();
    void optionsBecomeActionsWithQuitLast();
    void dashReadsStandardInputForANote();
    void helpVersionAndMistakes();
};

void TestSNCommandLine::filesBecomeAbsoluteFileUrls()
{
    SNCommandLine commandLine;
    QVERIFY(
        commandLine.parse(arguments({ QStringLiteral("notes/a.rtf"), QStringLiteral("../b c.rtf"),
            QStringLiteral("/tmp/100%.rtf"), QStringLiteral("Folder.rtfd") })));
    const SNLaunchRequest request = commandLine.request(QStringLiteral("/home/anna/docs"), {});
    QCOMPARE(request.uris,
        (QStringList { QStringLiteral("file:///home/anna/docs/notes/a.rtf"),
            QStringLiteral("file:///home/anna/b%20c.rtf"), QStringLiteral("file:///tmp/100%25.rtf"),
            QStringLiteral("file:///home/anna/docs/Folder.rtfd") }));
    // What the running program turns them back into.
    QCOMPARE(QUrl(request.uris.at(1)).toLocalFile(), QStringLiteral("/home/anna/b c.rtf"));
    QCOMPARE(QUrl(request.uris.at(2)).toLocalFile(), QStringLiteral("/tmp/100%.rtf"));
    QVERIFY(request.actions.isEmpty());
    QVERIFY(!request.selectionText);
}

void TestSNCommandLine::urlsPassAsTheyAre()
{
    SNCommandLine commandLine;
    QVERIFY(commandLine.parse(
        arguments({ QStringLiteral("vellumo://lal"), QStringLiteral("file:///tmp/x.rtf"),
            QStringLiteral("VELLUMO://lal"), QStringLiteral("vellumo-notes.rtf") })));
    const SNLaunchRequest request = commandLine.request(QStringLiteral("/w"), {});
    QCOMPARE(request.uris,
        (QStringList { QStringLiteral("vellumo://lal"), QStringLiteral("file:///tmp/x.rtf"),
            QStringLiteral("VELLUMO://lal"), QStringLiteral("file:///w/vellumo-notes.rtf") }));
}

void TestSNCommandLine::optionsBecomeActionsWithQuitLast()
{
    SNCommandLine commandLine;
    QVERIFY(commandLine.parse(arguments(
        { QStringLiteral("--quit"), QStringLiteral("--toggle-tags"), QStringLiteral("--new-note"),
            QStringLiteral("--show-all-notes"), QStringLiteral("--note-from-selection") })));
    const SNLaunchRequest request = commandLine.request(QStringLiteral("/"), {});
    QCOMPARE(request.actions,
        (QStringList { QStringLiteral("show-all-notes"), QStringLiteral("new-note"),
            QStringLiteral("note-from-selection"), QStringLiteral("toggle-tags"),
            QStringLiteral("quit") }));
    // No text of its own: the selection is read where the action runs.
    QVERIFY(!request.selectionText);
    QVERIFY(!request.isEmpty());

    SNCommandLine nothing;
    QVERIFY(nothing.parse(arguments({})));
    QVERIFY(nothing.request(QStringLiteral("/"), {}).isEmpty());
}

void TestSNCommandLine::dashReadsStandardInputForANote()
{
    int reads = 0;
    const auto input = [&reads] {
        ++reads;
        return QStringLiteral("piped\n");
    };

    SNCommandLine withoutDash;
    QVERIFY(withoutDash.parse(arguments({ QStringLiteral("--note-from-selection") })));
    withoutDash.request(QStringLiteral("/"), input);
    QCOMPARE(reads, 0);

    SNCommandLine dash;
    QVERIFY(dash.parse(arguments({ QStringLiteral("-"), QStringLiteral("--quit") })));
    const SNLaunchRequest request = dash.request(QStringLiteral("/"), input);
    QCOMPARE(reads, 1);
    QCOMPARE(request.selectionText, std::optional(QStringLiteral("piped\n")));
    QCOMPARE(request.actions,
        (QStringList { QStringLiteral("note-from-selection"), QStringLiteral("quit") }));
    QVERIFY(request.uris.isEmpty());

    // Empty input is still input: the note is refused rather than made of the selection.
    SNCommandLine emptyInput;
    QVERIFY(emptyInput.parse(arguments({ QStringLiteral("-") })));
    QCOMPARE(emptyInput.request(QStringLiteral("/"), [] { return QString(); }).selectionText,
        std::optional(QString()));
}

void TestSNCommandLine::helpVersionAndMistakes()
{
    SNCommandLine help;
    QVERIFY(help.parse(arguments({ QStringLiteral("--help") })));
    QVERIFY(help.isHelpRequested());
    QVERIFY(!help.isVersionRequested());

    SNCommandLine version;
    QVERIFY(version.parse(arguments({ QStringLiteral("--version") })));
    QVERIFY(version.isVersionRequested());

    SNCommandLine mistake;
    QVERIFY(!mistake.parse(arguments({ QStringLiteral("--new-notes") })));
    QVERIFY(mistake.errorText().contains(QStringLiteral("new-notes")));

    // Every action of the desktop entry and of D-Bus has its option.
    SNCommandLine all;
    QStringList options;
    for (const QString &action : SNLaunchRequest::actionNames())
        options.append(QStringLiteral("--") + action);
    QVERIFY(all.parse(arguments(options)));
    QCOMPARE(
        all.request(QStringLiteral("/"), {}).actions.size(), SNLaunchRequest::actionNames().size());
}

QTEST_GUILESS_MAIN(TestSNCommandLine)
#include "TestSNCommandLine.moc"
