#include "../kit/QWRichTextDump.h"
#include "kit/rtf/QWRtfWriter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// Archives that Vellumo wrote, and what they must read as. Each folder of data/golden holds a
// case: stickies.db as a release wrote it (or as damage left it), with the journal and Recently
// Deleted beside it where the case has them, notes.txt with the notes the store must read
// (each note's fields, then its text as runs, then the deleted notes), and note-N.rtf with
// each note's text as an exported RTF file. A change of the format shows as a changed file in
// review.
//
// The store then writes the notes back: written.txt holds what it reads of its own archive
// (as notes.txt, without blank notes, and unset dates are the time of writing), and what
// cbor2, a CBOR decoder that is not ours, finds in it.
//
// Where a case has a journal, journal.txt holds what the Python reader of
// docs/archive-format.md, taken from the page as it stands, prints of it: the page stays true
// to the files.
//
// After a deliberate change, VELLUMO_UPDATE_GOLDEN=1 writes the expected files anew.
class TestSNStickyNoteManagerGolden final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAsExpected_data()
    {
        QTest::addColumn<QString>("folder");
        const QDir golden(QStringLiteral(VELLUMO_TEST_DATA_DIR "/golden"));
        const QStringList cases = golden.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        QVERIFY(!cases.isEmpty());
        for (const QString &name : cases)
            QTest::newRow(qPrintable(name)) << golden.filePath(name);
    }

    void readsAsExpected()
    {
        QFETCH(QString, folder);
        QWTestEnvironment environment;
        // Recently Deleted keeps 30 days: the clock stands a few days after the cases' deletions.
        const QWManualScheduler clock(QDateTime(QDate(2026, 11, 24), QTime(12, 0), Qt::UTC));
        QTemporaryDir home;
        const QString base = home.filePath(u"Vellumo/"_s);
        QVERIFY(QDir().mkpath(base));
        for (const QString &file :
            { SNStickyNoteManager::databaseFileName, SNStickyNoteManager::journalFileName,
                SNStickyNoteManager::recentlyDeletedFileName }) {
            if (QFile::exists(folder + u'/' + file))
                QVERIFY(QFile::copy(folder + u'/' + file, base + file));
        }

        SNStickyNoteManager store(base, u"golden-device"_s);
        const QList<std::shared_ptr<SNStickyNote>> notes = store.notesArray();
        for (qsizetype index = 0; index < notes.size(); ++index) {
            const std::optional<QWAttributedString> text = notes.at(index)->attributedString();
            if (text && text->length() > 0)
                QWRichTextDump::compareWithFile(
                    folder + u"/note-%1.rtf"_s.arg(index + 1), QWRtfWriter().write(*text));
            // Its tags are the index's own, and know it.
            for (const std::shared_ptr<SNTag> &tag : notes.at(index)->tags()) {
                QCOMPARE(SNTagManager::sharedManager().tagWithName(tag->name()), tag);
                QVERIFY(tag->containsNote(notes.at(index).get()));
            }
        }
        QWRichTextDump::compareWithFile(folder + u"/notes.txt"_s, dump(store).toUtf8());

        QVERIFY(store.compact());
        QProcess python;
        python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
            { QStringLiteral(VELLUMO_TEST_DATA_DIR "/read_notes.py"), store.databasePath() });
        QVERIFY(python.waitForFinished(60000));
        QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
        QWRichTextDump::compareWithFile(folder + u"/written.txt"_s,
            (dump(SNStickyNoteManager(base, u"golden-device"_s)) + u"cbor2:\n"_s).toUtf8()
                + python.readAllStandardOutput());
    }

    void theFormatPagesReaderReadsTheJournal()
    {
        const QString text = QString::fromUtf8(
            fileBytes(QStringLiteral(VELLUMO_TEST_DATA_DIR "/../../../docs/archive-format.md")));
        const QString opening = u"```python\n"_s;
        const qsizetype start
            = text.indexOf(opening, text.indexOf(u"### Reading the journal with Python"_s));
        const qsizetype end = text.indexOf(u"\n```"_s, start);
        QVERIFY(start >= 0 && end > start);
        QTemporaryDir folder;
        QFile script(folder.filePath(u"read_journal.py"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(text.mid(start + opening.size(), end - start - opening.size() + 1).toUtf8());
        script.close();

        const QDir golden(QStringLiteral(VELLUMO_TEST_DATA_DIR "/golden"));
        qsizetype journals = 0;
        for (const QString &name : golden.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QString journal = golden.filePath(name + u"/stickies.journal"_s);
            if (!QFile::exists(journal))
                continue;
            ++journals;
            QProcess python;
            python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON), { script.fileName(), journal });
            QVERIFY(python.waitForFinished(60000));
            QCOMPARE(python.exitCode(), 0);
            QWRichTextDump::compareWithFile(golden.filePath(name + u"/journal.txt"_s),
                python.readAllStandardOutput() + "stderr: " + python.readAllStandardError());
        }
        QVERIFY(journals > 0);
    }

private:
    // The notes as notes.txt holds them, the deleted ones last.
    static QString dump(const SNStickyNoteManager &store)
    {
        QString read;
        const QList<std::shared_ptr<SNStickyNote>> notes = store.notesArray();
        for (qsizetype index = 0; index < notes.size(); ++index)
            read += u"note %1\n"_s.arg(index + 1) + describe(*notes.at(index));
        for (const SNDeletedNote &deleted : store.recentlyDeletedNotes())
            read += u"deleted %1 at %2: %3\n"_s.arg(deleted.uuid.toString(QUuid::WithoutBraces),
                deleted.dateDeleted.toUTC().toString(Qt::ISODateWithMs),
                QWRichTextDump::quoted(deleted.title));
        return read;
    }
    static QString describe(const SNStickyNote &note)
    {
        const auto date = [](const std::optional<QDateTime> &value) {
            return value ? value->toUTC().toString(Qt::ISODateWithMs) : u"none"_s;
        };
        QStringList tags;
        for (const std::shared_ptr<SNTag> &tag : note.tags())
            tags.append(QWRichTextDump::quoted(tag->name()) + u' '
                + QWRichTextDump::color(tag->tagColor()));
        const SNNoteVersion version = note.version();
        QStringList edits;
        for (auto edit = version.textEdits.cbegin(); edit != version.textEdits.cend(); ++edit)
            edits.append(u"%1 %2"_s.arg(edit.key()).arg(edit.value()));
        return u"uuid %1, version %2.%3 by %4, text edits %5\n"_s
                   .arg(note.uuid().toString(QUuid::WithoutBraces))
                   .arg(version.stamp.millis)
                   .arg(version.stamp.counter)
                   .arg(QWRichTextDump::quoted(version.stamp.device),
                       edits.isEmpty() ? u"none"_s : edits.join(u", "))
            + u"created %1, modified %2\ntheme %3, frame %4, collapsed %5, collapsed frame %6\n"
              "pin %7, count %8, alpha %9, tags %10\n"_s
                  .arg(date(note.dateCreated()), date(note.dateModified()), note.themeName(),
                      QWRichTextDump::quoted(note.windowFrame()),
                      note.isCollapsed() ? u"yes"_s : u"no"_s,
                      QWRichTextDump::quoted(note.collapsedWindowFrame()))
                  .arg(note.pinState())
                  .arg(note.countState())
                  .arg(QWRichTextDump::number(note.windowAlpha()),
                      tags.isEmpty() ? u"none"_s : tags.join(u", "))
            + QWRichTextDump::describe(note.attributedString().value_or(QWAttributedString()));
    }
};

QTEST_GUILESS_MAIN(TestSNStickyNoteManagerGolden)
#include "TestSNStickyNoteManagerGolden.moc"
