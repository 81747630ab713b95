#include "app/QWX11HotKeyGrabber.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNWindowFrameString.h"
#include "settings/SNApplicationInfo.h"
#include "support/QWProgramDriver.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <X11/X.h>
#include <memory>

using namespace QWProgramDriver;

namespace {

QRect frameOf(const std::shared_ptr<SNStickyNote> &note)
{
    return SNWindowFrameString::rectFromString(note->windowFrame()).value_or(QRect());
}

void key(const char *keys)
{
    xdotool({ QStringLiteral("key"), QString::fromLatin1(keys) });
}

bool isNameOwned()
{
    return QDBusConnection::sessionBus()
        .interface()
        ->isServiceRegistered(SNApplicationInfo::applicationIdentifier())
        .value();
}

// Whether this process could take the combination on the root window, that is, whether
// nobody else holds it.
bool isFree(quint16 modifiers)
{
    const std::unique_ptr<QWX11HotKeyGrabber> probe = QWX11HotKeyGrabber::create();
    if (!probe)
        qFatal("The integration tests need an X server");
    const bool free = probe->grabKeyWithIdentifier(45, modifiers, 1);
    probe->ungrabKeyWithIdentifier(1);
    return free;
}

} // namespace

class TestAppDelegateIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void hotKeysAreGrabbedAndTheNewNoteKeyMakesANote();
    void secondStartForwardsItsRequestAndExits();
    void openedRtfFilesBecomeNotes();
    void quitSavesEveryNoteAndARestartRestoresTheirFrames();
    void terminationSignalSavesLikeQuit();

private:
    QProcessEnvironment environment() const;
    // Starts the program and waits until it serves requests and shows its notes.
    void start(const QStringList &arguments = {});
    // Runs a second start to its end; its exit status.
    int runSecond(const QStringList &arguments, const QByteArray &input = QByteArray());
    QList<std::shared_ptr<SNStickyNote>> savedNotes() const;
    QStringList savedTexts() const;

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_primary;
};

void TestAppDelegateIntegration::init()
{
    QVERIFY(!isNameOwned());
    m_home = std::make_unique<QTemporaryDir>();
    markWelcomeWindowSeen(m_home->filePath(QStringLiteral("config")));
}

void TestAppDelegateIntegration::cleanup()
{
    if (m_primary && m_primary->state() != QProcess::NotRunning) {
        m_primary->kill();
        m_primary->waitForFinished();
    }
    m_primary.reset();
    QTRY_VERIFY(!isNameOwned());
    m_home.reset();
}

QProcessEnvironment TestAppDelegateIntegration::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(
        QStringLiteral("XDG_CONFIG_HOME"), m_home->filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home->filePath(QStringLiteral("data")));
    return environment;
}

void TestAppDelegateIntegration::start(const QStringList &arguments)
{
    m_primary = std::make_unique<QProcess>();
    m_primary->setProcessEnvironment(environment());
    m_primary->setProcessChannelMode(QProcess::ForwardedChannels);
    m_primary->start(programPath(), arguments);
    QVERIFY(m_primary->waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(isNameOwned(), 20000);
    // Every stored note has its window once the count stops growing.
    const qsizetype notes = qMax<qsizetype>(1, savedNotes().size());
    QTRY_VERIFY_WITH_TIMEOUT(visibleWindows(m_primary->processId()).size() >= notes, 20000);
}

int TestAppDelegateIntegration::runSecond(const QStringList &arguments, const QByteArray &input)
{
    QProcess second;
    second.setProcessEnvironment(environment());
    second.start(programPath(), arguments);
    if (!second.waitForStarted())
        return -1;
    second.write(input);
    second.closeWriteChannel();
    if (!second.waitForFinished(20000)) {
        second.kill();
        return -1;
    }
    // A second start never shows a window of its own.
    return second.exitStatus() == QProcess::NormalExit ? second.exitCode() : -1;
}

QList<std::shared_ptr<SNStickyNote>> TestAppDelegateIntegration::savedNotes() const
{
    // Read without the default notes being copied in: only what the program wrote.
    const QString folder = m_home->filePath(QStringLiteral("data/Vellumo"));
    if (!QFile::exists(folder + QStringLiteral("/stickies.db")))
        return {};
    return SNStickyNoteManager(folder).notesArray();
}

QStringList TestAppDelegateIntegration::savedTexts() const
{
    QStringList texts;
    for (const auto &note : savedNotes())
        texts.append(note->attributedString().value_or(QWAttributedString()).string());
    return texts;
}

void TestAppDelegateIntegration::hotKeysAreGrabbedAndTheNewNoteKeyMakesANote()
{
    const quint16 showTags = ControlMask | ShiftMask;
    const quint16 newNote = ControlMask | Mod1Mask | Mod4Mask;
    QVERIFY(isFree(showTags));
    QVERIFY(isFree(newNote));

    start();
    QVERIFY(!isFree(showTags));
    QVERIFY(!isFree(newNote));

    const qint64 pid = m_primary->processId();
    const qsizetype before = visibleWindows(pid).size();
    key("ctrl+alt+super+n");
    QTRY_VERIFY(visibleWindows(pid).size() > before);
    const qsizetype oneNote = visibleWindows(pid).size() - before;

    // Events arrive in order: once the next note is there, the show-tags key was handled, and
    // it made no note.
    key("ctrl+shift+n");
    key("ctrl+alt+super+n");
    QTRY_VERIFY(visibleWindows(pid).size() >= before + 2 * oneNote);
    QCOMPARE(visibleWindows(pid).size(), before + 2 * oneNote);

    // With Num Lock on, the hot key still works.
    key("Num_Lock");
    key("ctrl+alt+super+n");
    key("Num_Lock");
    QTRY_COMPARE(visibleWindows(pid).size(), before + 3 * oneNote);

    QCOMPARE(runSecond({ QStringLiteral("--quit") }), 0);
    QVERIFY(m_primary->waitForFinished());
    // The grabs went with the program.
    QVERIFY(isFree(showTags));
    QVERIFY(isFree(newNote));
}

void TestAppDelegateIntegration::secondStartForwardsItsRequestAndExits()
{
    start();
    const qint64 pid = m_primary->processId();
    const qsizetype before = visibleWindows(pid).size();

    QCOMPARE(runSecond({ QStringLiteral("--new-note") }), 0);
    QTRY_VERIFY(visibleWindows(pid).size() > before);
    QCOMPARE(m_primary->state(), QProcess::Running);

    // A start with nothing to ask only brings the notes forward.
    const qsizetype now = visibleWindows(pid).size();
    QCOMPARE(runSecond({}), 0);
    QCOMPARE(visibleWindows(pid).size(), now);

    // What the running program refuses comes back as the second start's failure.
    QCOMPARE(runSecond({ QStringLiteral("-") }, QByteArray()), 1);
    QCOMPARE(runSecond({ QStringLiteral("--quit") }), 0);
    QVERIFY(m_primary->waitForFinished());
    QCOMPARE(m_primary->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_primary->exitCode(), 0);
}

void TestAppDelegateIntegration::openedRtfFilesBecomeNotes()
{
    const QString first = m_home->filePath(QStringLiteral("first letter.rtf"));
    const QString second = m_home->filePath(QStringLiteral("second.rtf"));
    for (const auto &[path, rtf] :
        { std::pair { first, QByteArray("{\\rtf1\\ansi Dear {\\b Anna}}") },
            std::pair { second, QByteArray("{\\rtf1\\ansi See you {\\i soon}}") } }) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(rtf);
    }

    start({ first });
    QTRY_VERIFY(savedTexts().contains(QStringLiteral("Dear Anna")));
    // Relative to the second start's own folder.
    QProcess relative;
    relative.setProcessEnvironment(environment());
    relative.setWorkingDirectory(m_home->path());
    relative.start(programPath(), { QStringLiteral("second.rtf") });
    QVERIFY(relative.waitForFinished(20000));
    QCOMPARE(relative.exitCode(), 0);

    QCOMPARE(runSecond({ QStringLiteral("--quit") }), 0);
    QVERIFY(m_primary->waitForFinished());
    const QList<std::shared_ptr<SNStickyNote>> notes = savedNotes();
    QStringList texts = savedTexts();
    QVERIFY(texts.contains(QStringLiteral("Dear Anna")));
    QVERIFY(texts.contains(QStringLiteral("See you soon")));
    const auto dear = notes.at(texts.indexOf(QStringLiteral("Dear Anna")));
    QVERIFY(dear->attributedString()->attributesAtIndex(5).isBold());
}

void TestAppDelegateIntegration::quitSavesEveryNoteAndARestartRestoresTheirFrames()
{
    start();
    const qint64 pid = m_primary->processId();
    const QList<std::shared_ptr<SNStickyNote>> initial = savedNotes();
    QVERIFY(initial.size() > 1);

    // Move the first note's window, as a user would.
    const QRect firstFrame = frameOf(initial.constFirst());
    QTRY_VERIFY(visibleGeometries(pid).contains(firstFrame));
    const QStringList windows = visibleWindows(pid);
    const QString firstWindow = *std::find_if(windows.cbegin(), windows.cend(),
        [&](const QString &window) { return windowGeometry(window) == firstFrame; });
    const QRect moved(QPoint(520, 410), firstFrame.size());
    xdotool({ QStringLiteral("windowmove"), firstWindow, QString::number(moved.x()),
        QString::number(moved.y()) });
    QTRY_COMPARE(windowGeometry(firstWindow), moved);

    QCOMPARE(runSecond({ QStringLiteral("--quit") }), 0);
    // The quit command returns once the program has saved everything.
    const QList<std::shared_ptr<SNStickyNote>> saved = savedNotes();
    QCOMPARE(saved.size(), initial.size());
    QCOMPARE(frameOf(saved.constFirst()), moved);
    QVERIFY(m_primary->waitForFinished());
    QCOMPARE(m_primary->exitCode(), 0);

    start();
    for (const auto &note : saved) {
        QTRY_VERIFY2(visibleGeometries(m_primary->processId()).contains(frameOf(note)),
            qPrintable(note->windowFrame()));
    }
    QCOMPARE(runSecond({ QStringLiteral("--quit") }), 0);
}

void TestAppDelegateIntegration::terminationSignalSavesLikeQuit()
{
    start();
    QCOMPARE(runSecond({ QStringLiteral("-") }, QByteArray("from a pipe\n")), 0);
    // Not saved yet by anything but the termination.
    m_primary->terminate();
    QVERIFY(m_primary->waitForFinished());
    QCOMPARE(m_primary->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_primary->exitCode(), 0);
    QVERIFY(savedTexts().contains(QStringLiteral("from a pipe\n")));
}

QTEST_MAIN(TestAppDelegateIntegration)
#include "TestAppDelegateIntegration.moc"
