#include "kit/QWNotificationCenter.h"
#include "notewindow/SNNoteWindowTestSupport.h"
#include "notewindow/SNTextView.h"
#include "secret/QWSound.h"
#include "secret/QWSuperSecret.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themeview/SNTextColorPalette.h"

#include <QTest>
#include <QTextCursor>
#include <QWindow>
#include <QtEndian>

using namespace Qt::StringLiterals;

// The hidden key sequence, typed as a user types it into a note: what counts as the sequence,
// when what was typed is forgotten, what the note sees of it, and what follows.
class TestQWSuperSecret final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void sequenceAfterAPauseFiresOnceAndItsLastKeyNeverReachesTheNote();
    void heldDownKeysCountButShiftDoesNot();
    void theNoteIsColouredAndRecolouredAfterEachEdit();
    void theApplicationHasOneDetectorAndItListens();
    void hexadecimalTextIsReadPairByPair_data();
    void hexadecimalTextIsReadPairByPair();
    void theSoundIsNeitherSilentNorClipped();

private:
    // Presses and releases each key as the window system delivers it: to the window first.
    void type(const QString &keys, double pauseAfterRelease = 0.2);
    void typeSequence() { type(u"qwertyuiop "_s); }

    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<QWSuperSecret> m_detector;
    std::unique_ptr<SNStickyNoteWindowController> m_note;
    int m_fired = 0;
    QWNotificationCenter::Observation m_observation;
};

void TestQWSuperSecret::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
    // The sequence is no English word: auto-correction would rewrite it as it is typed.
    SNUserDefaults::standardUserDefaults().setAutoCorrectSpelling(false);
    m_detector = std::make_unique<QWSuperSecret>();
    m_fired = 0;
    m_observation = QWNotificationCenter::defaultCenter().observeNameObjectHandler(
        QWSuperSecret::superSecretNotification, nullptr,
        [this](const QWNotification &notification) {
            QVERIFY(!notification.object);
            ++m_fired;
        });
    m_note = openNote(noteWithText(u"one two three four five six seven"_s));
    m_note->textView()->setFocus();
    m_note->textView()->moveCursor(QTextCursor::End);
}

void TestQWSuperSecret::cleanup()
{
    m_observation.cancel();
    m_note.reset();
    m_detector.reset();
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestQWSuperSecret::type(const QString &keys, double pauseAfterRelease)
{
    QWindow *window = m_note->window()->windowHandle();
    for (const QChar key : keys) {
        QTest::keyPress(window, key.toLatin1());
        QTest::keyRelease(window, key.toLatin1());
        m_scheduler->advanceBy(pauseAfterRelease);
    }
}

void TestQWSuperSecret::sequenceAfterAPauseFiresOnceAndItsLastKeyNeverReachesTheNote()
{
    SNTextView *text = m_note->textView();
    text->clear();
    // A wrong key first counts until a pause of more than a second.
    type(u"x"_s, 0.5);
    typeSequence();
    QCOMPARE(m_fired, 0);
    m_scheduler->advanceBy(1.01);
    QVERIFY(m_detector->magic().isEmpty());
    // Pauses up to just under a second between keys keep the sequence going.
    type(u"qwertyuio"_s, 0.95);
    type(u"p "_s, 0.1);
    QCOMPARE(m_fired, 1);
    QCOMPARE(text->toPlainText(), u"xqwertyuiop qwertyuiop"_s);
    // Typing on, without a pause, neither fires again nor is swallowed.
    type(u" "_s);
    typeSequence();
    QCOMPARE(m_fired, 1);
    QCOMPARE(text->toPlainText(), u"xqwertyuiop qwertyuiop qwertyuiop "_s);
    // After a pause it works again.
    m_scheduler->advanceBy(1.0);
    typeSequence();
    QCOMPARE(m_fired, 2);
}

void TestQWSuperSecret::heldDownKeysCountButShiftDoesNot()
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
    for (const char key : { 'Q', 'W', 'E', 'R', 'T', 'Y', 'U', 'I', 'O', 'P' })
        QTest::keyClick(window, key, Qt::ShiftModifier);
    QTest::keyClick(window, ' ');
    QCOMPARE(m_fired, 1);
}

void TestQWSuperSecret::theNoteIsColouredAndRecolouredAfterEachEdit()
{
    const auto colorAt = [text = m_note->textView()](int position) {
        QTextCursor cursor(text->document());
        cursor.setPosition(position + 1);
        return cursor.charFormat().foreground().color();
    };
    const QList<QWColor> &palette = SNTextColorPalette::colorArray();
    // The application hands the notice to every open note, as here.
    QObject context;
    QWNotificationCenter::defaultCenter().addObserverForNameObjectHandler(&context,
        QWSuperSecret::superSecretNotification, nullptr,
        [this](const QWNotification &) { m_note->rainbowize(); });
    type(u" "_s, 1.5);
    typeSequence();
    QVERIFY(m_note->secretUnlocked());
    QCOMPARE(colorAt(34), palette.at(1).toQColor()); // qwertyuiop, the 8th word
    // From now on every edit is coloured at once, and saved with its colours.
    SNTextView *text = m_note->textView();
    type(u" new"_s);
    QCOMPARE(colorAt(45), palette.at(2).toQColor());
    // Undoing the colour step leaves the caret where the typing left it.
    text->undo(); // "ew"
    text->undo(); // the colour of "n"
    QCOMPARE(text->toPlainText(), u"one two three four five six seven qwertyuiop n"_s);
    QCOMPARE(colorAt(45), palette.at(1).toQColor());
    QCOMPARE(text->textCursor().position(), 46);
    text->redo();
    text->redo();
    m_note->flushNote();
    const QWAttributedString saved = *m_note->note()->attributedString();
    QCOMPARE(saved.attributesAtIndex(45).foregroundColor(), std::optional<QWColor>(palette.at(2)));
}

void TestQWSuperSecret::theApplicationHasOneDetectorAndItListens()
{
    QWSuperSecret *shared = QWSuperSecret::shhhhhh();
    QCOMPARE(QWSuperSecret::shhhhhh(), shared);
    QCOMPARE(shared->parent(), QCoreApplication::instance());
    // Alone now, it hears the keys typed in a note.
    m_detector.reset();
    typeSequence();
    QCOMPARE(m_fired, 1);
}

void TestQWSuperSecret::hexadecimalTextIsReadPairByPair_data()
{
    QTest::addColumn<QString>("hex");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("either case") << u"fF0a7E"_s << QByteArray("\xFF\x0A\x7E", 3);
    QTest::newRow("odd: the last digit stands alone") << u"ABC"_s << QByteArray("\xAB\x0C", 2);
    QTest::newRow("empty: the first pair is always read") << QString() << QByteArray(1, '\0');
    QTest::newRow("not hexadecimal") << u"G1"_s << QByteArray(1, '\0');
    QTest::newRow("half hexadecimal") << u"1G2"_s << QByteArray("\x01\x02", 2);
}

void TestQWSuperSecret::hexadecimalTextIsReadPairByPair()
{
    QFETCH(QString, hex);
    QFETCH(QByteArray, bytes);
    QCOMPARE(QWSuperSecret::bytesFromHexString(hex), bytes);
}

void TestQWSuperSecret::theSoundIsNeitherSilentNorClipped()
{
    // Its format and length are read back by another reader in TestQWSound.
    const QByteArray wave = m_detector->sound()->data();
    QCOMPARE(wave, QByteArray::fromHex(QWSuperSecret::dontEvenAsk().toLatin1()));
    int loudest = 0;
    for (int offset = 44; offset + 1 < wave.size(); offset += 2)
        loudest = qMax(loudest, qAbs(int(qFromLittleEndian<qint16>(wave.constData() + offset))));
    QVERIFY(loudest > 3000);
    QVERIFY(loudest < 32767);
}

QTEST_MAIN(TestQWSuperSecret)
#include "TestQWSuperSecret.moc"
