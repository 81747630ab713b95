#include "kit/QWWaveFile.h"
#include "secret/QWSound.h"
#include "secret/QWSuperSecret.h"
#include "support/QWTestEnvironment.h"

#include <QDataStream>
#include <QFile>
#include <QProcess>
#include <QTest>
#include <QtEndian>

// Making WAVE bytes playable, a file cut short included, and playing them where there may be
// no audio device at all.
class TestQWSound final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherReaderFindsTheSamplesThereAre_data();
    void anotherReaderFindsTheSamplesThereAre();
    void bytesThatAreNoWaveFileAreRefused_data();
    void bytesThatAreNoWaveFileAreRefused();
    void playsFromAPrivateFileOrIsSilentWithoutError();

private:
    // 16-bit mono at 44.1 kHz; the data chunk declares `declared` bytes and holds `present`.
    static QByteArray wave(quint32 declared, int present, const QByteArray &extraChunk = {});

    QWTestEnvironment m_environment;
};

QByteArray TestQWSound::wave(quint32 declared, int present, const QByteArray &extraChunk)
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
    for (int i = 0; i < present; ++i)
        out << quint8((i * 37) & 0x7F);
    return bytes;
}

void TestQWSound::anotherReaderFindsTheSamplesThereAre_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("truncated");
    QTest::addColumn<QString>("read"); // channels, bytes a sample, rate, frames
    QTest::newRow("whole") << wave(1000, 1000) << false << QStringLiteral("1 2 44100 500");
    // Odd-sized, so padded.
    QTest::newRow("another chunk first") << wave(100, 100, QByteArray("LIST\x03\0\0\0abc\0", 12))
                                         << false << QStringLiteral("1 2 44100 50");
    QTest::newRow("the program's own")
        << QWSuperSecret::bytesFromHexString(QWSuperSecret::dontEvenAsk()) << false
        << QStringLiteral("1 2 44100 19845");
    // The last of the samples present is half a sample.
    QTest::newRow("cut short") << wave(43672, 39671) << true << QStringLiteral("1 2 44100 19835");
    QTest::newRow("headers only") << wave(43672, 0) << true << QStringLiteral("1 2 44100 0");
}

void TestQWSound::anotherReaderFindsTheSamplesThereAre()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, truncated);
    QFETCH(QString, read);
    const QWWaveFile::Result result = QWWaveFile::playableData(bytes);
    QVERIFY(result.errorString.isEmpty());
    QCOMPARE(result.wasTruncated, truncated);
    if (!truncated)
        QCOMPARE(result.data, bytes);
    // Format and samples untouched.
    QCOMPARE(result.data.mid(8, 32), bytes.mid(8, 32));
    QCOMPARE(result.data.mid(44), bytes.mid(44, result.data.size() - 44));
    // Python's own WAVE reader trusts the headers: it must find exactly the samples present.
    QProcess python;
    python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
        { QStringLiteral("-c"),
            QStringLiteral("import io, sys, wave\n"
                           "w = wave.open(io.BytesIO(sys.stdin.buffer.read()))\n"
                           "frames = w.readframes(w.getnframes())\n"
                           "assert len(frames) == w.getnframes() * w.getsampwidth()\n"
                           "print(w.getnchannels(), w.getsampwidth(), w.getframerate(), "
                           "w.getnframes())") });
    python.write(result.data);
    python.closeWriteChannel();
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0,
        qPrintable(QString::fromUtf8(python.readAllStandardError())));
    QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()).trimmed(), read);
}

void TestQWSound::bytesThatAreNoWaveFileAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray good = wave(100, 100);
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not RIFF") << QByteArray("OggS").append(good.mid(4));
    QTest::newRow("RIFF, not WAVE") << QByteArray(good).replace(8, 4, "AVI ");
    QTest::newRow("header only") << good.left(12);
    QTest::newRow("format cut short") << good.left(30);
    QTest::newRow("no data chunk") << good.left(36);
    QTest::newRow("data before format") << QByteArray("RIFF\0\0\0\0WAVEdata\0\0\0\0", 20);
    QByteArray huge = good;
    qToLittleEndian(quint32(0xFFFFFFF0), huge.data() + 16); // a format chunk past the end
    QTest::newRow("chunk past the end") << huge;
}

void TestQWSound::bytesThatAreNoWaveFileAreRefused()
{
    QFETCH(QByteArray, bytes);
    const QWWaveFile::Result result = QWWaveFile::playableData(bytes);
    QVERIFY(result.data.isEmpty());
    QVERIFY(!result.errorString.isEmpty());
}

void TestQWSound::playsFromAPrivateFileOrIsSilentWithoutError()
{
    const QByteArray truncated = wave(43672, 39670);
    QString fileName;
    {
        QWSound sound(truncated);
        QVERIFY(sound.fileName().isEmpty()); // nothing made before it is needed
        // Without an audio device the sound is silent and says why; both are fine.
        const bool played = sound.play();
        QCOMPARE(played, sound.errorString().isEmpty());

        // Played from a private file holding the repaired bytes, which goes with the sound.
        fileName = sound.fileName();
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QWWaveFile::playableData(truncated).data);
        QVERIFY(!(file.permissions() & (QFile::ReadGroup | QFile::ReadOther)));
    }
    QVERIFY(!QFile::exists(fileName));

    QWSound unusable(QByteArray("not a sound at all"));
    QVERIFY(!unusable.play());
    QVERIFY(!unusable.errorString().isEmpty());
    QVERIFY(unusable.fileName().isEmpty());
}

QTEST_GUILESS_MAIN(TestQWSound)
#include "TestQWSound.moc"
