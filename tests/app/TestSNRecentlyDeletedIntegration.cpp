#include "SNProgramTestSupport.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace QWProgramDriver;

class TestSNRecentlyDeletedIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDeletedNoteComesBackThroughAnotherNotesMenu()
    {
        QVERIFY(!QWProgramSession::isServing());
        QWProgramSession session;
        const qint64 pid = startShowingNotes(session);
        QVERIFY(pid);
        const QStringList before = visibleWindows(pid);
        const QString note = makeNote(session, u"Call the plumber"_s);
        QVERIFY(!note.isEmpty());
        // Deleted by its close button, saying so when asked about an export.
        QVERIFY(deleteNote(pid, note));
        QTRY_COMPARE(visibleWindows(pid).size(), before.size());

        QString listing;
        QCOMPARE(session.runSecond({ u"--list-deleted"_s }, {}, &listing), 0);
        const QRegularExpressionMatch line = QRegularExpression(
            u"^([0-9a-f-]{36})\\t(\\S+)\\tCall the plumber$"_s, QRegularExpression::MultilineOption)
                                                 .match(listing);
        QVERIFY2(line.hasMatch(), qPrintable(listing));
        const QString id = line.captured(1);
        QVERIFY(QDateTime::fromString(line.captured(2), Qt::ISODate).isValid());
        QCOMPARE(session.runSecond(
                     { u"--restore-deleted"_s, u"00000000-0000-0000-0000-00000000abcd"_s }),
            1);

        // Back through another note's Vellumo menu, by keyboard: the settings button, then
        // "Vellumo", then "Recently Deleted" counted from the bottom of its menu.
        const QString other = before.constFirst();
        xdotool({ u"windowactivate"_s, u"--sync"_s, other });
        clickInWindow(other, windowGeometry(other).width() - buttonInset, buttonInset - 1);
        QTest::qWait(400);
        pressKeys(u"Up Up Right"_s);
        QTest::qWait(300);
        pressKeys(u"Up Up Up Up Up Up Up Up Up Up Right"_s);
        QTest::qWait(300);
        pressKeys(u"Return"_s);
        QTRY_COMPARE(visibleWindows(pid).size(), before.size() + 1);
        QCOMPARE(session.runSecond({ u"--list-deleted"_s }, {}, &listing), 0);
        QVERIFY2(!listing.contains(id), qPrintable(listing));

        QCOMPARE(session.runSecond({ u"--quit"_s }), 0);
        QVERIFY(session.program().waitForFinished());
        // In the notes file that the quit wrote, not only in the journal.
        const QTemporaryDir archive;
        QVERIFY(QFile::copy(
            session.notesFolder() + u"/stickies.db"_s, archive.filePath(u"stickies.db"_s)));
        QCOMPARE(storedNotes(archive.path()).value(id), u"Call the plumber"_s);
    }
};

QTEST_MAIN(TestSNRecentlyDeletedIntegration)
#include "TestSNRecentlyDeletedIntegration.moc"
