#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class QTemporaryFile;
struct ca_context;

// A short sound made from the bytes of a WAVE file, played through the desktop's event-sound
// library. Nothing is set up until the first play, so a sound that is never played costs only
// its bytes. Where there is no audio device, or the bytes are no usable WAVE file, playing is
// silent: the reason goes to the log once, and nobody is bothered with it.
class QWSound final
{
public:
    explicit QWSound(const QByteArray &waveData);
    ~QWSound();
    QWSound(const QWSound &) = delete;
    QWSound &operator=(const QWSound &) = delete;

    const QByteArray &data() const { return m_data; }

    // Starts the sound (from the start, if it is still playing) and returns at once. False
    // when it stays silent; errorString() then says why.
    bool play();
    QString errorString() const { return m_errorString; }

    // The private file the library plays from, written on first play: the WAVE bytes made
    // playable (see QWWaveFile). Empty until then, or when they could not be written.
    QString fileName() const;

private:
    bool prepareFile();
    bool prepareContext();
    void fail(const QString &reason);

    QByteArray m_data;
    std::unique_ptr<QTemporaryFile> m_file;
    ca_context *m_context = nullptr;
    bool m_unplayable = false;
    QString m_errorString;
};
