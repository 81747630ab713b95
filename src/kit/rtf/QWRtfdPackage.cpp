#include "kit/rtf/QWRtfdPackage.h"

#include "kit/rtf/QWRtfPicture.h"
#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>
#include <QSet>

#include <optional>

namespace {

// Names longer than this are shortened, well below the 255 bytes file systems allow.
constexpr qsizetype maximumBaseNameLength = 100;

std::optional<QByteArray> readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > QWRtfdPackage::maximumFileSize)
        return std::nullopt;
    return file.read(QWRtfdPackage::maximumFileSize);
}

// A file the text names must be a plain file right in the package.
bool isFileInPackage(const QString &folder, const QString &name)
{
    if (name.isEmpty() || name == u"." || name == u".." || name.contains(u'/')
        || name.contains(QChar(0)))
        return false;
    const QFileInfo info(QDir(folder).filePath(name));
    return info.isFile() && !info.isSymLink();
}

// A safe, unique file name for an attachment: no path, no control characters, not the text
// file, and different from every earlier name even where case does not count.
class AttachmentNames final
{
public:
    QString nameFor(const QWTextAttributes &attachment)
    {
        QString name = QFileInfo(attachment.attachmentFileName()).fileName();
        name.removeIf([](QChar c) { return c.category() == QChar::Other_Control; });
        name = name.trimmed();
        QString suffix = QFileInfo(name).suffix();
        QString base = suffix.isEmpty() ? name : name.chopped(suffix.size() + 1);
        if (base.isEmpty() || base.startsWith(u'.')) {
            base = QStringLiteral("Attachment");
            suffix = defaultSuffix(attachment.attachment());
        }
        base.truncate(maximumBaseNameLength);
        suffix.truncate(maximumBaseNameLength);
        const QString dotSuffix = suffix.isEmpty() ? QString() : u'.' + suffix;
        name = base + dotSuffix;
        for (int number = 2; m_used.contains(name.toCaseFolded()); ++number)
            name = base + u' ' + QString::number(number) + dotSuffix;
        m_used.insert(name.toCaseFolded());
        m_files.insert(name, attachment.attachment());
        return name;
    }

    const QHash<QString, QByteArray> &files() const { return m_files; }

private:
    static QString defaultSuffix(const QByteArray &bytes)
    {
        switch (QWRtfPicture::formatOf(bytes)) {
        case QWRtfPicture::Format::Png:
            return QStringLiteral("png");
        case QWRtfPicture::Format::Jpeg:
            return QStringLiteral("jpg");
        case QWRtfPicture::Format::Unknown:
            break;
        }
        return {};
    }

    QSet<QString> m_used { QWRtfdPackage::textFileName().toCaseFolded() };
    QHash<QString, QByteArray> m_files;
};

bool writeFile(const QString &path, const QByteArray &bytes, QString *errorString)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    if (errorString)
        *errorString = file.errorString();
    return false;
}

} // namespace

QWRtfReadResult QWRtfdPackage::read(const QString &path)
{
    const std::optional<QByteArray> rtf = readFile(QDir(path).filePath(textFileName()));
    if (!rtf)
        return { QWAttributedString(), QWRtfReadResult::Error::Unreadable };

    // A text may name one file many times; it is read once and shared.
    QHash<QString, QByteArray> loaded;
    QWRtfReader reader;
    reader.setAttachmentLoader([&path, &loaded](const QString &name) -> QByteArray {
        if (const auto found = loaded.constFind(name); found != loaded.cend())
            return *found;
        QByteArray bytes;
        if (isFileInPackage(path, name))
            bytes = QWRtfPicture::embeddable(
                readFile(QDir(path).filePath(name)).value_or(QByteArray()));
        loaded.insert(name, bytes);
        return bytes;
    });
    return reader.read(*rtf);
}

bool QWRtfdPackage::write(const QWAttributedString &text, const QString &path, QString *errorString)
{
    if (!QDir().mkpath(path)) {
        if (errorString)
            *errorString = QStringLiteral("Could not create the folder %1").arg(path);
        return false;
    }
    AttachmentNames names;
    QWRtfWriter writer;
    writer.setAttachmentNamer(
        [&names](const QWTextAttributes &attachment) { return names.nameFor(attachment); });
    const QByteArray rtf = writer.write(text);

    const QDir folder(path);
    if (!writeFile(folder.filePath(textFileName()), rtf, errorString))
        return false;
    for (auto file = names.files().cbegin(); file != names.files().cend(); ++file) {
        if (!writeFile(folder.filePath(file.key()), file.value(), errorString))
            return false;
    }
    return true;
}
