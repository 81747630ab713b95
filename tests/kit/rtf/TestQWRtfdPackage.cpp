#include "../QWRichTextDump.h"
#include "kit/rtf/QWRtfdPackage.h"
#include "support/QWTestImages.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

namespace {

using A = QWTextAttributes;
using Error = QWRtfReadResult::Error;

A attachment(const QByteArray &bytes, const QString &name)
{
    A attributes;
    attributes.setAttachment(bytes);
    attributes.setAttachmentFileName(name);
    return attributes;
}

} // namespace

class TestQWRtfdPackage final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roundTrip()
    {
        const QByteArray red = imageFileBytes(Qt::red, QSize(4, 4), "PNG");
        const QByteArray blue = imageFileBytes(Qt::blue, QSize(4, 4), "JPEG");
        // Names are made unique, without regard to case, kept inside the package and away
        // from the text file.
        const QList<std::pair<A, QString>> attachments {
            { attachment(red, u"photo.png"_s), u"photo.png"_s },
            { attachment(blue, u"Photo.PNG"_s), u"Photo 2.PNG"_s },
            { attachment(blue, QString()), u"Attachment.jpg"_s },
            { attachment(red, u"txt.rtf"_s), u"txt 2.rtf"_s },
            { attachment(red, u"../../escape.png"_s), u"escape.png"_s },
            { attachment(red, u"photo.png"_s), u"photo 3.png"_s },
            { attachment(red, u".hidden"_s), u"Attachment.png"_s },
        };
        QWMutableAttributedString text(QWAttributedString(u"Pictures:\n"_s));
        QWMutableAttributedString expected = text;
        QStringList files { QWRtfdPackage::textFileName() };
        for (const auto &[attributes, name] : attachments) {
            text.appendString(u"\uFFFC"_s, attributes);
            text.appendString(u" and "_s);
            expected.appendString(u"\uFFFC"_s, attachment(attributes.attachment(), name));
            expected.appendString(u" and "_s);
            files.append(name);
        }
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"Note.rtfd"_s);
        QVERIFY(QWRtfdPackage::write(text.attributedString(), path));
        files.sort();
        QCOMPARE(QDir(path).entryList(QDir::Files | QDir::Hidden, QDir::Name), files);
        for (const auto &[attributes, name] : attachments)
            QCOMPARE(fileBytes(QDir(path).filePath(name)), attributes.attachment());

        QCOMPARE(QWRtfdPackage::read(path).text, expected.attributedString());
        // Writing again into the same package gives the same text.
        QVERIFY(QWRtfdPackage::write(QWRtfdPackage::read(path).text, path));
        QCOMPARE(QWRtfdPackage::read(path).text, expected.attributedString());
    }

    // data/package.rtfd as written by hand, and package.txt, what it reads as.
    void readsPackageWrittenByHand()
    {
        const QWRtfReadResult read
            = QWRtfdPackage::read(QStringLiteral(VELLUMO_TEST_DATA_DIR "/package.rtfd"));
        QCOMPARE(read.error, Error::None);
        QWRichTextDump::compareWithFile(QStringLiteral(VELLUMO_TEST_DATA_DIR "/package.txt"),
            QWRichTextDump::describe(read.text).toUtf8());
    }

    // Only image files right inside the package are read; other images become PNG.
    void readsOnlyImagesInThePackage()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"p.rtfd"_s);
        QVERIFY(QDir().mkpath(path + u"/sub"_s));
        const QByteArray png = imageFileBytes(Qt::red, QSize(4, 4), "PNG");
        QVERIFY(writeFile(folder.filePath(u"outside.png"_s), png));
        QVERIFY(writeFile(path + u"/sub/inside.png"_s, png));
        QVERIFY(writeFile(path + u"/notes.txt"_s, "just text"));
        QVERIFY(writeFile(path + u"/empty.png"_s, QByteArray()));
        QVERIFY(writeFile(path + u"/green.bmp"_s, imageFileBytes(Qt::green, QSize(4, 4), "BMP")));
        QVERIFY(QFile::link(folder.filePath(u"outside.png"_s), path + u"/link.png"_s));
        QByteArray rtf = "{\\rtf1\\ansi ";
        for (const char *name : { "../outside.png", "sub/inside.png", "missing.png", "notes.txt",
                 "empty.png", "link.png", "sub", "..", "green.bmp" })
            rtf += "[{{\\NeXTGraphic " + QByteArray(name) + " \\width80 \\height80}\\'ac}]";
        QVERIFY(writeFile(path + u"/TXT.rtf"_s, rtf + '}'));

        const QWRtfReadResult read = QWRtfdPackage::read(path);
        QCOMPARE(read.error, Error::None);
        QCOMPARE(read.text.string(), u"[][][][][][][][][\uFFFC]"_s);
        const A image = read.text.attributesAtIndex(read.text.length() - 2);
        QCOMPARE(QImage::fromData(image.attachment(), "PNG").pixelColor(1, 1), QColor(Qt::green));
        QCOMPARE(image.attachmentFileName(), u"green.bmp"_s);
    }

    void failures()
    {
        const QTemporaryDir folder;
        QCOMPARE(QWRtfdPackage::read(folder.filePath(u"missing.rtfd"_s)).error, Error::Unreadable);
        QCOMPARE(QWRtfdPackage::read(folder.path()).error, Error::Unreadable);
        QVERIFY(writeFile(folder.filePath(u"TXT.rtf"_s), "not rtf"));
        QCOMPARE(QWRtfdPackage::read(folder.path()).error, Error::NotRtf);

        // A package cannot be made below a file.
        QVERIFY(writeFile(folder.filePath(u"file"_s), "x"));
        QString error;
        QVERIFY(!QWRtfdPackage::write(
            QWAttributedString(u"x"_s), folder.filePath(u"file/p.rtfd"_s), &error));
        QVERIFY(!error.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestQWRtfdPackage)
#include "TestQWRtfdPackage.moc"
