#include "kit/QWAttributedString.h"
#include "kit/rtf/QWRtfWriter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "support/QWTestEnvironment.h"
#include "tags/SNTag.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

// Archives that Vellumo wrote, and what they must read as. Each folder of data/golden holds a
// case: stickies.db as a release wrote it (or as damage left it), notes.json with the notes the
// store must read from it, and note-N.rtf with each note's text as an exported RTF file. A change
// of the format shows as a changed file in review.
//
// After a deliberate change, VELLUMO_UPDATE_GOLDEN=1 writes the expected files anew.
class TestSNStickyNoteManagerGolden final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAsExpected_data();
    void readsAsExpected();
};

namespace {

const QString goldenFolder = QStringLiteral(VELLUMO_TEST_DATA_DIR "/golden");

QJsonValue colorValue(const std::optional<QWColor> &color)
{
    if (!color)
        return QJsonValue();
    // One line, red green blue alpha, each as short as reads back exactly.
    QStringList components;
    for (const double component : { color->redComponent(), color->greenComponent(),
             color->blueComponent(), color->alphaComponent() })
        components.append(QString::number(component, 'g', QLocale::FloatingPointShortest));
    return components.join(u' ');
}

QJsonObject attributesObject(const QWTextAttributes &attributes)
{
    QJsonObject object;
    const auto put = [&object](const char *key, const QJsonValue &value, bool set) {
        if (set)
            object.insert(QLatin1String(key), value);
    };
    put("fontFamily", attributes.fontFamily(), !attributes.fontFamily().isEmpty());
    put("fontSize", attributes.fontSize(), attributes.fontSize() > 0.0);
    put("bold", true, attributes.isBold());
    put("italic", true, attributes.isItalic());
    put("foregroundColor", colorValue(attributes.foregroundColor()),
        attributes.foregroundColor().has_value());
    put("underlineStyle", attributes.underlineStyle(), attributes.underlineStyle() != 0);
    put("strikethroughStyle", attributes.strikethroughStyle(),
        attributes.strikethroughStyle() != 0);
    put("strokeColor", colorValue(attributes.strokeColor()), attributes.strokeColor().has_value());
    put("link", attributes.link(), !attributes.link().isEmpty());
    put("tagName", attributes.tagName(), !attributes.tagName().isEmpty());
    put("attachmentSha1",
        QString::fromLatin1(
            QCryptographicHash::hash(attributes.attachment(), QCryptographicHash::Sha1).toHex()),
        attributes.hasAttachment());
    put("attachmentFileName", attributes.attachmentFileName(),
        !attributes.attachmentFileName().isEmpty());
    return object;
}

QJsonObject noteObject(const SNStickyNote &note)
{
    QJsonObject object;
    const auto date = [](const std::optional<QDateTime> &value) {
        return value ? QJsonValue(value->toUTC().toString(Qt::ISODateWithMs)) : QJsonValue();
    };
    object.insert(QStringLiteral("dateCreated"), date(note.dateCreated()));
    object.insert(QStringLiteral("dateModified"), date(note.dateModified()));
    object.insert(QStringLiteral("themeName"), note.themeName());
    object.insert(QStringLiteral("windowFrame"), note.windowFrame());
    object.insert(QStringLiteral("collapsedWindowFrame"), note.collapsedWindowFrame());
    object.insert(QStringLiteral("isCollapsed"), note.isCollapsed());
    object.insert(QStringLiteral("pinState"), note.pinState());
    object.insert(QStringLiteral("countState"), note.countState());
    object.insert(QStringLiteral("windowAlpha"), note.windowAlpha());
    QJsonArray tags;
    for (const std::shared_ptr<SNTag> &tag : note.tags())
        tags.append(QJsonArray { tag->name(), colorValue(tag->tagColor()) });
    object.insert(QStringLiteral("tags"), tags);
    const QWAttributedString text = note.attributedString().value_or(QWAttributedString());
    object.insert(QStringLiteral("text"), text.string());
    QJsonArray runs;
    for (const QWTextRun &run : text.runs()) {
        QJsonObject entry = attributesObject(run.attributes);
        entry.insert(QStringLiteral("location"), run.location);
        entry.insert(QStringLiteral("length"), run.length);
        runs.append(entry);
    }
    object.insert(QStringLiteral("runs"), runs);
    return object;
}

// Compares with the expected file, or writes it when asked to.
void checkGolden(const QString &path, const QByteArray &actual)
{
    if (qEnvironmentVariableIntValue("VELLUMO_UPDATE_GOLDEN") == 1) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(actual);
        return;
    }
    QFile file(path);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
    const QByteArray expected = file.readAll();
    if (actual != expected) {
        const QList<QByteArray> expectedLines = expected.split('\n');
        const QList<QByteArray> actualLines = actual.split('\n');
        qsizetype line = 0;
        while (line < expectedLines.size() && line < actualLines.size()
            && expectedLines.at(line) == actualLines.at(line))
            ++line;
        QFAIL(qPrintable(QStringLiteral("%1 differs at line %2:\nexpected: %3\nactual:   %4")
                             .arg(path)
                             .arg(line + 1)
                             .arg(QString::fromUtf8(expectedLines.value(line)),
                                 QString::fromUtf8(actualLines.value(line)))));
    }
}

} // namespace

void TestSNStickyNoteManagerGolden::readsAsExpected_data()
{
    QTest::addColumn<QString>("folder");
    const QStringList cases = QDir(goldenFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QVERIFY(!cases.isEmpty());
    for (const QString &name : cases)
        QTest::newRow(qPrintable(name)) << QDir(goldenFolder).filePath(name);
}

void TestSNStickyNoteManagerGolden::readsAsExpected()
{
    QFETCH(QString, folder);
    QWTestEnvironment environment;
    QTemporaryDir home;
    const QString base = home.filePath(QStringLiteral("Vellumo/"));
    QVERIFY(QDir().mkpath(base));
    QVERIFY(QFile::copy(QDir(folder).filePath(QStringLiteral("stickies.db")),
        base + QStringLiteral("stickies.db")));

    SNStickyNoteManager store(base);
    const QList<std::shared_ptr<SNStickyNote>> notes = store.notesArray();
    QJsonArray read;
    for (const std::shared_ptr<SNStickyNote> &note : notes)
        read.append(noteObject(*note));
    checkGolden(QDir(folder).filePath(QStringLiteral("notes.json")),
        QJsonDocument(read).toJson(QJsonDocument::Indented));

    for (qsizetype index = 0; index < notes.size(); ++index) {
        const std::optional<QWAttributedString> text = notes.at(index)->attributedString();
        if (!text || text->length() == 0)
            continue;
        checkGolden(QDir(folder).filePath(QStringLiteral("note-%1.rtf").arg(index + 1)),
            QWRtfWriter().write(*text));
    }
}

QTEST_GUILESS_MAIN(TestSNStickyNoteManagerGolden)
#include "TestSNStickyNoteManagerGolden.moc"
