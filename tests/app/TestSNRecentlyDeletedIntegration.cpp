#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

using namespace QWProgramDriver;

namespace {

// Where a note window's buttons sit, from its top-left and top-right corners.
constexpr int buttonInset = 16;

void key(const QString &keys)
{
    xdotool(QStringList { QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("80") }
        + keys.split(QLatin1Char(' ')));
}

void clickInWindow(const QString &window, int x, int y)
{
    xdotool({ QStringLiteral("mousemove"), QStringLiteral("--window"), window, QString::number(x),
        QString::number(y), QStringLiteral("click"), QStringLiteral("1") });
}

// The texts of the notes that the archive holds, by id, as another program reads them.
QString notesInArchive(const QString &path)
{
    static const char reader[] = R"(
import cbor2, sys
def load(data):
    value = cbor2.loads(data)
    return value.value if isinstance(value, cbor2.CBORTag) else value
def walk(value, found):
    if isinstance(value, dict):
        if value.get("$class") == "SNStickyNote":
            text = load(value["data"])["$top"]["string"]
            found.append(value["uuid"] + "\t" + text)
        for item in value.values():
            walk(item, found)
    elif isinstance(value, list):
        for item in value:
            walk(item, found)
found = []
walk(load(open(sys.argv[1], "rb").read())["$top"], found)
print("\n".join(found))
)";
    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { QStringLiteral("-c"), QString::fromLatin1(reader), path });
    if (!python.waitForFinished(20000) || python.exitCode() != 0)
        qFatal("python3 could not read %s: %s", qUtf8Printable(path),
            python.readAllStandardError().constData());
    return QString::fromUtf8(python.readAllStandardOutput());
}

} // namespace

class TestSNRecentlyDeletedIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDeletedNoteComesBackThroughAnotherNotesMenu()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        QVERIFY(session.start());
        const qint64 pid = session.program().processId();
        QTRY_VERIFY_WITH_TIMEOUT(visibleWindows(pid).size() > 1, 20000);

        // A note of one's own, typed in.
        const QStringList before = visibleWindows(pid);
        QCOMPARE(session.runSecond({ QStringLiteral("--new-note") }), 0);
        QTRY_COMPARE(visibleWindows(pid).size(), before.size() + 1);
        QString note;
        for (const QString &window : visibleWindows(pid)) {
            if (!before.contains(window))
                note = window;
        }
        xdotool({ QStringLiteral("windowactivate"), QStringLiteral("--sync"), note });
        xdotool({ QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"),
            QStringLiteral("Call the plumber") });

        // Deleted by its close button, saying so when asked about an export.
        clickInWindow(note, buttonInset, buttonInset - 1);
        QTRY_COMPARE(visibleWindows(pid).size(), before.size() + 2);
        key(QStringLiteral("Tab space"));
        QTRY_COMPARE(visibleWindows(pid).size(), before.size());

        QString listing;
        QCOMPARE(session.runSecond({ QStringLiteral("--list-deleted") }, {}, &listing), 0);
        const QRegularExpressionMatch line
            = QRegularExpression(QStringLiteral("^([0-9a-f-]{36})\\t(\\S+)\\tCall the plumber$"),
                QRegularExpression::MultilineOption)
                  .match(listing);
        QVERIFY2(line.hasMatch(), qPrintable(listing));
        const QString id = line.captured(1);
        QVERIFY(QDateTime::fromString(line.captured(2), Qt::ISODate).isValid());
        QCOMPARE(session.runSecond({ QStringLiteral("--restore-deleted"),
                     QStringLiteral("00000000-0000-0000-0000-00000000abcd") }),
            1);

        // Back through another note's Vellumo menu, by keyboard: the settings button, then
        // "Vellumo", then "Recently Deleted" counted from the bottom of its menu.
        const QString other = before.constFirst();
        xdotool({ QStringLiteral("windowactivate"), QStringLiteral("--sync"), other });
        clickInWindow(other, windowGeometry(other).width() - buttonInset, buttonInset - 1);
        QTest::qWait(400);
        key(QStringLiteral("Up Up Right"));
        QTest::qWait(300);
        key(QStringLiteral("Up Up Up Up Up Up Up Up Up Up Right"));
        QTest::qWait(300);
        key(QStringLiteral("Return"));
        QTRY_COMPARE(visibleWindows(pid).size(), before.size() + 1);
        QCOMPARE(session.runSecond({ QStringLiteral("--list-deleted") }, {}, &listing), 0);
        QVERIFY2(!listing.contains(id), qPrintable(listing));

        QCOMPARE(session.runSecond({ QStringLiteral("--quit") }), 0);
        QVERIFY(session.program().waitForFinished());
        const QString archive
            = notesInArchive(session.notesFolder() + QStringLiteral("/stickies.db"));
        QVERIFY2(
            archive.split(QLatin1Char('\n')).contains(id + QStringLiteral("\tCall the plumber")),
            qPrintable(archive));
    }
};

QTEST_MAIN(TestSNRecentlyDeletedIntegration)
#include "TestSNRecentlyDeletedIntegration.moc"
