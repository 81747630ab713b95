#include "kit/QWWaveFile.h"
#include "secret/QWSound.h"
#include "secret/QWSuperSecret.h"
#include "support/QWTestEnvironment.h"
#include "support/QWTestFiles.h"

#include <QDataStream>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <QtEndian>

using namespace Qt::Literals::StringLiterals;

namespace {

// 16-bit mono at 44.1 kHz; the data chunk declares `declared` bytes and holds `present`.
QByteArray wave(quint32 declared, int present, const QByteArray &extraChunk = {})
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(QDataStream::LittleEndian);
    out.writeRawData("RIFF", 4);
    out << quint32(36 + extraChunk.size() + declared);
    out.writeRawData("WAVEfmt ", 8);
    out << quint32(16) << quint16(1) << quint16(1) << quint32(44100) << quint32(88200) << quint16(2)
        << quint16(16);
    out.writeRawData(extraChunk.constData(), int(extraChunk.size()));
    out.writeRawData("data", 4);
    out << declared;
    out.writeRawData(QByteArray(present, '\x25').constData(), present);
    return bytes;
}

} // namespace

// Making WAVE bytes playable, a file cut short included, and playing them where there may be
// no audio device at all.
class TestQWSound final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherReaderFindsTheSamplesThereAre_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("read"); // channels, bytes a sample, rate, frames; or refused
        QTest::newRow("whole") << wave(1000, 1000) << u"1 2 44100 500"_s;
        // Odd-sized, so padded.
        QTest::newRow("another chunk first")
            << wave(100, 100, QByteArray("LIST\x03\0\0\0abc\0", 12)) << u"1 2 44100 50"_s;
        QTest::newRow("the program's own") << QWSuperSecret::bytesFromHexString(
            QWSuperSecret::dontEvenAsk()) << u"1 2 44100 19845"_s;
        // Cut short: the last of the samples present is half a sample.
        QTest::newRow("cut short") << wave(43672, 39671) << u"1 2 44100 19835"_s;
        const QByteArray good = wave(100, 100);
        QTest::newRow("empty") << QByteArray() << u"refused"_s;
        QTest::newRow("not RIFF") << QByteArray("OggS").append(good.mid(4)) << u"refused"_s;
        QTest::newRow("RIFF, not WAVE") << QByteArray(good).replace(8, 4, "AVI ") << u"refused"_s;
        QTest::newRow("header only") << good.left(12) << u"refused"_s;
        QTest::newRow("no data chunk") << good.left(36) << u"refused"_s;
        QTest::newRow("data before format")
            << QByteArray("RIFF\0\0\0\0WAVEdata\0\0\0\0", 20) << u"refused"_s;
        QByteArray huge = good;
        qToLittleEndian(quint32(0xFFFFFFF0), huge.data() + 16); // a format chunk past the end
        QTest::newRow("chunk past the end") << huge << u"refused"_s;
    }

    // Python's own WAVE reader trusts the headers: it must find exactly the samples present.
    void anotherReaderFindsTheSamplesThereAre()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, read);
        const QWWaveFile::Result result = QWWaveFile::playableData(bytes);
        QCOMPARE(result.errorString.isEmpty(), read != u"refused");
        QCOMPARE(result.data.isEmpty(), read == u"refused");
        if (read == u"refused")
            return;
        // Headers repaired only when cut short; samples untouched.
        QCOMPARE(result.data == bytes, !result.wasTruncated);
        QCOMPARE(result.data.mid(44), bytes.mid(44, result.data.size() - 44));
        QProcess python;
        python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
            { u"-c"_s,
                u"import io, sys, wave\n"
                "w = wave.open(io.BytesIO(sys.stdin.buffer.read()))\n"
                "frames = w.readframes(w.getnframes())\n"
                "assert len(frames) == w.getnframes() * w.getsampwidth()\n"
                "print(w.getnchannels(), w.getsampwidth(), w.getframerate(), w.getnframes())"_s });
        python.write(result.data);
        python.closeWriteChannel();
        QVERIFY(python.waitForFinished(60000));
        QVERIFY2(python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0,
            qPrintable(QString::fromUtf8(python.readAllStandardError())));
        QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()).trimmed(), read);
    }

    // From a private file holding the repaired bytes, made when first needed and gone with the
    // sound. Without an audio device the sound is silent and says why; both are fine.
    void playsFromAPrivateFileOrIsSilentWithoutError()
    {
        const QByteArray truncated = wave(43672, 39670);
        QString fileName;
        {
            QWSound sound(truncated);
            QVERIFY(sound.fileName().isEmpty());
            const bool played = sound.play();
            QCOMPARE(played, sound.errorString().isEmpty());
            fileName = sound.fileName();
            QCOMPARE(fileBytes(fileName), QWWaveFile::playableData(truncated).data);
            QVERIFY(!(QFile::permissions(fileName) & (QFile::ReadGroup | QFile::ReadOther)));
        }
        QVERIFY(!QFile::exists(fileName));

        QWSound unusable(QByteArray("not a sound at all"));
        QVERIFY(
            !unusable.play() && !unusable.errorString().isEmpty() && unusable.fileName().isEmpty());
    }

private:
    QWTestEnvironment m_environment;
};

QTEST_GUILESS_MAIN(TestQWSound)
#include "TestQWSound.moc"
