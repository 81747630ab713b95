#include "kit/QWWaveFile.h"
#include "secret/QWSound.h"
#include "secret/QWSuperSecret.h"
#include "support/QWTestEnvironment.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

// Making WAVE bytes playable, a file cut short included, and playing them where there may be
// no audio device at all.
class TestQWSound final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeFilesAreKeptAsTheyAre();
    void aDataChunkCutShortKeepsTheSamplesItHas();
    void bytesThatAreNoWaveFileAreRefused_data();
    void bytesThatAreNoWaveFileAreRefused();
    void anotherReaderAgreesWithTheRepairedHeaders();
    void aTruncatedFilePlaysOrIsSilentWithoutError();
    void unusableBytesAreSilent();

private:
    // 16-bit mono at 44.1 kHz; the data chunk declares `declared` bytes and holds `present`.
    static QByteArray wave(quint32 declared, int present, const QByteArray &extraChunk = {});
    static quint32 u32(const QByteArray &bytes, int offset)
    {
        return qFromLittleEndian<quint32>(bytes.constData() + offset);
    }

    QWTestEnvironment m_environment;
};

QByteArray TestQWSound::wave(quint32 declared, int present, const QByteArray &extraChunk)
{
    QByteArray bytes("RIFF....WAVEfmt ");
    const auto append32 = [&bytes](quint32 value) {
        char raw[4];
        qToLittleEndian(value, raw);
        bytes.append(raw, 4);
    };
    const auto append16 = [&bytes](quint16 value) {
        char raw[2];
        qToLittleEndian(value, raw);
        bytes.append(raw, 2);
    };
    append32(16);
    append16(1);
    append16(1);
    append32(44100);
    append32(88200);
    append16(2);
    append16(16);
    bytes.append(extraChunk);
    bytes.append("data");
    append32(declared);
    for (int i = 0; i < present; ++i)
        bytes.append(char((i * 37) & 0x7F));
    qToLittleEndian(quint32(36 + extraChunk.size() + declared), bytes.data() + 4);
    return bytes;
}

void TestQWSound::wholeFilesAreKeptAsTheyAre()
{
    const QByteArray whole = wave(1000, 1000);
    QWWaveFile::Result result = QWWaveFile::playableData(whole);
    QCOMPARE(result.data, whole);
    QVERIFY(!result.wasTruncated);

    // A chunk of another kind before the data (odd-sized, so padded) is stepped over.
    const QByteArray withList = wave(100, 100, QByteArray("LIST\x03\0\0\0abc\0", 12));
    result = QWWaveFile::playableData(withList);
    QCOMPARE(result.data, withList);

    // So is the program's own sound.
    const QByteArray own = QWSuperSecret::bytesFromHexString(QWSuperSecret::dontEvenAsk());
    QCOMPARE(QWWaveFile::playableData(own).data, own);
}

void TestQWSound::aDataChunkCutShortKeepsTheSamplesItHas()
{
    // The headers claim 43,672 bytes of samples; 39,671 follow, the last of them half a sample.
    const QByteArray truncated = wave(43672, 39671);
    const QWWaveFile::Result result = QWWaveFile::playableData(truncated);
    QVERIFY(result.wasTruncated);
    QVERIFY(result.errorString.isEmpty());
    QCOMPARE(result.data.size(), 44 + 39670);
    QCOMPARE(u32(result.data, 40), 39670u);
    QCOMPARE(u32(result.data, 4), quint32(result.data.size() - 8));
    // Format and samples untouched.
    QCOMPARE(result.data.mid(8, 32), truncated.mid(8, 32));
    QCOMPARE(result.data.mid(44), truncated.mid(44, 39670));

    // Headers only: a valid file of no sound.
    const QWWaveFile::Result empty = QWWaveFile::playableData(wave(43672, 0));
    QCOMPARE(empty.data.size(), 44);
    QCOMPARE(u32(empty.data, 40), 0u);
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

void TestQWSound::anotherReaderAgreesWithTheRepairedHeaders()
{
    // Python's own WAVE reader trusts the headers: it must find exactly the samples present.
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const struct
    {
        QString name;
        QByteArray bytes;
        QString expected;
    } files[] = {
        { QStringLiteral("cut.wav"), QWWaveFile::playableData(wave(43672, 39671)).data,
            QStringLiteral("1 2 44100 19835") },
        { QStringLiteral("own.wav"),
            QWWaveFile::playableData(
                QWSuperSecret::bytesFromHexString(QWSuperSecret::dontEvenAsk()))
                .data,
            QStringLiteral("1 2 44100 19845") },
    };
    for (const auto &file : files) {
        const QString path = folder.filePath(file.name);
        QFile output(path);
        QVERIFY(output.open(QIODevice::WriteOnly));
        output.write(file.bytes);
        output.close();

        QProcess python;
        python.start(QStringLiteral(VELLUMO_SYSTEM_PYTHON),
            { QStringLiteral("-c"),
                QStringLiteral("import sys, wave\n"
                               "w = wave.open(sys.argv[1])\n"
                               "frames = w.readframes(w.getnframes())\n"
                               "assert len(frames) == w.getnframes() * w.getsampwidth()\n"
                               "print(w.getnchannels(), w.getsampwidth(), w.getframerate(), "
                               "w.getnframes())"),
                path });
        QVERIFY(python.waitForFinished(60000));
        QVERIFY2(python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0,
            qPrintable(QString::fromUtf8(python.readAllStandardError())));
        QCOMPARE(QString::fromUtf8(python.readAllStandardOutput()).trimmed(), file.expected);
    }
}

void TestQWSound::aTruncatedFilePlaysOrIsSilentWithoutError()
{
    const QByteArray truncated = wave(43672, 39670);
    QString fileName;
    {
        QWSound sound(truncated);
        QCOMPARE(sound.data(), truncated);
        QVERIFY(sound.fileName().isEmpty()); // nothing made before it is needed

        // Without an audio device the sound is silent and says why; both are fine.
        const bool played = sound.play();
        QCOMPARE(played, sound.errorString().isEmpty());
        QVERIFY(sound.play() || !sound.errorString().isEmpty());

        // Played from a private file holding the repaired bytes.
        fileName = sound.fileName();
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QWWaveFile::playableData(truncated).data);
        QVERIFY(!(file.permissions() & (QFile::ReadGroup | QFile::ReadOther)));
    }
    QVERIFY(!QFile::exists(fileName));
}

void TestQWSound::unusableBytesAreSilent()
{
    QWSound sound(QByteArray("not a sound at all"));
    QVERIFY(!sound.play());
    QVERIFY(!sound.errorString().isEmpty());
    QVERIFY(sound.fileName().isEmpty());
    // Asking again changes nothing.
    QVERIFY(!sound.play());
}

QTEST_GUILESS_MAIN(TestQWSound)
#include "TestQWSound.moc"
