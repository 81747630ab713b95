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

    void sequenceWithShortPausesFiresOnceAndItsLastKeyNeverReachesTheNote();
    void wrongKeyFirstCountsUntilAPauseOfMoreThanASecond();
    void keysHeldDownAndKeysOutsideTheTableCountAsKeys();
    void everyOpenNoteIsColouredAndRecolouredAfterEachEdit();
    void theApplicationHasOneDetectorAndItListens();
    void hexadecimalTextIsReadPairByPair_data();
    void hexadecimalTextIsReadPairByPair();
    void theSoundIsAShortWaveFile();

private:
    // Presses and releases a key as the window system delivers it: to the window first.
    void type(QWindow *window, const QString &keys, double pauseAfterRelease = 0.2);
    void typeSequence(QWindow *window, double pauseAfterRelease = 0.2);
    static QColor colorAt(SNTextView *view, int position);

    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
    std::unique_ptr<QWSuperSecret> m_detector;
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
}

void TestQWSuperSecret::cleanup()
{
    m_observation.cancel();
    m_detector.reset();
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestQWSuperSecret::type(QWindow *window, const QString &keys, double pauseAfterRelease)
{
    for (const QChar key : keys) {
        const char ascii = key.toLatin1();
        QTest::keyPress(window, ascii);
        QTest::keyRelease(window, ascii);
        m_scheduler->advanceBy(pauseAfterRelease);
    }
}

void TestQWSuperSecret::typeSequence(QWindow *window, double pauseAfterRelease)
{
    type(window, u"qwertyuiop "_s, pauseAfterRelease);
}

QColor TestQWSuperSecret::colorAt(SNTextView *view, int position)
{
    QTextCursor cursor(view->document());
    cursor.setPosition(position + 1);
    const QBrush brush = cursor.charFormat().foreground();
    return brush.style() == Qt::NoBrush ? QColor() : brush.color();
}

void TestQWSuperSecret::sequenceWithShortPausesFiresOnceAndItsLastKeyNeverReachesTheNote()
{
    auto note = SNStickyNote::note();
    auto controller = openNote(note);
    SNTextView *text = controller->textView();
    text->setFocus();
    QWindow *window = controller->window()->windowHandle();

    // Pauses up to just under a second between keys keep the sequence going.
    type(window, u"qwertyuio"_s, 0.95);
    QCOMPARE(m_fired, 0);
    type(window, u"p "_s, 0.1);
    QCOMPARE(m_fired, 1);
    QCOMPARE(text->toPlainText(), u"qwertyuiop"_s);
    QVERIFY(m_detector->sound());

    // Typing on, without a pause, neither fires again nor is swallowed.
    type(window, u" "_s);
    typeSequence(window);
    QCOMPARE(m_fired, 1);
    QCOMPARE(text->toPlainText(), u"qwertyuiop qwertyuiop "_s);

    // After a pause it works again, as often as it is typed.
    m_scheduler->advanceBy(1.0);
    QVERIFY(m_detector->magic().isEmpty());
    typeSequence(window);
    QCOMPARE(m_fired, 2);
    QCOMPARE(text->toPlainText(), u"qwertyuiop qwertyuiop qwertyuiop"_s);
}

void TestQWSuperSecret::wrongKeyFirstCountsUntilAPauseOfMoreThanASecond()
{
    auto controller = openNote(SNStickyNote::note());
    controller->textView()->setFocus();
    QWindow *window = controller->window()->windowHandle();

    type(window, u"x"_s, 0.5);
    typeSequence(window);
    QCOMPARE(m_fired, 0);
    // The wrong key is still remembered: the sequence is not at the start of what was typed.
    QCOMPARE(m_detector->magic().size(), 12);

    m_scheduler->advanceBy(1.01);
    QVERIFY(m_detector->magic().isEmpty());
    typeSequence(window);
    QCOMPARE(m_fired, 1);
    QCOMPARE(m_detector->magic(), m_detector->boom());
}

void TestQWSuperSecret::keysHeldDownAndKeysOutsideTheTableCountAsKeys()
{
    auto controller = openNote(SNStickyNote::note());
    controller->textView()->setFocus();
    QWindow *window = controller->window()->windowHandle();

    // A held-down key repeats its press: one press too many spoils the sequence.
    QTest::keyPress(window, 'q');
    QTest::keyEvent(QTest::Press, window, 'q', Qt::NoModifier);
    QTest::keyRelease(window, 'q');
    type(window, u"wertyuiop "_s);
    QCOMPARE(m_fired, 0);
    QCOMPARE(m_detector->magic().first(), quint16(12));
    QCOMPARE(m_detector->magic().at(1), quint16(12));

    // A key the table does not know is a key too.
    m_scheduler->advanceBy(1.5);
    QTest::keyClick(window, Qt::Key_F35);
    QCOMPARE(m_detector->magic().size(), 1);
    typeSequence(window);
    QCOMPARE(m_fired, 0);

    // Shift, a key press of its own, makes no other key of a letter.
    m_scheduler->advanceBy(1.5);
    for (const char key : { 'Q', 'W', 'E', 'R', 'T', 'Y', 'U', 'I', 'O', 'P' })
        QTest::keyClick(window, key, Qt::ShiftModifier);
    QTest::keyClick(window, ' ');
    QCOMPARE(m_fired, 1);
}

void TestQWSuperSecret::everyOpenNoteIsColouredAndRecolouredAfterEachEdit()
{
    auto words = noteWithText(u"one two three four five six seven"_s);
    auto paragraphs = noteWithText(u"first\n\n   \nsecond"_s);
    paragraphs->setCountState(SNStickyNote::CountParagraphs);
    auto blank = noteWithText(u"   \n  "_s);
    auto wordsController = openNote(words);
    auto paragraphsController = openNote(paragraphs);
    auto blankController = openNote(blank);
    const QString blankHtml = blankController->textView()->document()->toHtml();
    const QList<QWColor> &palette = SNTextColorPalette::colorArray();
    // The application hands the notice to every open note, as here.
    QObject context;
    QWNotificationCenter::defaultCenter().addObserverForNameObjectHandler(
        &context, QWSuperSecret::superSecretNotification, nullptr, [&](const QWNotification &) {
            for (SNStickyNoteWindowController *controller :
                { wordsController.get(), paragraphsController.get(), blankController.get() })
                controller->rainbowize();
        });

    // Typed into the first note: its text gets no trailing space.
    SNTextView *text = wordsController->textView();
    text->setFocus();
    text->moveCursor(QTextCursor::End);
    QWindow *window = wordsController->window()->windowHandle();
    type(window, u" "_s);
    m_scheduler->advanceBy(1.5);
    typeSequence(window);
    QCOMPARE(m_fired, 1);
    QCOMPARE(text->toPlainText(), u"one two three four five six seven qwertyuiop"_s);

    // Six colours of the nine, then round again.
    QVERIFY(wordsController->secretUnlocked());
    QCOMPARE(colorAt(text, 0), palette.at(0).toQColor()); // one
    QCOMPARE(colorAt(text, 19), palette.at(4).toQColor()); // five
    QCOMPARE(colorAt(text, 28), palette.at(0).toQColor()); // seven
    QCOMPARE(colorAt(text, 34), palette.at(1).toQColor()); // qwertyuiop

    SNTextView *paragraphText = paragraphsController->textView();
    QVERIFY(paragraphsController->secretUnlocked());
    QCOMPARE(colorAt(paragraphText, 0), palette.at(0).toQColor());
    QCOMPARE(colorAt(paragraphText, 11), palette.at(1).toQColor());

    QVERIFY(blankController->secretUnlocked());
    QCOMPARE(blankController->textView()->document()->toHtml(), blankHtml);

    // From now on every edit is coloured at once, and saved with its colours.
    type(window, u" new"_s);
    QCOMPARE(text->toPlainText(), u"one two three four five six seven qwertyuiop new"_s);
    QCOMPARE(colorAt(text, 45), palette.at(2).toQColor());
    // Undoing the colour step leaves the caret where the typing left it.
    text->undo(); // "ew"
    text->undo(); // the colour of "n"
    QCOMPARE(text->toPlainText(), u"one two three four five six seven qwertyuiop n"_s);
    QCOMPARE(colorAt(text, 45), palette.at(1).toQColor());
    QCOMPARE(text->textCursor().position(), 46);
    text->redo();
    text->redo();
    QCOMPARE(colorAt(text, 45), palette.at(2).toQColor());
    wordsController->flushNote();
    const QWAttributedString saved = *words->attributedString();
    QCOMPARE(saved.attributesAtIndex(45).foregroundColor(), std::optional<QWColor>(palette.at(2)));

    // So is a change of what the counter counts.
    paragraphs->setCountState(SNStickyNote::CountCharacters);
    paragraphsController->rainbowize();
    QCOMPARE(colorAt(paragraphText, 0), palette.at(0).toQColor());
    QCOMPARE(colorAt(paragraphText, 1), palette.at(1).toQColor());
}

void TestQWSuperSecret::theApplicationHasOneDetectorAndItListens()
{
    QWSuperSecret *shared = QWSuperSecret::shhhhhh();
    QCOMPARE(QWSuperSecret::shhhhhh(), shared);
    QCOMPARE(shared->parent(), QCoreApplication::instance());
    QVERIFY(shared->isListening());
    QCOMPARE(shared->boom(), QList<quint16>({ 12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 49 }));

    // Alone now, it hears the keys typed in a note.
    m_detector.reset();
    auto controller = openNote(SNStickyNote::note());
    controller->textView()->setFocus();
    typeSequence(controller->window()->windowHandle());
    QCOMPARE(m_fired, 1);
    QCOMPARE(shared->magic(), shared->boom());
    m_scheduler->advanceBy(1.5);
    QVERIFY(shared->magic().isEmpty());
}

void TestQWSuperSecret::hexadecimalTextIsReadPairByPair_data()
{
    QTest::addColumn<QString>("hex");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("even") << u"52494646"_s << QByteArray("RIFF");
    QTest::newRow("either case") << u"fF0a7E"_s << QByteArray("\xFF\x0A\x7E", 3);
    QTest::newRow("zero bytes") << u"0000"_s << QByteArray(2, '\0');
    QTest::newRow("odd: the last digit stands alone") << u"ABC"_s << QByteArray("\xAB\x0C", 2);
    QTest::newRow("one digit") << u"7"_s << QByteArray("\x07", 1);
    QTest::newRow("empty: the first pair is always read") << QString() << QByteArray(1, '\0');
    QTest::newRow("not hexadecimal") << u"G1"_s << QByteArray(1, '\0');
    QTest::newRow("half hexadecimal") << u"1G2"_s << QByteArray("\x01\x02", 2);
    QTest::newRow("not Latin") << u"\u0661\u0662"_s << QByteArray(1, '\0');
}

void TestQWSuperSecret::hexadecimalTextIsReadPairByPair()
{
    QFETCH(QString, hex);
    QFETCH(QByteArray, bytes);
    QCOMPARE(QWSuperSecret::bytesFromHexString(hex), bytes);
}

void TestQWSuperSecret::theSoundIsAShortWaveFile()
{
    const QString hex = QWSuperSecret::dontEvenAsk();
    QCOMPARE(hex.size() % 2, 0);
    QCOMPARE(hex.toUpper(), hex);
    QVERIFY(QByteArray::fromHex(hex.toLatin1()).toHex().toUpper() == hex.toLatin1());

    const QByteArray wave = m_detector->sound()->data();
    QCOMPARE(wave, QByteArray::fromHex(hex.toLatin1()));
    const auto u16
        = [&wave](int offset) { return qFromLittleEndian<quint16>(wave.constData() + offset); };
    const auto u32
        = [&wave](int offset) { return qFromLittleEndian<quint32>(wave.constData() + offset); };
    QCOMPARE(wave.left(4), QByteArray("RIFF"));
    QCOMPARE(u32(4), quint32(wave.size() - 8));
    QCOMPARE(wave.mid(8, 8), QByteArray("WAVEfmt "));
    QCOMPARE(u32(16), 16u);
    QCOMPARE(u16(20), quint16(1)); // PCM
    QCOMPARE(u16(22), quint16(1)); // mono
    QCOMPARE(u32(24), 44100u);
    QCOMPARE(u32(28), 88200u);
    QCOMPARE(u16(32), quint16(2));
    QCOMPARE(u16(34), quint16(16));
    QCOMPARE(wave.mid(36, 4), QByteArray("data"));
    QCOMPARE(u32(40), quint32(wave.size() - 44));
    const double seconds = (wave.size() - 44) / 88200.0;
    QVERIFY2(seconds > 0.3 && seconds < 0.6, qPrintable(QString::number(seconds)));
    // Not silence, and not clipped.
    int loudest = 0;
    for (int offset = 44; offset + 1 < wave.size(); offset += 2)
        loudest = qMax(loudest, qAbs(int(qFromLittleEndian<qint16>(wave.constData() + offset))));
    QVERIFY(loudest > 3000);
    QVERIFY(loudest < 32767);
}

QTEST_MAIN(TestQWSuperSecret)
#include "TestQWSuperSecret.moc"
