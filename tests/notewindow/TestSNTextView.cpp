#include "SNNoteWindowTestSupport.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace {

// Bold, italic and underline, as "biu" with a capital where the character has it.
QString traitsAt(QTextEdit &view, int position)
{
    const QTextCharFormat format = formatAt(*view.document(), position);
    return QString(format.fontWeight() >= QFont::Bold ? u'B' : u'b')
        + (format.fontItalic() ? u'I' : u'i')
        + (format.underlineStyle() == QTextCharFormat::SingleUnderline ? u'U' : u'u');
}

} // namespace

// The note editor: the formatting keys, pasting and the scroller. The rest of editing is
// QTextEdit's own.
class TestSNTextView final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void formattingKeysToggleTheSelection_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QString>("traits");
        QTest::newRow("bold") << Qt::Key_B << u"Biu"_s;
        QTest::newRow("italic") << Qt::Key_I << u"bIu"_s;
        QTest::newRow("underline") << Qt::Key_U << u"biU"_s;
    }

    void formattingKeysToggleTheSelection()
    {
        QFETCH(Qt::Key, key);
        QFETCH(QString, traits);
        SNTextView view;
        view.setPlainText(u"make this bold"_s);
        select(&view, 10, 14);

        QTest::keyClick(&view, key, Qt::ControlModifier);
        QCOMPARE(traitsAt(view, 12), traits);
        QCOMPARE(traitsAt(view, 2), u"biu"_s);
        // A second press takes it away again.
        QTest::keyClick(&view, key, Qt::ControlModifier);
        QCOMPARE(traitsAt(view, 12), u"biu"_s);

        // Read only, as a collapsed note is, the keys do nothing.
        view.setReadOnly(true);
        QTest::keyClick(&view, key, Qt::ControlModifier);
        QCOMPARE(traitsAt(view, 12), u"biu"_s);
    }

    void pastedTextTakesTheNotesFamilyInOneUndoStep()
    {
        SNTextView view;
        QTest::keyClicks(&view, u"Note: "_s);
        auto mime = std::make_unique<QMimeData>();
        mime->setHtml(
            u"<span style=\"font-family:'Courier'; font-size:20pt; font-weight:700\">pasted</span>"_s);
        mime->setText(u"pasted"_s);
        // The clipboard owns what it holds.
        QApplication::clipboard()->setMimeData(mime.release(), QClipboard::Clipboard);
        QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
        QApplication::clipboard()->clear();

        QCOMPARE(view.toPlainText(), u"Note: pasted"_s);
        const QTextCharFormat pasted = formatAt(*view.document(), 7);
        QVERIFY(!pasted.hasProperty(QTextFormat::FontFamilies));
        QVERIFY(!pasted.hasProperty(QTextFormat::FontFamily));
        QCOMPARE(pasted.fontWeight(), int(QFont::Bold));
        QCOMPARE(pasted.fontPointSize(), 20.0);
        QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(view.toPlainText(), u"Note: "_s);
    }

    void scrollerIsStyledOnceTheTextNeedsIt()
    {
        SNTextView view;
        view.resize(200, 100);
        view.setScrollerColor(QColor(255, 255, 255, 90));
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));

        // Thin and in its colour once the text first needs it.
        QScrollBar *bar = view.verticalScrollBar();
        const int usualWidth = bar->sizeHint().width();
        view.setPlainText(u"line\n"_s.repeated(40));
        QTRY_VERIFY(bar->isVisible());
        QVERIFY(bar->sizeHint().width() < usualWidth);
        QVERIFY(bar->styleSheet().contains(u"rgba(255, 255, 255, 90)"_s));
    }
};

QTEST_MAIN(TestSNTextView)
#include "TestSNTextView.moc"
