#include "SNNoteWindowTestSupport.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWTextAttributes.h"
#include "kit/widgets/QWGradientView.h"
#include "notewindow/SNNoteMenus.h"
#include "themes/SNTheme.h"
#include "themes/SNTimeOfDayTheme.h"

#include <QFontInfo>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

const QWColor paletteRed(1.0, 0.1765, 0.3333);

QWTextAttributes attributes(const QWFont &font, const std::optional<QWColor> &color)
{
    QWTextAttributes result;
    result.setFont(font);
    result.setForegroundColor(color);
    return result;
}

} // namespace

// A note window drawn in its theme, with the toolbar's images, and what a change of theme
// does to it and to its text.
class TestSNNoteThemer final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f.init(); }
    void cleanup() { f.cleanup(); }

    void windowTakesTheThemesLook()
    {
        QWMutableAttributedString text;
        text.appendString(u"see "_s);
        QWTextAttributes link;
        link.setLink(u"https://example.org"_s);
        text.appendString(u"here"_s, link);
        auto note = SNStickyNote::note();
        note->setThemeName(u"SNDarkTheme"_s);
        note->setAttributedString(text.attributedString());
        auto controller = openNote(note);
        const std::shared_ptr<SNTheme> theme = note->theme();
        SNTextView *view = controller->textView();

        // Links show in the theme's link style; the text keeps no colour.
        const QList<QTextLayout::FormatRange> shown
            = view->document()->firstBlock().layout()->formats();
        QCOMPARE(shown.size(), 1);
        QCOMPARE(std::pair(shown.first().start, shown.first().length), std::pair(4, 4));
        QCOMPARE(shown.first().format.foreground().color(), theme->linkColor().toQColor());
        QVERIFY(!formatAt(*view->document(), 4).hasProperty(QTextFormat::ForegroundBrush));

        // The toolbar's images are drawn sharp for two device pixels per point.
        for (const char *button : { "closeButton", "pinButton", "settingsButton", "tagButton" }) {
            const QIcon icon = part<QToolButton>(*controller, button)->icon();
            QCOMPARE(icon.pixmap(QSize(16, 16), 2.0).size(), QSize(32, 32));
        }
    }

    void aChangeOfThemeKeepsChosenColoursTraitsAndUndo()
    {
        const QWFont helvetica(u"Helvetica Neue"_s, 14);
        QWMutableAttributedString text;
        text.appendString(u"plain "_s, attributes(helvetica, QWColor::black()));
        text.appendString(u"red"_s, attributes(helvetica, paletteRed));
        text.appendString(u" bold"_s, attributes(helvetica.withBold(true), QWColor::black()));
        auto note = SNStickyNote::note();
        note->setThemeName(u"SNYellowPadTheme"_s);
        note->setAttributedString(text.attributedString());
        auto controller = openNote(note);
        SNTextView *view = controller->textView();
        QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClicks(view, u"!"_s);
        // Everything selected while the theme changes, as a user's selection may be.
        QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);

        itemTitled(controller->menus()->themeMenu(), u"Dark"_s)->trigger();
        QCOMPARE(controller->currentTheme()->saveName(), u"SNDarkTheme"_s);
        // Stored in the new theme: its colour where the text had the old theme's.
        const auto stored = [&](qsizetype index) {
            controller->flushNote();
            return note->attributedString()->attributesAtIndex(index);
        };
        QCOMPARE(stored(0).foregroundColor(), std::optional<QWColor>(QWColor::white()));
        QCOMPARE(stored(6).foregroundColor(), std::optional<QWColor>(paletteRed));
        QCOMPARE(stored(11).foregroundColor(), std::optional<QWColor>(QWColor::white()));
        QVERIFY(stored(11).isBold() && !stored(0).isBold());

        // The typing before the change is still there to undo; what is typed next takes the theme.
        QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(view->toPlainText(), u"plain red bold"_s);
        QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
        QTest::keyClicks(view, u"?"_s);
        QCOMPARE(stored(14).foregroundColor(), std::optional<QWColor>(QWColor::white()));
    }

    void familyChangesWhileEachRunKeepsItsSize()
    {
        const QWFont menlo(u"Menlo"_s, 13);
        QWMutableAttributedString text;
        text.appendString(u"code "_s, attributes(menlo, std::nullopt));
        text.appendString(u"large"_s, attributes(menlo.withPointSize(20), std::nullopt));
        auto note = SNStickyNote::note();
        note->setThemeName(u"SNPlainTextTheme"_s);
        note->setAttributedString(text.attributedString());
        auto controller = openNote(note);
        SNTextView *view = controller->textView();
        // Monospace is drawn in a fixed-pitch look-alike where Menlo itself is missing.
        QVERIFY(QFontInfo(view->font()).fixedPitch());

        itemTitled(controller->menus()->themeMenu(), u"English"_s)->trigger();
        const QWFont english = note->theme()->defaultFont();
        QVERIFY(!QFontInfo(view->font()).fixedPitch());
        controller->flushNote();
        const QWTextAttributes code = note->attributedString()->attributesAtIndex(0);
        const QWTextAttributes large = note->attributedString()->attributesAtIndex(6);
        QCOMPARE(code.font(), english.withPointSize(13));
        QCOMPARE(large.font(), english.withPointSize(20));
    }

    void timeOfDayNoticeRedrawsWithoutTouchingTheText()
    {
        auto note = noteWithText(u"Hours"_s);
        note->setThemeName(SNTimeOfDayTheme::staticClassName());
        auto controller = openNote(note);
        auto *content = part<QWGradientView>(*controller, "contentView");
        content->setStartColor(Qt::magenta);
        QTest::keyClicks(controller->textView(), u"!"_s);
        f.scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
        // The theme's own periodic timer stays.
        const int pending = f.scheduler->scheduledCount();

        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            SNTimeOfDayTheme::didChangeNotificationName());

        QCOMPARE(content->startColor(), note->theme()->startColor().toQColor());
        // Nothing in the text needed a change: the edit history is still there, and no save waits.
        QVERIFY(controller->textView()->document()->isUndoAvailable());
        QCOMPARE(f.scheduler->scheduledCount(), pending);
    }

private:
    NoteWindowFixture f;
};

QTEST_MAIN(TestSNNoteThemer)
#include "TestSNNoteThemer.moc"
