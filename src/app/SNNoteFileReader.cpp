#include "app/SNNoteFileReader.h"

#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfdPackage.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

namespace {

std::optional<QWAttributedString> plainText(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    // Binary files decode with errors or carry NUL bytes; neither is a note.
    if (decoder.hasError() || text.contains(QChar(0)))
        return std::nullopt;
    return QWAttributedString(text);
}

} // namespace

std::optional<QWAttributedString> SNNoteFileReader::attributedStringWithContentsOfPath(
    const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir()) {
        const QWRtfReadResult package = QWRtfdPackage::read(path);
        if (package.error == QWRtfReadResult::Error::Unreadable
            || package.error == QWRtfReadResult::Error::NotRtf)
            return std::nullopt;
        return package.text;
    }

    QFile file(path);
    if (info.size() > maximumFileSize || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.read(maximumFileSize);
    if (QWRtfReader::isRtf(bytes))
        // A damaged document still gives what could be read of it.
        return QWRtfReader().read(bytes).text;
    return plainText(bytes);
}
