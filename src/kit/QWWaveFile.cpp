#include "kit/QWWaveFile.h"

#include <QtEndian>

namespace {

constexpr qsizetype riffHeaderSize = 12; // "RIFF", size, "WAVE"
constexpr qsizetype chunkHeaderSize = 8; // id, size
constexpr qsizetype pcmFormatSize = 16;

quint32 readSize(const QByteArray &bytes, qsizetype offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

void writeSize(QByteArray &bytes, qsizetype offset, quint32 size)
{
    qToLittleEndian<quint32>(size, bytes.data() + offset);
}

QWWaveFile::Result failure(const QString &reason)
{
    QWWaveFile::Result result;
    result.errorString = reason;
    return result;
}

} // namespace

QWWaveFile::Result QWWaveFile::playableData(const QByteArray &wave)
{
    if (wave.size() < riffHeaderSize || !wave.startsWith("RIFF")
        || wave.mid(8, 4) != QByteArrayView("WAVE"))
        return failure(QStringLiteral("not a RIFF WAVE file"));

    bool hasFormat = false;
    qsizetype blockAlign = 1;
    qsizetype offset = riffHeaderSize;
    while (offset + chunkHeaderSize <= wave.size()) {
        const QByteArray id = wave.mid(offset, 4);
        const quint32 declared = readSize(wave, offset + 4);
        const qsizetype bodyStart = offset + chunkHeaderSize;
        const qsizetype present = wave.size() - bodyStart;

        if (id == "fmt ") {
            if (declared < pcmFormatSize || present < pcmFormatSize)
                return failure(QStringLiteral("the format chunk is too short"));
            hasFormat = true;
            blockAlign
                = qMax<qsizetype>(1, qFromLittleEndian<quint16>(wave.constData() + bodyStart + 12));
        } else if (id == "data") {
            if (!hasFormat)
                return failure(QStringLiteral("the data chunk comes before the format chunk"));
            Result result;
            if (qsizetype(declared) <= present) {
                // Whole: the file is played as it is, whatever follows the samples.
                result.data = wave;
                return result;
            }
            // Cut short: keep the whole sample frames that are present and say so in the headers.
            const qsizetype kept = present - present % blockAlign;
            result.data = wave.left(bodyStart + kept);
            writeSize(result.data, offset + 4, quint32(kept));
            writeSize(result.data, 4, quint32(result.data.size() - 8));
            result.wasTruncated = true;
            return result;
        }
        // Chunks are padded to an even length.
        const qsizetype next = bodyStart + qsizetype(declared) + (declared & 1);
        if (next > wave.size())
            break;
        offset = next;
    }
    return failure(hasFormat ? QStringLiteral("there is no data chunk")
                             : QStringLiteral("there is no format chunk"));
}
