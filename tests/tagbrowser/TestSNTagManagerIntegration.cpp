#include "kit/QWAttributedString.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWProgramDriver.h"
#include "support/QWProgramSession.h"
#include "tags/SNTag.h"

#include <QDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace QWProgramDriver;

namespace {

// Work notes at x 40 and 300, a home note at x 560.
const QList<QRect> frames { { 40, 420, 220, 180 }, { 300, 420, 220, 180 }, { 560, 420, 220, 180 } };

} // namespace

// The tag browser in the running program, under a real window manager: the show-tags hot key
// opens it over hidden notes, typing shows the tagged ones, Escape puts the rest back.
class TestSNTagManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_session = std::make_unique<QWProgramSession>();
        const QString folder = m_session->notesFolder();
        QVERIFY(QDir().mkpath(folder));
        SNStickyNoteManager store(folder);
        // Loading an empty folder copies the welcome notes in: start from none.
        for (const auto &note : store.notesArray())
            store.removeNote(note);
        const auto work = SNTag::tagWithNameColor(u"#work"_s, QWColor(0.2, 0.4, 0.9));
        const auto home = SNTag::tagWithNameColor(u"#home"_s, QWColor(0.9, 0.5, 0.1));
        const QStringList texts { u"Report due #work"_s, u"Call the client #work"_s,
            u"Water the plants #home"_s };
        for (int i = 0; i < 3; ++i) {
            auto note = SNStickyNote::note();
            note->setAttributedString(QWAttributedString(texts[i]));
            const QRect &f = frames[i];
            note->setWindowFrame(
                u"{{%1, %2}, {%3, %4}}"_s.arg(f.x()).arg(f.y()).arg(f.width()).arg(f.height()));
            note->setTags({ i < 2 ? work : home });
            store.addNote(note);
        }
        QVERIFY(store.save());
    }
    void cleanup() { m_session.reset(); }

    void hotKeyOpensTheBrowserAndTypingShowsTheTaggedNotes()
    {
        QVERIFY(m_session->start());
        const qint64 pid = m_session->program().processId();
        QTRY_COMPARE_WITH_TIMEOUT(visibleGeometries(pid), frames, 20000);

        openBrowser();
        xdotool({ u"type"_s, u"#work"_s });
        // The two work notes and the browser over them.
        QTRY_COMPARE(visibleWindows(pid).size(), 3);
        const QList<QRect> shown = visibleGeometries(pid);
        QVERIFY(
            shown.contains(frames[0]) && shown.contains(frames[1]) && !shown.contains(frames[2]));
        // Emptied, the search shows no note; Escape then gives every note back.
        xdotool({ u"key"_s, u"ctrl+a"_s, u"BackSpace"_s });
        QTRY_COMPARE(visibleWindows(pid).size(), 1);
        xdotool({ u"key"_s, u"Escape"_s });
        QTRY_COMPARE(visibleGeometries(pid), frames);

        // The hot key again while it is open closes it.
        openBrowser();
        xdotool({ u"key"_s, u"ctrl+shift+n"_s });
        QTRY_COMPARE(visibleGeometries(pid), frames);

        // Closed after a match, the match stays and the rest stays hidden.
        openBrowser();
        xdotool({ u"type"_s, u"#home"_s });
        QTRY_COMPARE(visibleWindows(pid).size(), 2);
        xdotool({ u"key"_s, u"Escape"_s });
        QTRY_COMPARE(visibleGeometries(pid), QList<QRect> { frames[2] });
    }

private:
    // The browser alone, over the hidden notes, with the keyboard.
    void openBrowser()
    {
        const qint64 pid = m_session->program().processId();
        xdotool({ u"key"_s, u"ctrl+shift+n"_s });
        QTRY_COMPARE_WITH_TIMEOUT(visibleWindows(pid).size(), 1, 10000);
        const QString browser = visibleWindows(pid).constFirst();
        QVERIFY(!frames.contains(windowGeometry(browser)));
        QTRY_COMPARE(run(u"xdotool"_s, { u"getactivewindow"_s }).trimmed(), browser);
    }

    std::unique_ptr<QWProgramSession> m_session;
};

QTEST_MAIN(TestSNTagManagerIntegration)
#include "TestSNTagManagerIntegration.moc"
