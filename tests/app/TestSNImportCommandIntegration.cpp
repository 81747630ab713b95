#include "SNAppTestSupport.h"
#include "support/QWProgramSession.h"

#include <QDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// xpad's folder as xpad itself wrote it: two pads.
const QString xpadFolder = importGolden(u"xpad/formatted/home/.config/xpad"_s);

// Akonadi's notes folder as KNotes wrote it: three notes, one of them rich text.
const QString knotesFolder = importGolden(u"knotes/akonadi-notes/home/.local/share/notes"_s);

} // namespace

// The import commands of the command line, carried out by the running program over the
// session bus, and by the start that asks when none runs.
class TestSNImportCommandIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void importsOnceThroughTheRunningProgramOrWithoutIt()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        QString output;
        // Nothing runs: the start that asks imports into the notes itself, from the path given.
        QCOMPARE(session.runSecond({ u"--import"_s, u"xpad"_s, xpadFolder }, {}, &output), 0);
        QVERIFY2(output.startsWith(u"xpad: 2 notes imported\n"_s), qPrintable(output));
        QCOMPARE(session.runSecond({ u"--import"_s, u"nonesuch"_s }, {}, &output), 1);
        // KNotes' rich notes keep their formatting without a display.
        QCOMPARE(session.runSecond({ u"--import"_s, u"knotes"_s, knotesFolder }, {}, &output), 0);
        QVERIFY2(output.startsWith(u"KNotes: 3 notes imported\n"_s), qPrintable(output));
        const QString early = session.homePath(u"early"_s);
        QCOMPARE(session.runSecond({ u"--export-markdown"_s, early }, {}, &output), 0);
        QVERIFY(fileBytes(early + u"/Rich.md"_s).contains("**Bold**"));

        // The running program finds xpad in its own places and knows what came in before.
        copyFolder(xpadFolder, session.homePath(u"config/xpad"_s));
        QVERIFY(session.start());
        QCOMPARE(session.runSecond({ u"--import-list"_s }, {}, &output), 0);
        QVERIFY2(output.startsWith(u"xpad\txpad\t2 notes, 2 imported before\t%1\n"_s.arg(
                     session.homePath(u"config/xpad"_s))),
            qPrintable(output));
        QCOMPARE(session.runSecond({ u"--import"_s, u"xpad"_s }, {}, &output), 0);
        QVERIFY2(output.startsWith(u"xpad: 0 notes imported\n  2 notes imported before"_s),
            qPrintable(output));

        const QString markdown = session.homePath(u"markdown"_s);
        QCOMPARE(session.runSecond({ u"--export-markdown"_s, markdown }, {}, &output), 0);
        QVERIFY2(output.contains(u"exported as Markdown"_s), qPrintable(output));
        QVERIFY(QDir(markdown).entryList({ u"*.md"_s }).size() >= 2);
        QCOMPARE(session.runSecond({ u"--quit"_s }), 0);
        QVERIFY(session.program().waitForFinished());
    }
};

QTEST_MAIN(TestSNImportCommandIntegration)
#include "TestSNImportCommandIntegration.moc"
