// Feeds arbitrary bytes to the keyed archive reader and to every kit decoder, the way a
// damaged or hostile notes file would reach them, and to the theme registry's reading of
// Themes.db.
#include "kit/QWColor.h"
#include "kit/QWFont.h"
#include "kit/QWKeyedUnarchiver.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QGuiApplication>

#include <cstddef>
#include <cstdint>

namespace {

void decodeEverything(const QWArchiveValue &value, int nestedArchives)
{
    switch (value.kind()) {
    case QWArchiveValue::Kind::Object: {
        QWKeyedUnarchiver::decodeObjectOfClass<QWColor>(value);
        QWKeyedUnarchiver::decodeObjectOfClass<QWFont>(value);
        QWKeyedUnarchiver::decodeObject(value);
        const QWKeyedUnarchiver coder(value);
        for (const QWArchiveValue::Entry &entry : value.entries()) {
            coder.decodeDoubleForKey(entry.first);
            coder.decodeDateForKey(entry.first);
            decodeEverything(entry.second, nestedArchives);
        }
        break;
    }
    case QWArchiveValue::Kind::Array:
        for (const QWArchiveValue &element : value.toArray())
            decodeEverything(element, nestedArchives);
        break;
    case QWArchiveValue::Kind::Data:
        // A note keeps its text as an archive inside the archive.
        if (nestedArchives < 2)
            decodeEverything(QWKeyedUnarchiver::parse(value.toData()).root, nestedArchives + 1);
        break;
    default:
        value.toDate();
        break;
    }
}

// What the registry does with the bytes of a Themes.db, then what the rest of the program
// asks of the themes it got.
void readAsThemes(const QByteArray &bytes)
{
    const SNThemeManager::Contents contents = SNThemeManager::contentsOfData(bytes);
    if (!contents.themes)
        return;
    for (const std::shared_ptr<SNUserTheme> &theme : *contents.themes) {
        theme->saveName();
        theme->description();
        theme->defaultFont().toQFont();
        theme->startColor().qw_luminosity();
        theme->setStartColor(theme->endColor());
    }
}

} // namespace

// Themes look up fonts, which needs the application object.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    decodeEverything(QWKeyedUnarchiver::parse(bytes).root, 0);
    readAsThemes(bytes);
    return 0;
}
