#include "SNNoteWindowTestSupport.h"
#include "kit/QWTextAttributes.h"
#include "notewindow/SNNoteTextFormatter.h"
#include "themes/SNTheme.h"

#include <QColorDialog>

using namespace Qt::StringLiterals;

// Formatting a note's text: colours and the formats typing goes on in.
class TestSNNoteTextFormatter final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void typingGoesOnInTheFormatOfTheMoment()
    {
        // An emptied note types in its theme again, not in the formats of what was deleted.
        auto controller = openWithText(u"loud"_s);
        SNTextView *text = controller->textView();
        QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
        QTextCharFormat redBold;
        redBold.setForeground(QColor(Qt::red));
        redBold.setFontWeight(QFont::Bold);
        text->mergeCurrentCharFormat(redBold);
        QTest::keyClick(text, Qt::Key_Delete);
        QTest::keyClicks(text, u"calm"_s);
        controller->flushNote();
        const QWTextAttributes typed = controller->note()->attributedString()->attributesAtIndex(0);
        const std::shared_ptr<SNTheme> theme = controller->note()->theme();
        QVERIFY(!typed.isBold());
        QCOMPARE(typed.foregroundColor(), std::optional<QWColor>(theme->defaultFontColor()));

        // Typing right after a link does not run on into it.
        QTextCharFormat link;
        link.setAnchor(true);
        link.setAnchorHref(u"https://example.org"_s);
        text->textCursor().insertText(u"site"_s, link);
        QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClicks(text, u"s"_s);
        QVERIFY(formatAt(*text->document(), 7).isAnchor());
        QVERIFY(!formatAt(*text->document(), 8).isAnchor());
    }

    void coloursUndoAndThePanel()
    {
        auto controller = openWithText(u"strike this"_s);
        SNNoteTextFormatter &formatter = *controller->textFormatter();
        SNTextView *text = controller->textView();
        QTextDocument *document = text->document();

        // Blue, then red from the menu; one undo brings blue back.
        const QWColor blue(0.0, 0.4784, 1.0);
        formatter.changeColorWithRange(blue, { 0, 6 });
        QAction red(u"Red"_s);
        red.setData(QColor::fromRgbF(1.0f, 0.1765f, 0.3333f));
        select(text, 0, 6);
        formatter.changeColorFromMenuItem(&red);
        QCOMPARE(formatAt(*document, 0).foreground().color(), red.data().value<QColor>());
        text->undo();
        QCOMPARE(formatAt(*document, 0).foreground().color(), blue.toQColor());
        QVERIFY(!formatAt(*document, 8).hasProperty(QTextFormat::ForegroundBrush));

        // The panel colours the selection of the moment it opened, whatever is selected later.
        select(text, 0, 6);
        formatter.orderFrontColorPanel(nullptr);
        QColorDialog *panel = formatter.colorPanel();
        QVERIFY(panel && panel->isVisible());
        select(text, 7, 11);
        panel->setCurrentColor(QColor(10, 200, 30));
        panel->accept();
        QCOMPARE(formatAt(*document, 1).foreground().color(), QColor(10, 200, 30));
        QVERIFY(!formatAt(*document, 8).hasProperty(QTextFormat::ForegroundBrush));
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNNoteTextFormatter)
#include "TestSNNoteTextFormatter.moc"
