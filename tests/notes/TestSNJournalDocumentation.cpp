// Runs the Python reader of docs/archive-format.md, as the page gives it, over a journal the
// store wrote, so that the page stays true to the files.
#include "notes/SNJournal.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestImages.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

namespace {

// What the reader prints for one record.
struct PrintedRecord
{
    QString uuid;
    bool deleted = false;
    QString text;
    friend bool operator==(const PrintedRecord &, const PrintedRecord &) = default;
};

char *toString(const PrintedRecord &record)
{
    return QTest::toString(
        QStringLiteral("%1 %2 %3")
            .arg(record.uuid, record.deleted ? QStringLiteral("deleted") : QStringLiteral("saved"),
                record.text));
}

} // namespace

class TestSNJournalDocumentation final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void readerPrintsEveryRecord();

private:
    // Runs the reader; its standard error goes to `errors`.
    QList<PrintedRecord> read(const QString &journal, QString *errors = nullptr);

    QWTestEnvironment m_environment;
    QString m_reader;
};

void TestSNJournalDocumentation::initTestCase()
{
    QFile page(QStringLiteral(VELLUMO_TEST_DATA_DIR "/../../../docs/archive-format.md"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(page.readAll());
    const qsizetype section = text.indexOf(QStringLiteral("### Reading the journal with Python"));
    QVERIFY(section >= 0);
    const QString opening = QStringLiteral("```python\n");
    const qsizetype start = text.indexOf(opening, section);
    const qsizetype end = text.indexOf(QStringLiteral("\n```"), start);
    QVERIFY(start >= 0 && end > start);
    m_reader = m_environment.dataHome() + QStringLiteral("/read_journal.py");
    QFile script(m_reader);
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write(text.mid(start + opening.size(), end - start - opening.size() + 1).toUtf8());
}

QList<PrintedRecord> TestSNJournalDocumentation::read(const QString &journal, QString *errors)
{
    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON), { m_reader, journal });
    if (!python.waitForFinished(60000) || python.exitStatus() != QProcess::NormalExit
        || python.exitCode() != 0) {
        qWarning("the reader failed: %s", python.readAllStandardError().constData());
        return {};
    }
    if (errors)
        *errors = QString::fromUtf8(python.readAllStandardError());
    QList<PrintedRecord> records;
    for (const QByteArray &line : python.readAllStandardOutput().split('\n')) {
        if (line.isEmpty())
            continue;
        const QList<QByteArray> words = line.split(' ');
        const QJsonArray text = QJsonDocument::fromJson(
            "[" + line.mid(words.at(0).size() + words.value(1).size() + 2) + "]")
                                    .array();
        records.append({ QString::fromUtf8(words.at(0)), words.value(1) == "True",
            text.size() == 1 ? text.at(0).toString() : QStringLiteral("<not a JSON string>") });
    }
    return records;
}

void TestSNJournalDocumentation::readerPrintsEveryRecord()
{
    const QString folder = m_environment.dataHome() + QStringLiteral("/Vellumo");
    SNStickyNoteManager store(folder, QStringLiteral("documentation"));
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
    QVERIFY(store.compact()); // the welcome notes are in the archive now, not in the journal

    const auto id = [](const std::shared_ptr<SNStickyNote> &note) {
        return note->uuid().toString(QUuid::WithoutBraces);
    };
    // Text beyond ASCII, quotes and line breaks, a picture, and a note without text.
    const QString shopping = QStringLiteral("Shopping \"list\"\nCrème brûlée, 🍓\ttea");
    auto first = SNStickyNote::note();
    first->setAttributedString(QWAttributedString(shopping));
    store.addNote(first);
    QWTextAttributes picture;
    picture.setAttachment(imageFileBytes(Qt::red, QSize(40, 30), "PNG"));
    picture.setAttachmentFileName(QStringLiteral("red.png"));
    const QString withPicture = QStringLiteral("Map\n") + QChar(0xFFFC);
    auto second = SNStickyNote::note();
    second->setAttributedString(QWAttributedString(withPicture, { QWTextRun { 4, 1, picture } }));
    store.addNote(second);
    QVERIFY(store.save());
    first->setAttributedString(QWAttributedString(shopping + QStringLiteral("\nmilk")));
    store.noteDidChange(first);
    QVERIFY(store.save());
    store.removeNote(second);
    auto empty = SNStickyNote::note();
    store.addNote(empty);
    QVERIFY(store.save());

    const QList<PrintedRecord> expected {
        { id(first), false, shopping },
        { id(second), false, withPicture },
        { id(first), false, shopping + QStringLiteral("\nmilk") },
        { id(second), true, withPicture },
        { id(empty), false, QString() },
    };
    QCOMPARE(read(store.journalPath()), expected);

    // A torn or damaged record ends the reading there, as it ends the replay.
    QFile journal(store.journalPath());
    QVERIFY(journal.open(QIODevice::ReadOnly));
    const QByteArray whole = journal.readAll();
    journal.close();
    const QByteArray records = whole.mid(SNJournal::header.size());
    QByteArray damaged = whole;
    damaged[whole.size() - records.size() / 2] = ~damaged.at(whole.size() - records.size() / 2);
    const struct
    {
        QByteArray bytes;
        qsizetype recordsRead;
    } cases[] = {
        { whole + records.left(3), expected.size() }, // a frame cut short
        { whole.left(whole.size() - 1), expected.size() - 1 }, // the last record cut short
        { damaged, -1 }, // a byte changed on the disk: the records before it are read
    };
    const QString path = m_environment.dataHome() + QStringLiteral("/torn.journal");
    for (const auto &torn : cases) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(torn.bytes);
        file.close();
        QString errors;
        const QList<PrintedRecord> printed = read(path, &errors);
        QVERIFY2(errors.contains(QStringLiteral("torn or damaged")), qPrintable(errors));
        if (torn.recordsRead >= 0) {
            QCOMPARE(printed, expected.first(torn.recordsRead));
        } else {
            QVERIFY(printed.size() < expected.size());
            QCOMPARE(printed, expected.first(printed.size()));
        }
    }
}

QTEST_GUILESS_MAIN(TestSNJournalDocumentation)
#include "TestSNJournalDocumentation.moc"
