#include "secret/QWSound.h"

#include "kit/QWWaveFile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QTemporaryFile>

#include <canberra.h>

namespace {

// One sound at a time: a new play cuts the last one short rather than piling up on it.
constexpr uint32_t playbackID = 1;

} // namespace

QWSound::QWSound(const QByteArray &waveData) : m_data(waveData) { }

QWSound::~QWSound()
{
    if (m_context)
        ca_context_destroy(m_context);
}

QString QWSound::fileName() const
{
    return m_file ? m_file->fileName() : QString();
}

void QWSound::fail(const QString &reason)
{
    if (reason != m_errorString)
        qWarning().noquote() << QStringLiteral("[DEBUG] The sound stays silent: %1").arg(reason);
    m_errorString = reason;
}

bool QWSound::prepareFile()
{
    if (m_file)
        return true;
    if (m_unplayable)
        return false;
    const QWWaveFile::Result wave = QWWaveFile::playableData(m_data);
    if (wave.data.isEmpty()) {
        m_unplayable = true;
        fail(wave.errorString);
        return false;
    }
    // The library reads sounds from files. The file is readable by its owner only and goes
    // when the sound does.
    auto file = std::make_unique<QTemporaryFile>(
        QDir::temp().filePath(QStringLiteral("vellumo-sound-XXXXXX.wav")));
    if (!file->open() || file->write(wave.data) != wave.data.size() || !file->flush()) {
        fail(QStringLiteral("could not write %1: %2").arg(file->fileName(), file->errorString()));
        return false;
    }
    file->close();
    m_file = std::move(file);
    return true;
}

bool QWSound::prepareContext()
{
    if (m_context)
        return true;
    ca_context *context = nullptr;
    if (const int error = ca_context_create(&context); error != CA_SUCCESS) {
        fail(QString::fromUtf8(ca_strerror(error)));
        return false;
    }
    const QByteArray name = QCoreApplication::applicationName().toUtf8();
    ca_context_change_props(context, CA_PROP_APPLICATION_NAME, name.constData(), nullptr);
    m_context = context;
    return true;
}

bool QWSound::play()
{
    if (!prepareFile() || !prepareContext())
        return false;
    ca_context_cancel(m_context, playbackID);
    const QByteArray path = QFile::encodeName(m_file->fileName());
    const int error = ca_context_play(m_context, playbackID, CA_PROP_MEDIA_FILENAME,
        path.constData(), CA_PROP_MEDIA_ROLE, "event", nullptr);
    if (error != CA_SUCCESS) {
        fail(QString::fromUtf8(ca_strerror(error)));
        return false;
    }
    m_errorString.clear();
    return true;
}
