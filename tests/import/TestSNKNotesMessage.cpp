#include "import/SNKNotesMessage.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the golden cases cannot hold: a rich note read where there is no GUI application, as
// here (the golden test has one, as the importer does).
class TestSNKNotesMessage final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsRichNotesWithoutGuiApplication();
};

void TestSNKNotesMessage::readsRichNotesWithoutGuiApplication()
{
    // Qt's HTML reader would ask the missing application for the fixed-width font of <tt>.
    const SNImportReadResult result = SNKNotesMessage::read(
        "Subject: T\nContent-Type: text/html\n\n<html><head><style>p { }</style></head><body>"
        "<p>a &amp; <tt>b</tt></p><p>c&#233;&#x2603;</p></body></html>\n",
        u"1.R1.host"_s, QDateTime::currentDateTimeUtc());
    QCOMPARE(result.notes.size(), 1);
    QCOMPARE(result.notes.first().text.string(), u"T\na & b\ncé☃"_s);
}

QTEST_APPLESS_MAIN(TestSNKNotesMessage)
#include "TestSNKNotesMessage.moc"
