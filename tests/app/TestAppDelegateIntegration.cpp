#include "SNAppTestSupport.h"
#include "SNProgramTestSupport.h"
#include "app/QWX11HotKeyGrabber.h"
#include "notes/SNWindowFrameString.h"

#include <QTest>

#include <X11/X.h>
#include <memory>

using namespace QWProgramDriver;
using namespace Qt::Literals::StringLiterals;

namespace {

QRect frameOf(const std::shared_ptr<SNStickyNote> &note)
{
    return SNWindowFrameString::rectFromString(note->windowFrame()).value_or(QRect());
}

// Whether this process could take the combination on the root window, that is, whether
// nobody else holds it.
bool isFree(quint16 modifiers)
{
    const std::unique_ptr<QWX11HotKeyGrabber> probe = QWX11HotKeyGrabber::create();
    if (!probe)
        qFatal("The integration tests need an X server");
    const bool free = probe->grabKey({ 1, 45, modifiers, {}, {} });
    probe->ungrabKeyWithIdentifier(1);
    return free;
}

} // namespace

class TestAppDelegateIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(!QWProgramSession::isServing());
        m_session = std::make_unique<QWProgramSession>();
    }
    void cleanup()
    {
        m_session.reset();
        QTRY_VERIFY(!QWProgramSession::isServing());
    }

    void hotKeysAreGrabbedAndTheNewNoteKeyMakesANote()
    {
        const quint16 showTags = ControlMask | ShiftMask;
        const quint16 newNote = ControlMask | Mod1Mask | Mod4Mask;
        QVERIFY(isFree(showTags));
        QVERIFY(isFree(newNote));

        const qint64 pid = startShowingNotes(*m_session);
        QVERIFY(pid);
        QVERIFY(!isFree(showTags));
        QVERIFY(!isFree(newNote));
        const qsizetype before = visibleWindows(pid).size();
        pressKeys(u"ctrl+alt+super+n"_s);
        QTRY_VERIFY(visibleWindows(pid).size() > before);
        const qsizetype oneNote = visibleWindows(pid).size() - before;

        // Events arrive in order: once the next note is there, the show-tags key was handled,
        // and it made no note.
        pressKeys(u"ctrl+shift+n ctrl+alt+super+n"_s);
        QTRY_VERIFY(visibleWindows(pid).size() >= before + 2 * oneNote);
        QCOMPARE(visibleWindows(pid).size(), before + 2 * oneNote);

        // With Num Lock on, the hot key still works.
        pressKeys(u"Num_Lock ctrl+alt+super+n Num_Lock"_s);
        QTRY_COMPARE(visibleWindows(pid).size(), before + 3 * oneNote);

        QCOMPARE(m_session->runSecond({ QStringLiteral("--quit") }), 0);
        QVERIFY(program().waitForFinished());
        // The grabs went with the program.
        QVERIFY(isFree(showTags));
        QVERIFY(isFree(newNote));
    }

    void secondStartForwardsItsRequestAndExits()
    {
        const qint64 pid = startShowingNotes(*m_session);
        QVERIFY(pid);
        const qsizetype before = visibleWindows(pid).size();

        QCOMPARE(m_session->runSecond({ QStringLiteral("--new-note") }), 0);
        QTRY_VERIFY(visibleWindows(pid).size() > before);
        QCOMPARE(program().state(), QProcess::Running);

        // A start with nothing to ask only brings the notes forward.
        const qsizetype now = visibleWindows(pid).size();
        QCOMPARE(m_session->runSecond({}), 0);
        QCOMPARE(visibleWindows(pid).size(), now);

        // What the running program refuses comes back as the second start's failure.
        QCOMPARE(m_session->runSecond({ QStringLiteral("-") }, QByteArray()), 1);
        QCOMPARE(m_session->runSecond({ QStringLiteral("--quit") }), 0);
        QVERIFY(program().waitForFinished());
        QCOMPARE(program().exitStatus(), QProcess::NormalExit);
        QCOMPARE(program().exitCode(), 0);
    }

    void quitSavesEveryNoteAndARestartRestoresTheirFrames()
    {
        const qint64 pid = startShowingNotes(*m_session);
        QVERIFY(pid);
        const QList<std::shared_ptr<SNStickyNote>> initial = savedNotes();
        QVERIFY(initial.size() > 1);

        // Move the first note's window, as a user would.
        const QRect firstFrame = frameOf(initial.constFirst());
        QString firstWindow;
        QTRY_VERIFY(!(firstWindow = windowWithFrame(pid, firstFrame)).isEmpty());
        const QRect moved(QPoint(520, 410), firstFrame.size());
        xdotool({ QStringLiteral("windowmove"), firstWindow, QString::number(moved.x()),
            QString::number(moved.y()) });
        QTRY_COMPARE(windowGeometry(firstWindow), moved);

        QCOMPARE(m_session->runSecond({ QStringLiteral("--quit") }), 0);
        // The quit command returns once the program has saved everything.
        const QList<std::shared_ptr<SNStickyNote>> saved = savedNotes();
        QCOMPARE(saved.size(), initial.size());
        QCOMPARE(frameOf(saved.constFirst()), moved);
        QVERIFY(program().waitForFinished());
        QCOMPARE(program().exitCode(), 0);

        QVERIFY(startShowingNotes(*m_session));
        for (const auto &note : saved) {
            QTRY_VERIFY2(visibleGeometries(program().processId()).contains(frameOf(note)),
                qPrintable(note->windowFrame()));
        }
        QCOMPARE(m_session->runSecond({ QStringLiteral("--quit") }), 0);
    }

    void openedFilesAndPipedTextAreSavedAtATerminationSignal()
    {
        const QString letter = writtenFile(m_session->homePath(QStringLiteral("first letter.rtf")),
            "{\\rtf1\\ansi Dear {\\b Anna}}");
        writtenFile(
            m_session->homePath(QStringLiteral("second.rtf")), "{\\rtf1\\ansi See you {\\i soon}}");
        QVERIFY(startShowingNotes(*m_session, { letter }));
        // Relative to the second start's own folder.
        QCOMPARE(m_session->runSecond({ QStringLiteral("second.rtf") }), 0);
        QCOMPARE(m_session->runSecond({ QStringLiteral("-") }, QByteArray("from a pipe\n")), 0);

        program().terminate();
        QVERIFY(program().waitForFinished());
        QCOMPARE(program().exitStatus(), QProcess::NormalExit);
        QCOMPARE(program().exitCode(), 0);
        QStringList texts;
        for (const auto &note : savedNotes())
            texts.append(textOf(note));
        for (const char *text : { "Dear Anna", "See you soon", "from a pipe\n" })
            QVERIFY2(texts.contains(QString::fromLatin1(text)), text);
    }

private:
    QProcess &program() { return m_session->program(); }

    QList<std::shared_ptr<SNStickyNote>> savedNotes() const
    {
        // Read without the default notes being copied in: only what the program wrote.
        const QString folder = m_session->notesFolder();
        if (!QFile::exists(folder + QStringLiteral("/stickies.db")))
            return {};
        return SNStickyNoteManager(folder).notesArray();
    }

    std::unique_ptr<QWProgramSession> m_session;
};

QTEST_MAIN(TestAppDelegateIntegration)
#include "TestAppDelegateIntegration.moc"
