// One thread edits notes (text, frames, tags), adds and deletes them, while saves and
// compactions run on others. Built and run under
// ThreadSanitizer by ./build.sh test; in the other builds it checks the end state.
#include "SNNotesTestSupport.h"
#include "kit/QWKeyedUnarchiver.h"
#include "support/QWTestEnvironment.h"

#include <QRandomGenerator>

#include <atomic>
#include <thread>

class TestSNStickyNoteManagerStress final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void editsWhileSaving()
    {
        QWTestEnvironment environment;
        SNStickyNoteManager store(environment.dataHome() + QStringLiteral("/Vellumo"));
        SNNotesTest::removeAll(store);

        QList<std::shared_ptr<SNTag>> tags;
        for (int i = 0; i < 6; ++i)
            tags.append(SNTag::tagWithNameColor(
                QStringLiteral("#tag%1").arg(i), QWColor::qw_randomColor()));
        SNTagManager::sharedManager().addTags(tags);

        QList<std::shared_ptr<SNStickyNote>> notes;
        for (int i = 0; i < 12; ++i) {
            notes.append(SNNotesTest::noteWithText(QStringLiteral("note %1").arg(i)));
            store.addNote(notes.last());
        }

        std::atomic<bool> editing { true };
        std::thread saver([&] {
            for (int turn = 0; editing.load(); ++turn) {
                if (turn % 20 == 19)
                    store.compact();
                else
                    store.save();
            }
        });

        QRandomGenerator random(7);
        for (int round = 0; round < 1500; ++round) {
            const std::shared_ptr<SNStickyNote> &note = notes[random.bounded(notes.size())];
            note->setAttributedString(
                QWAttributedString(QStringLiteral("round %1 ").arg(round).repeated(1 + round % 5)));
            note->setWindowFrame(
                QStringLiteral("{{%1, %2}, {240, 180}}").arg(round).arg(round % 300));
            note->setWindowAlpha(0.5 + (round % 50) / 100.0);
            note->setTags({ tags[round % tags.size()], tags[(round + 1) % tags.size()] });
            store.noteDidChange(note);
            if (round % 25 == 0)
                store.addNote(notes.last());
            if (round % 25 == 1)
                store.removeNote(notes.last());
            if (round % 10 == 0)
                store.saveInBackground();
        }
        editing.store(false);
        saver.join();
        store.waitForBackgroundSaves();
        QVERIFY(store.save());

        // The journal replayed over the archive gives exactly the final state, and so does the
        // archive alone once compacted.
        const auto framesOf = [](const QList<std::shared_ptr<SNStickyNote>> &list) {
            QStringList frames;
            for (const std::shared_ptr<SNStickyNote> &note : list)
                frames.append(note->uuid().toString() + note->windowFrame());
            return frames;
        };
        const QStringList expected = framesOf(store.notesArray());
        QCOMPARE(framesOf(SNStickyNoteManager(store.baseDatabasePath()).notesArray()), expected);
        QVERIFY(store.compact());
        const QWKeyedUnarchiver::ParseResult result
            = QWKeyedUnarchiver::parse(fileBytes(store.databasePath()));
        QVERIFY(result.isComplete());
        QCOMPARE(
            framesOf(QWKeyedUnarchiver::decodeArrayOfObjectsOfClass<std::shared_ptr<SNStickyNote>>(
                result.root)),
            expected);

        for (const std::shared_ptr<SNStickyNote> &note : notes)
            note->setTags({});
    }
};

QTEST_GUILESS_MAIN(TestSNStickyNoteManagerStress)
#include "TestSNStickyNoteManagerStress.moc"
