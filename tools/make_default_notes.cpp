// Builds the welcome notes archive ("stickies.default.db") from its readable source, a JSON
// file of notes written in simple HTML. Run by the build; the result is embedded in the
// program and copied into place on first start.
#include "kit/QWAttributedString.h"
#include "kit/QWColor.h"
#include "kit/QWKeyedArchiver.h"
#include "notes/SNStickyNote.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTag.h"
#include "tags/SNTagManager.h"

#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTextDocument>

#include <cstdio>

namespace {

// Hashtags carry a link and their tag's name, as the note window marks them when it reads a note.
QList<std::shared_ptr<SNTag>> markHashtags(
    QWMutableAttributedString &text, QRandomGenerator &random)
{
    QList<std::shared_ptr<SNTag>> tags;
    const QList<SNHashtagScanner::Occurrence> occurrences
        = SNHashtagScanner::occurrencesInString(text.string());
    for (const SNHashtagScanner::Occurrence &occurrence : occurrences) {
        const QString &name = occurrence.name;
        std::shared_ptr<SNTag> tag = SNTagManager::sharedManager().tagWithName(name);
        if (!tag) {
            tag = SNTag::tagWithNameColor(name, QWColor::qw_randomColor(random));
            SNTagManager::sharedManager().addTag(tag);
        }
        if (!tags.contains(tag))
            tags.append(tag);
        text.modifyAttributesRange(
            occurrence.start, occurrence.length, [&](QWTextAttributes &attributes) {
                attributes.setLink(name);
                attributes.setTagName(name);
            });
    }
    return tags;
}

int fail(const QString &message)
{
    std::fprintf(stderr, "make_default_notes: %s\n", qUtf8Printable(message));
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    // The build must not read or write the settings and themes of whoever runs it.
    QTemporaryDir scratch;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(scratch.filePath(QStringLiteral("config"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(scratch.filePath(QStringLiteral("data"))));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);

    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3)
        return fail(QStringLiteral("usage: make_default_notes SOURCE.json OUTPUT.db"));

    QFile source(arguments.at(1));
    if (!source.open(QIODevice::ReadOnly))
        return fail(
            QStringLiteral("cannot read %1: %2").arg(source.fileName(), source.errorString()));
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(source.readAll(), &parseError);
    if (json.isNull())
        return fail(QStringLiteral("%1: %2").arg(source.fileName(), parseError.errorString()));

    const QDateTime created
        = QDateTime::fromString(json[QStringLiteral("created")].toString(), Qt::ISODate);
    if (!created.isValid())
        return fail(QStringLiteral("\"created\" is not an ISO date"));
    // Fixed colours for the welcome tags, so that every build makes the same file.
    QRandomGenerator random(1);

    QList<std::shared_ptr<SNStickyNote>> notes;
    for (const QJsonValue &value : json[QStringLiteral("notes")].toArray()) {
        const QJsonObject object = value.toObject();
        QTextDocument document;
        document.setHtml(object[QStringLiteral("html")].toString());
        QWMutableAttributedString text(QWAttributedString::fromTextDocument(document));
        auto note = std::make_shared<SNStickyNote>();
        note->setTags(markHashtags(text, random));
        note->setAttributedString(text.attributedString());
        note->setDateCreated(created);
        note->setDateModified(created);
        note->setThemeName(object[QStringLiteral("theme")].toString());
        note->setWindowFrame(object[QStringLiteral("frame")].toString());
        note->setPinState(object[QStringLiteral("pinState")].toInteger());
        note->setWindowAlpha(double(0.95f));
        if (!note->hasContent())
            return fail(QStringLiteral("a note without text"));
        notes.append(note);
    }
    if (notes.isEmpty())
        return fail(QStringLiteral("no notes in %1").arg(source.fileName()));

    QSaveFile output(arguments.at(2));
    if (!output.open(QIODevice::WriteOnly))
        return fail(
            QStringLiteral("cannot write %1: %2").arg(output.fileName(), output.errorString()));
    output.write(QWKeyedArchiver::archivedDataWithRootObject(notes));
    if (!output.commit())
        return fail(
            QStringLiteral("cannot write %1: %2").arg(output.fileName(), output.errorString()));
    return 0;
}
