#include "kit/QWNotificationCenter.h"
#include "notewindow/SNNoteWindowTestSupport.h"
#include "notewindow/SNTextView.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themeview/SNTextColorPalette.h"

#include <QTest>
#include <QTextCursor>
#include <QWindow>

using namespace Qt::StringLiterals;

// The hidden key sequence, typed as a user types it into a note: what counts as the sequence,
// when what was typed is forgotten, what the note sees of it, and what follows.
class TestQWSuperSecret final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_scheduler = std::make_unique<QWManualScheduler>();
        // The sequence is no English word: auto-correction would rewrite it as it is typed.
        SNUserDefaults::standardUserDefaults().setAutoCorrectSpelling(false);
        m_detector = std::make_unique<QWSuperSecret>();
        m_fired = 0;
        m_observation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
            QWSuperSecret::superSecretNotification, nullptr, [this](auto &) { ++m_fired; });
        m_note = openNote(noteWithText(u"one two three four five six seven"_s));
        m_note->textView()->setFocus();
        m_note->textView()->moveCursor(QTextCursor::End);
    }
    void cleanup()
    {
        m_observation.cancel();
        m_note.reset();
        m_detector.reset();
        SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
        m_scheduler.reset();
    }

    void sequenceAfterAPauseFiresOnceAndItsLastKeyNeverReachesTheNote()
    {
        SNTextView *text = m_note->textView();
        text->clear();
        // A wrong key first counts until a pause of more than a second.
        type(u"x"_s, 0.5);
        typeSequence();
        QCOMPARE(m_fired, 0);
        m_scheduler->advanceBy(1.01);
        // Pauses up to just under a second between keys keep the sequence going.
        type(u"qwertyuio"_s, 0.95);
        type(u"p "_s);
        QCOMPARE(m_fired, 1);
        QCOMPARE(text->toPlainText(), u"xqwertyuiop qwertyuiop"_s);
        // Typing on, without a pause, neither fires again nor is swallowed.
        type(u" qwertyuiop "_s);
        QCOMPARE(m_fired, 1);
        QCOMPARE(text->toPlainText(), u"xqwertyuiop qwertyuiop qwertyuiop "_s);
    }

    void heldDownKeysCountButShiftDoesNot()
    {
        QWindow *window = m_note->window()->windowHandle();
        // A held-down key repeats its press: one press too many spoils the sequence.
        QTest::keyPress(window, 'q');
        QTest::keyEvent(QTest::Press, window, 'q', Qt::NoModifier);
        QTest::keyRelease(window, 'q');
        type(u"wertyuiop "_s);
        QCOMPARE(m_fired, 0);
        // Shift, a key press of its own, makes no other key of a letter.
        m_scheduler->advanceBy(1.5);
        for (const QChar key : u"QWERTYUIOP"_s)
            QTest::keyClick(window, key.toLatin1(), Qt::ShiftModifier);
        QTest::keyClick(window, ' ');
        QCOMPARE(m_fired, 1);
    }

    // The application colours every open note on the notice (TestAppDelegate). From then on
    // every edit is coloured at once; undoing the colours of an edit leaves the caret in place.
    void theNoteIsColouredAndRecolouredAfterEachEdit()
    {
        SNTextView *text = m_note->textView();
        const auto colorAt = [text](int position) {
            QTextCursor cursor(text->document());
            cursor.setPosition(position + 1);
            return cursor.charFormat().foreground().color();
        };
        const QList<QWColor> &palette = SNTextColorPalette::colorArray();
        m_note->rainbowize();
        QCOMPARE(colorAt(28), palette.at(0).toQColor()); // seven: six colours, then round again
        type(u" new"_s);
        QCOMPARE(colorAt(34), palette.at(1).toQColor());
        text->undo(); // "ew"
        text->undo(); // the colour of "n"
        QCOMPARE(text->toPlainText(), u"one two three four five six seven n"_s);
        QCOMPARE(colorAt(34), palette.at(0).toQColor());
        QCOMPARE(text->textCursor().position(), 35);
    }

    // Alone, the application's one detector hears the keys typed in a note.
    void theApplicationHasOneDetectorAndItListens()
    {
        QCOMPARE(QWSuperSecret::shhhhhh()->parent(), qApp);
        m_detector.reset();
        typeSequence();
        QCOMPARE(m_fired, 1);
    }

private:
    void typeSequence() { type(u"qwertyuiop "_s); }
    // Presses and releases each key as the window system delivers it: to the window first.
    void type(const QString &keys, double pauseAfterRelease = 0.2)
    {
        QWindow *window = m_note->window()->windowHandle();
        for (const QChar key : keys) {
            QTest::keyPress(window, key.toLatin1());
            QTest::keyRelease(window, key.toLatin1());
            m_scheduler->advanceBy(pauseAfterRelease);
        }
    }

    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<QWSuperSecret> m_detector;
    std::unique_ptr<SNStickyNoteWindowController> m_note;
    int m_fired = 0;
    QWNotificationCenter::Observation m_observation;
};

QTEST_MAIN(TestQWSuperSecret)
#include "TestQWSuperSecret.moc"
