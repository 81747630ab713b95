#include "SNAppTestSupport.h"
#include "kit/QWKeyCombo.h"
#include "support/QWKGlobalAccel.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using State = QWGlobalShortcutsPortal::State;

namespace {

const QString newNote = u"new-note"_s;
const QString showTags = u"toggle-tags"_s;

} // namespace

// The desktop's own portal, its KDE back end and KWin's shortcut daemon, all real: what the
// program binds there is what the desktop fires when the keys are pressed.
class TestQWGlobalShortcutsPortalWaylandIntegration final : public QObject
{
    Q_OBJECT

public:
    // Key grabs through XWayland need the X11 platform, which a Wayland session does not pick.
    static void initMain() { qputenv("QT_QPA_PLATFORM", "xcb"); }

private Q_SLOTS:
    void bindsFiresAndFollowsTheDesktopsKeys()
    {
        // Names of their own: the desktop keeps what happens to them for the next session.
        const QString newNote = u"portal-new-note"_s;
        const QString showTags = u"portal-toggle-tags"_s;
        const auto portal = std::make_unique<QWGlobalShortcutsPortal>(u"org.vellumo.Vellumo"_s);
        QTRY_VERIFY_WITH_TIMEOUT(portal->state() != State::Asking, 20000);
        QVERIFY2(portal->state() == State::Ready, "the portal offers no global shortcuts");
        QSignalSpy activated(portal.get(), &QWGlobalShortcutsPortal::shortcutActivated);

        portal->bindShortcuts({ { newNote, u"New note"_s, u"CTRL+ALT+n"_s },
            { showTags, u"Show or hide the tag browser"_s, u"CTRL+SHIFT+F5"_s } });
        QTRY_COMPARE_WITH_TIMEOUT(portal->triggers().value(newNote), u"Ctrl+Alt+N"_s, 10000);
        QCOMPARE(portal->triggers().value(showTags), u"Ctrl+Shift+F5"_s);
        const QString component = QWKGlobalAccel::componentWith({ newNote, showTags });
        QVERIFY(!component.isEmpty());
        QCOMPARE(QWKGlobalAccel::keys(component, newNote),
            QList<int> { (Qt::CTRL | Qt::ALT | Qt::Key_N).toCombined() });

        QVERIFY(QWKGlobalAccel::invoke(component, newNote));
        QTRY_COMPARE(activated.size(), 1);
        QCOMPARE(activated.constFirst().constFirst().toString(), newNote);

        // The user gives the shortcut other keys in the desktop's settings.
        QVERIFY(QWKGlobalAccel::setKeys(
            component, newNote, (Qt::CTRL | Qt::ALT | Qt::Key_M).toCombined()));
        QTRY_COMPARE(portal->triggers().value(newNote), u"Ctrl+Alt+M"_s);

        // A new list is a new session; the desktop keeps what the user chose for what stays.
        const QString firstSession = portal->sessionHandle();
        portal->bindShortcuts({ { newNote, u"New note"_s, u"CTRL+ALT+n"_s } });
        QTRY_COMPARE(portal->triggers().keys(), QStringList { newNote });
        QCOMPARE(portal->triggers().value(newNote), u"Ctrl+Alt+M"_s);
        QVERIFY(QWKGlobalAccel::invoke(component, newNote));
        QTRY_COMPARE(activated.size(), 2);

        // Turned off, the session ends and the desktop reports no keys.
        portal->bindShortcuts({});
        QVERIFY(portal->sessionHandle().isEmpty());
        QVERIFY(portal->triggers().isEmpty());
        QVERIFY(!firstSession.isEmpty());
    }

    void hotKeysGoToTheDesktopAndComeBackByIdentifier()
    {
        PortalHotKeys keys;
        QWPortalHotKeyGrabber &grabber = keys.grabber();
        const QWKeyCombo tagsCombo { QWKeyCombo::ControlKeyMask | QWKeyCombo::ShiftKeyMask, 45 };
        const QWKeyCombo noteCombo { QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask, 45 };

        // Taken before the portal has answered, and handed to it once it has.
        QCOMPARE(grabber.reach(), QWHotKeyGrabber::Reach::ProgramWindowsOnly);
        const qint64 tags = keys.helper.registerHotKey(tagsCombo, showTags, u"Show tags"_s);
        const qint64 note = keys.helper.registerHotKey(noteCombo, newNote, u"New note"_s);
        QVERIFY(tags > 0 && note > 0);
        QTRY_COMPARE_WITH_TIMEOUT(grabber.reach(), QWHotKeyGrabber::Reach::DesktopDecides, 20000);
        QTRY_COMPARE_WITH_TIMEOUT(grabber.desktopTrigger(newNote), u"Ctrl+Alt+N"_s, 10000);
        QCOMPARE(grabber.desktopTrigger(showTags), u"Ctrl+Shift+N"_s);
        const QString component = QWKGlobalAccel::componentWith({ newNote, showTags });
        QVERIFY(QWKGlobalAccel::invoke(component, newNote));
        QTRY_COMPARE(keys.pressed, QList<qint64> { note });

        // The settings replace both keys at once: new identifiers, the same binding.
        const QString session = grabber.portal().sessionHandle();
        keys.helper.unregisterHotkeyWithID(tags);
        keys.helper.unregisterHotkeyWithID(note);
        const qint64 tagsAgain = keys.helper.registerHotKey(tagsCombo, showTags, u"Show tags"_s);
        keys.helper.registerHotKey(noteCombo, newNote, u"New note"_s);
        QVERIFY(QWKGlobalAccel::invoke(component, showTags));
        QTRY_COMPARE(keys.pressed, (QList<qint64> { note, tagsAgain }));
        QCOMPARE(grabber.portal().sessionHandle(), session);
    }

    void aPortalThatStartsAgainGetsTheKeysAgain()
    {
        PortalHotKeys keys;
        QWPortalHotKeyGrabber &grabber = keys.grabber();
        const qint64 note = keys.helper.registerHotKey(
            { QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask, 45 }, newNote, u"New note"_s);
        QTRY_COMPARE_WITH_TIMEOUT(grabber.reach(), QWHotKeyGrabber::Reach::DesktopDecides, 20000);
        QTRY_VERIFY(!grabber.desktopTrigger(newNote).isEmpty());

        // The portal ends (an update, a crash): the keys go back to the program's own grabs.
        const QDBusReply<uint> portalProcess
            = QDBusConnection::sessionBus().interface()->servicePid(
                u"org.freedesktop.portal.Desktop"_s);
        QVERIFY(portalProcess.isValid());
        QCOMPARE(::kill(pid_t(portalProcess.value()), SIGTERM), 0);
        QTRY_COMPARE_WITH_TIMEOUT(
            grabber.reach(), QWHotKeyGrabber::Reach::ProgramWindowsOnly, 10000);
        QVERIFY(grabber.desktopTrigger(newNote).isEmpty());

        // Started again, it binds them again, with the identifier they had.
        QProcess portal;
        portal.start(u"/usr/libexec/xdg-desktop-portal"_s, {});
        QVERIFY(portal.waitForStarted());
        QTRY_COMPARE_WITH_TIMEOUT(grabber.reach(), QWHotKeyGrabber::Reach::DesktopDecides, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(!grabber.desktopTrigger(newNote).isEmpty(), 10000);
        QVERIFY(QWKGlobalAccel::invoke(QWKGlobalAccel::componentWith({ newNote }), newNote));
        QTRY_COMPARE(keys.pressed, QList<qint64> { note });
        portal.terminate();
        portal.waitForFinished();
    }
};

QTEST_MAIN(TestQWGlobalShortcutsPortalWaylandIntegration)
#include "TestQWGlobalShortcutsPortalWaylandIntegration.moc"
