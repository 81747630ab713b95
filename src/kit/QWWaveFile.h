#pragma once

#include <QByteArray>
#include <QString>

// Reads the chunk layout of a RIFF WAVE file and makes it playable as it stands. A file whose
// data chunk holds fewer bytes than its header declares (a file cut short) keeps the samples it
// has: the sizes in its headers are set to what is present, so players that trust them neither
// stop with an error nor read past the end.
class QWWaveFile final
{
public:
    QWWaveFile() = delete;

    struct Result
    {
        QByteArray data; // empty when the bytes are no WAVE file
        QString errorString;
        bool wasTruncated = false;
    };

    static Result playableData(const QByteArray &wave);
};
