#include "kit/QWAttributedString.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "settings/SNApplicationInfo.h"
#include "support/QWProgramDriver.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QProcess>
#include <QRect>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace QWProgramDriver;

namespace {

bool isNameOwned()
{
    return QDBusConnection::sessionBus()
        .interface()
        ->isServiceRegistered(SNApplicationInfo::applicationIdentifier())
        .value();
}

} // namespace

// The tag browser in the running program, under a real window manager: the show-tags hot key
// opens it over hidden notes, typing shows the tagged ones, Escape puts the rest back.
class TestSNTagManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void hotKeyOpensTheBrowserAndTypingShowsTheTaggedNotes();

private:
    // Work notes at x 40 and 300, a home note at x 560.
    void seedNotes();
    void start();
    QList<QRect> noteFrames() const;
    void openBrowser();

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<QProcess> m_program;
};

void TestSNTagManagerIntegration::init()
{
    QVERIFY(!isNameOwned());
    m_home = std::make_unique<QTemporaryDir>();
    markWelcomeWindowSeen(m_home->filePath(QStringLiteral("config")));
    seedNotes();
}

void TestSNTagManagerIntegration::cleanup()
{
    if (m_program && m_program->state() != QProcess::NotRunning) {
        m_program->kill();
        m_program->waitForFinished();
    }
    m_program.reset();
    QTRY_VERIFY(!isNameOwned());
    m_home.reset();
}

void TestSNTagManagerIntegration::seedNotes()
{
    const QString folder = m_home->filePath(QStringLiteral("data/Vellumo"));
    QVERIFY(QDir().mkpath(folder));
    SNStickyNoteManager store(folder);
    // Loading an empty folder copies the welcome notes in: start from none.
    for (const auto &note : store.notesArray())
        store.removeNote(note);
    auto work = SNTag::tagWithNameColor(QStringLiteral("#work"), QWColor(0.2, 0.4, 0.9));
    auto home = SNTag::tagWithNameColor(QStringLiteral("#home"), QWColor(0.9, 0.5, 0.1));
    const QList<std::pair<QString, std::shared_ptr<SNTag>>> notes = {
        { QStringLiteral("Report due #work"), work },
        { QStringLiteral("Call the client #work"), work },
        { QStringLiteral("Water the plants #home"), home },
    };
    for (const QRect &frame : noteFrames()) {
        const auto &[text, tag] = notes.at(noteFrames().indexOf(frame));
        auto note = SNStickyNote::note();
        note->setAttributedString(QWAttributedString(text));
        note->setWindowFrame(QStringLiteral("{{%1, %2}, {%3, %4}}")
                                 .arg(frame.x())
                                 .arg(frame.y())
                                 .arg(frame.width())
                                 .arg(frame.height()));
        note->setTags({ tag });
        store.addNote(note);
    }
    QVERIFY(store.save());
    QCOMPARE(SNStickyNoteManager(folder).notesArray().size(), 3);
    QCOMPARE(SNStickyNoteManager(folder).notesArray().constFirst()->tags().size(), 1);
}

QList<QRect> TestSNTagManagerIntegration::noteFrames() const
{
    return { QRect(40, 420, 220, 180), QRect(300, 420, 220, 180), QRect(560, 420, 220, 180) };
}

void TestSNTagManagerIntegration::start()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(
        QStringLiteral("XDG_CONFIG_HOME"), m_home->filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home->filePath(QStringLiteral("data")));
    m_program = std::make_unique<QProcess>();
    m_program->setProcessEnvironment(environment);
    m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    m_program->start(programPath());
    QVERIFY(m_program->waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(isNameOwned(), 20000);
    QTRY_COMPARE_WITH_TIMEOUT(visibleGeometries(m_program->processId()), noteFrames(), 20000);
}

void TestSNTagManagerIntegration::openBrowser()
{
    const qint64 pid = m_program->processId();
    xdotool({ QStringLiteral("key"), QStringLiteral("ctrl+shift+n") });
    // The browser alone, over the hidden notes, with the keyboard.
    QTRY_COMPARE_WITH_TIMEOUT(visibleWindows(pid).size(), 1, 10000);
    const QString browser = visibleWindows(pid).constFirst();
    QVERIFY(!noteFrames().contains(windowGeometry(browser)));
    QTRY_COMPARE(
        run(QStringLiteral("xdotool"), { QStringLiteral("getactivewindow") }).trimmed(), browser);
}

void TestSNTagManagerIntegration::hotKeyOpensTheBrowserAndTypingShowsTheTaggedNotes()
{
    start();
    const qint64 pid = m_program->processId();
    const QList<QRect> frames = noteFrames();

    openBrowser();
    xdotool({ QStringLiteral("type"), QStringLiteral("#work") });
    // The two work notes and the browser over them.
    QTRY_COMPARE(visibleWindows(pid).size(), 3);
    const QList<QRect> shown = visibleGeometries(pid);
    QVERIFY(shown.contains(frames.at(0)));
    QVERIFY(shown.contains(frames.at(1)));
    QVERIFY(!shown.contains(frames.at(2)));

    // Emptied, the search shows no note; Escape then gives every note back.
    xdotool({ QStringLiteral("key"), QStringLiteral("ctrl+a"), QStringLiteral("BackSpace") });
    QTRY_COMPARE(visibleWindows(pid).size(), 1);
    xdotool({ QStringLiteral("key"), QStringLiteral("Escape") });
    QTRY_COMPARE(visibleGeometries(pid), frames);

    // The hot key again while it is open closes it.
    openBrowser();
    xdotool({ QStringLiteral("key"), QStringLiteral("ctrl+shift+n") });
    QTRY_COMPARE(visibleGeometries(pid), frames);

    // Closed after a match, the match stays and the rest stays hidden.
    openBrowser();
    xdotool({ QStringLiteral("type"), QStringLiteral("#home") });
    QTRY_COMPARE(visibleWindows(pid).size(), 2);
    xdotool({ QStringLiteral("key"), QStringLiteral("Escape") });
    QTRY_COMPARE(visibleGeometries(pid), QList<QRect> { frames.at(2) });
}

QTEST_MAIN(TestSNTagManagerIntegration)
#include "TestSNTagManagerIntegration.moc"
