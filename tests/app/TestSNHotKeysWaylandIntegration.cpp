#include "SNProgramTestSupport.h"
#include "kit/QWKeyCombo.h"
#include "notes/SNStickyNote.h"
#include "notes/SNWindowFrameString.h"
#include "support/QWKGlobalAccel.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace QWProgramDriver;
using namespace Qt::StringLiterals;

namespace {

const QString newNote = u"new-note"_s;
const QString toggleTags = u"toggle-tags"_s;

QStringList sorted(QStringList windows)
{
    windows.sort();
    return windows;
}

QString windowState(const QString &window)
{
    return run(u"xprop"_s, { u"-id"_s, window, u"_NET_WM_STATE"_s });
}

} // namespace

class TestSNHotKeysWaylandIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QVERIFY(!QWProgramSession::isServing());
        m_session = std::make_unique<QWProgramSession>();
        // Keys other than the defaults, with all four modifiers between them, so that what the
        // desktop holds can only have come from the settings. Codes: 38 is J, 46 is M.
        m_session->setSetting(u"noteHotKeyCode"_s, 38);
        m_session->setSetting(
            u"noteHotKeyModifier"_s, QWKeyCombo::ShiftKeyMask | QWKeyCombo::CommandKeyMask);
        m_session->setSetting(u"hotKeyCode"_s, 46);
        m_session->setSetting(
            u"hotKeyModifier"_s, QWKeyCombo::ControlKeyMask | QWKeyCombo::OptionKeyMask);
    }
    void cleanup()
    {
        m_session.reset();
        QTRY_VERIFY(!QWProgramSession::isServing());
    }

    void desktopShortcutsCarryTheSettingsKeysAndMakeNotesAndToggleTheTagBrowser()
    {
        const qint64 pid = startShowingNotes(*m_session);
        QVERIFY(pid);

        QString component;
        QTRY_VERIFY_WITH_TIMEOUT(
            !(component = QWKGlobalAccel::componentWith({ newNote, toggleTags })).isEmpty(), 20000);
        QCOMPARE(QWKGlobalAccel::description(component, newNote), u"New note"_s);
        QCOMPARE(
            QWKGlobalAccel::description(component, toggleTags), u"Show or hide the tag browser"_s);
        QCOMPARE(QWKGlobalAccel::keys(component, newNote),
            QList<int> { (Qt::SHIFT | Qt::META | Qt::Key_J).toCombined() });
        QCOMPARE(QWKGlobalAccel::keys(component, toggleTags),
            QList<int> { (Qt::CTRL | Qt::ALT | Qt::Key_M).toCombined() });

        // Fired as the desktop fires them when their keys are pressed; key presses made here
        // would reach only XWayland, never the desktop's shortcuts.
        const qsizetype before = visibleWindows(pid).size();
        QVERIFY(QWKGlobalAccel::invoke(component, newNote));
        QTRY_VERIFY(visibleWindows(pid).size() > before);
        const QStringList notes = sorted(visibleWindows(pid));
        QCOMPARE(notes.size(), before + 1);

        // The browser hides the notes while it is open, and shows them again when it goes.
        QVERIFY(QWKGlobalAccel::invoke(component, toggleTags));
        QTRY_VERIFY(!visibleWindows(pid).isEmpty()
            && std::none_of(notes.cbegin(), notes.cend(),
                [&](const QString &note) { return visibleWindows(pid).contains(note); }));
        QVERIFY(QWKGlobalAccel::invoke(component, toggleTags));
        QTRY_COMPARE(sorted(visibleWindows(pid)), notes);
    }

    void pinnedNotesStayAboveOrBelowTheOtherWindows()
    {
        const QRect aboveFrame(140, 120, 230, 190);
        const QRect belowFrame(560, 330, 230, 190);
        QVERIFY(QDir().mkpath(m_session->notesFolder()));
        {
            SNStickyNoteManager store(m_session->notesFolder());
            const QList<std::shared_ptr<SNStickyNote>> notes = store.notesArray();
            QVERIFY(notes.size() > 2);
            for (const std::shared_ptr<SNStickyNote> &note : notes) {
                note->setPinState(SNStickyNote::PinStateNormal);
                store.noteDidChange(note);
            }
            notes[0]->setPinState(SNStickyNote::PinStateFloating);
            notes[0]->setWindowFrame(SNWindowFrameString::stringFromRect(aboveFrame));
            notes[1]->setPinState(SNStickyNote::PinStateDesktop);
            notes[1]->setWindowFrame(SNWindowFrameString::stringFromRect(belowFrame));
            QVERIFY(store.compact());
        }

        const qint64 pid = startShowingNotes(*m_session);
        QVERIFY(pid);
        QString above, below;
        QTRY_VERIFY(!(above = windowWithFrame(pid, aboveFrame)).isEmpty()
            && !(below = windowWithFrame(pid, belowFrame)).isEmpty());
        QTRY_VERIFY(windowState(above).contains(u"_NET_WM_STATE_ABOVE"_s));
        QTRY_VERIFY(windowState(below).contains(u"_NET_WM_STATE_BELOW"_s));
        QVERIFY(!windowState(above).contains(u"_NET_WM_STATE_BELOW"_s));
        QVERIFY(!windowState(below).contains(u"_NET_WM_STATE_ABOVE"_s));
        for (const QString &window : visibleWindows(pid)) {
            if (window == above || window == below)
                continue;
            QVERIFY(!windowState(window).contains(u"_NET_WM_STATE_ABOVE"_s));
            QVERIFY(!windowState(window).contains(u"_NET_WM_STATE_BELOW"_s));
        }
    }

private:
    std::unique_ptr<QWProgramSession> m_session;
};

QTEST_GUILESS_MAIN(TestSNHotKeysWaylandIntegration)
#include "TestSNHotKeysWaylandIntegration.moc"
