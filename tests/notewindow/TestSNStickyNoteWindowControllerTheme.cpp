#include "SNNoteWindowTestSupport.h"
#include "kit/QWNotificationCenter.h"
#include "kit/widgets/QWGradientView.h"
#include "notewindow/SNNoteMenus.h"
#include "notewindow/SNTextView.h"
#include "notewindow/SNToolbarIcon.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestEnvironment.h"
#include "themes/SNDarkTheme.h"
#include "themes/SNTheme.h"
#include "themes/SNTimeOfDayTheme.h"
#include "themes/SNYellowPadTheme.h"

#include <QFontInfo>
#include <QLabel>
#include <QMenu>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>
#include <QToolButton>

namespace {

const QWColor paletteRed(1.0, 0.1765, 0.3333);

QWTextAttributes attributes(const QWFont &font, const std::optional<QWColor> &color)
{
    QWTextAttributes result;
    result.setFont(font);
    result.setForegroundColor(color);
    return result;
}

// The attributes of the character at position, as the note would store them.
QWTextAttributes attributesAt(const QTextDocument &document, int position)
{
    QTextCursor cursor(const_cast<QTextDocument *>(&document));
    cursor.setPosition(position + 1);
    return QWTextAttributes::fromCharFormat(cursor.charFormat());
}

QImage iconImage(const QIcon &icon)
{
    return icon.pixmap(QSize(SNToolbarIcon::iconSize, SNToolbarIcon::iconSize), 1.0).toImage();
}

} // namespace

// A note drawn in its theme, and what a change of theme does to its text and window.
class TestSNStickyNoteWindowControllerTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void yellowToDarkKeepsChosenColoursAndTraits();
    void familyChangesWhileEachRunKeepsItsSize();
    void emptyNoteTypesInTheNewTheme();
    void windowTakesTheThemesLook();
    void linksShowInTheThemesLinkStyle();
    void timeOfDayNoticeRedrawsWithoutTouchingTheText();

private:
    // First: the shared stores are made on first use, inside these private folders.
    QWTestEnvironment m_environment;
    std::unique_ptr<QWManualScheduler> m_scheduler;
};

void TestSNStickyNoteWindowControllerTheme::init()
{
    m_scheduler = std::make_unique<QWManualScheduler>();
}

void TestSNStickyNoteWindowControllerTheme::cleanup()
{
    SNStickyNoteManager::sharedManager().waitForBackgroundSaves();
    m_scheduler.reset();
}

void TestSNStickyNoteWindowControllerTheme::yellowToDarkKeepsChosenColoursAndTraits()
{
    const QWFont helvetica(QStringLiteral("Helvetica Neue"), 14);
    QWMutableAttributedString text;
    text.appendString(QStringLiteral("plain "), attributes(helvetica, QWColor::black()));
    text.appendString(QStringLiteral("red"), attributes(helvetica, paletteRed));
    text.appendString(
        QStringLiteral(" bold"), attributes(helvetica.withBold(true), QWColor::black()));
    QWTextAttributes link = attributes(helvetica.withPointSize(18), QWColor::black());
    link.setLink(QStringLiteral("https://example.org/"));
    text.appendString(QStringLiteral(" site"), link);
    auto note = SNStickyNote::note();
    note->setThemeName(SNYellowPadTheme::staticClassName());
    note->setAttributedString(text.attributedString());
    auto controller = openNote(note);
    SNTextView *view = controller->textView();
    QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(view, QStringLiteral("!"));
    // Everything selected while the theme changes, as a user's selection may be.
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);

    QAction *dark = itemTitled(controller->menus()->themeMenu(), QStringLiteral("Dark"));
    QVERIFY(dark);
    dark->trigger();

    QCOMPARE(note->themeName(), SNDarkTheme::staticClassName());
    QCOMPARE(controller->currentTheme()->saveName(), SNDarkTheme::staticClassName());
    // The selected text keeps its own formats.
    const QTextDocument &document = *view->document();
    QCOMPARE(attributesAt(document, 6).foregroundColor(), std::optional<QWColor>(paletteRed));
    QVERIFY(attributesAt(document, 11).isBold());
    QCOMPARE(attributesAt(document, 16).fontSize(), 18.0);
    QCOMPARE(attributesAt(document, 16).link(), QStringLiteral("https://example.org/"));
    // Stored in the new theme: its colour where the text had the old theme's, its family.
    const auto stored = [&](qsizetype index) {
        controller->flushNote();
        return note->attributedString()->attributesAtIndex(index);
    };
    QCOMPARE(stored(0).foregroundColor(), std::optional<QWColor>(QWColor::white()));
    QCOMPARE(stored(6).foregroundColor(), std::optional<QWColor>(paletteRed));
    QCOMPARE(stored(11).foregroundColor(), std::optional<QWColor>(QWColor::white()));
    QVERIFY(stored(11).isBold());
    QVERIFY(!stored(0).isBold());
    QCOMPARE(stored(11).fontFamily(), QStringLiteral("Helvetica Neue"));
    QCOMPARE(stored(11).fontSize(), 14.0);
    QCOMPARE(stored(16).link(), QStringLiteral("https://example.org/"));

    // The four buttons take their light-on-dark images.
    const QList<std::pair<QToolButton *, QString>> buttons
        = { { controller->closeButton(), SNToolbarIcon::closeIconName },
              { controller->pinButton(), SNToolbarIcon::pinIconName },
              { controller->settingsButton(), SNToolbarIcon::settingsIconName },
              { controller->tagButton(), SNToolbarIcon::searchIconName } };
    for (const auto &[button, name] : buttons) {
        const QImage shown = iconImage(button->icon());
        QCOMPARE(shown, iconImage(SNToolbarIcon::iconNamed(name + QStringLiteral("-dark"))));
        QVERIFY(shown != iconImage(SNToolbarIcon::iconNamed(name)));
    }
    // The scroll handle shows on the dark background too.
    QVERIFY(view->scrollerColor().lightness() > 128);

    // The typing before the change is still there to undo, and comes back in the new theme.
    QTest::keyClick(view, Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(document.toPlainText(), QStringLiteral("plain red bold site"));
    QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(view, QStringLiteral("?"));
    QCOMPARE(stored(19).foregroundColor(), std::optional<QWColor>(QWColor::white()));
    QCOMPARE(stored(19).link(), QString());

    // Back to Yellow: white was Dark's default, so it turns black again; red stays red.
    itemTitled(controller->menus()->themeMenu(), QStringLiteral("Yellow"))->trigger();
    QCOMPARE(stored(0).foregroundColor(), std::optional<QWColor>(QWColor::black()));
    QCOMPARE(stored(6).foregroundColor(), std::optional<QWColor>(paletteRed));
    QCOMPARE(iconImage(controller->closeButton()->icon()),
        iconImage(SNToolbarIcon::iconNamed(SNToolbarIcon::closeIconName)));
    QVERIFY(view->scrollerColor().lightness() < 128);
}

void TestSNStickyNoteWindowControllerTheme::familyChangesWhileEachRunKeepsItsSize()
{
    const QWFont menlo(QStringLiteral("Menlo"), 13);
    QWMutableAttributedString text;
    text.appendString(QStringLiteral("code "), attributes(menlo, std::nullopt));
    text.appendString(QStringLiteral("large"),
        attributes(menlo.withPointSize(20).withItalic(true), std::nullopt));
    auto note = SNStickyNote::note();
    note->setThemeName(QStringLiteral("SNPlainTextTheme"));
    note->setAttributedString(text.attributedString());
    auto controller = openNote(note);
    SNTextView *view = controller->textView();
    // Monospace is drawn in a fixed-pitch look-alike where Menlo itself is missing.
    QVERIFY(QFontInfo(view->font()).fixedPitch());

    itemTitled(controller->menus()->themeMenu(), QStringLiteral("English"))->trigger();

    const QWFont english = note->theme()->defaultFont();
    QCOMPARE(english, QWFont(QStringLiteral("Georgia"), 16));
    QVERIFY(!QFontInfo(view->font()).fixedPitch());
    controller->flushNote();
    const QWTextAttributes code = note->attributedString()->attributesAtIndex(0);
    const QWTextAttributes large = note->attributedString()->attributesAtIndex(6);
    QCOMPARE(code.fontFamily(), english.family());
    QCOMPARE(code.fontSize(), 13.0);
    QCOMPARE(large.fontFamily(), english.family());
    QCOMPARE(large.fontSize(), 20.0);
    QVERIFY(large.isItalic());
    QVERIFY(!code.isItalic());
    QCOMPARE(view->currentCharFormat().fontPointSize(), english.pointSize());
    // Drawn with an installed look-alike when the family itself is missing.
    QCOMPARE(view->font().families(), english.toQFont().families());
}

void TestSNStickyNoteWindowControllerTheme::emptyNoteTypesInTheNewTheme()
{
    auto note = SNStickyNote::note();
    auto controller = openNote(note);

    itemTitled(controller->menus()->themeMenu(), QStringLiteral("Presentation"))->trigger();
    QTest::keyClicks(controller->textView(), QStringLiteral("Slide"));

    controller->flushNote();
    const QWTextAttributes typed = note->attributedString()->attributesAtIndex(0);
    const std::shared_ptr<SNTheme> presentation = note->theme();
    QCOMPARE(presentation->className(), QStringLiteral("SNPresentationTheme"));
    QCOMPARE(typed.font(), QWFont(QStringLiteral("Helvetica Neue"), 24));
    QCOMPARE(typed.foregroundColor(), std::optional<QWColor>(QWColor::black()));
}

void TestSNStickyNoteWindowControllerTheme::windowTakesTheThemesLook()
{
    auto note = noteWithText(QStringLiteral("English"));
    note->setThemeName(QStringLiteral("SNEnglishTheme"));
    auto controller = openNote(note);
    const std::shared_ptr<SNTheme> theme = note->theme();

    QCOMPARE(controller->contentView()->startColor(), theme->startColor().toQColor());
    QCOMPARE(controller->contentView()->endColor(), theme->endColor().toQColor());
    QCOMPARE(controller->textView()->insertionPointColor(), theme->cursorColor().toQColor());
    QCOMPARE(controller->wordCountLabel()->palette().color(QPalette::WindowText),
        theme->defaultFontColor().toQColor());
    QCOMPARE(controller->collapsedTitleLabel()->palette().color(QPalette::WindowText),
        theme->defaultFontColor().toQColor());
    QCOMPARE(controller->collapsedTitleLabel()->font().pointSizeF(), 13.0);
    QCOMPARE(controller->textView()->document()->documentMargin(), 10.0);

    // Rendered: the top row in the start colour, the bottom row in the end colour.
    note->setThemeName(QStringLiteral("SNRedTheme"));
    controller->updateTheme();
    const QImage image = controller->contentView()->grab().toImage();
    const QColor top = image.pixelColor(image.width() / 2, 0);
    const QColor bottom = image.pixelColor(image.width() / 2, image.height() - 1);
    const std::shared_ptr<SNTheme> red = note->theme();
    QVERIFY(qAbs(top.red() - red->startColor().toQColor().red()) <= 2);
    QVERIFY(qAbs(top.green() - red->startColor().toQColor().green()) <= 2);
    QVERIFY(qAbs(bottom.blue() - red->endColor().toQColor().blue()) <= 3);
}

void TestSNStickyNoteWindowControllerTheme::linksShowInTheThemesLinkStyle()
{
    QWMutableAttributedString text;
    text.appendString(QStringLiteral("see "));
    QWTextAttributes link;
    link.setLink(QStringLiteral("https://example.org"));
    text.appendString(QStringLiteral("here"), link);
    auto note = SNStickyNote::note();
    note->setThemeName(QStringLiteral("SNDarkTheme"));
    note->setAttributedString(text.attributedString());
    auto controller = openNote(note);

    const QTextBlock block = controller->textView()->document()->firstBlock();
    const QList<QTextLayout::FormatRange> shown = block.layout()->formats();
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().start, 4);
    QCOMPARE(shown.first().length, 4);
    QCOMPARE(shown.first().format.foreground().color(), note->theme()->linkColor().toQColor());
    QCOMPARE(shown.first().format.underlineStyle(), QTextCharFormat::DotLine);
    // Display only: the text itself keeps no colour.
    QVERIFY(!attributesAt(*controller->textView()->document(), 4).foregroundColor());

    // Over the link the pointer becomes a hand.
    SNTextView *view = controller->textView();
    const QRect linkRect = view->cursorRect([&] {
        QTextCursor cursor(view->document());
        cursor.setPosition(6);
        return cursor;
    }());
    QTest::mouseMove(view->viewport(), linkRect.center());
    QCOMPARE(view->viewport()->cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseMove(
        view->viewport(), QPoint(view->viewport()->width() - 5, view->viewport()->height() - 5));
    QCOMPARE(view->viewport()->cursor().shape(), Qt::IBeamCursor);
}

void TestSNStickyNoteWindowControllerTheme::timeOfDayNoticeRedrawsWithoutTouchingTheText()
{
    auto note = noteWithText(QStringLiteral("Hours"));
    note->setThemeName(SNTimeOfDayTheme::staticClassName());
    auto controller = openNote(note);
    controller->contentView()->setStartColor(Qt::magenta);
    QTextDocument *document = controller->textView()->document();
    QTest::keyClicks(controller->textView(), QStringLiteral("!"));
    QVERIFY(document->isUndoAvailable());
    m_scheduler->advanceBy(SNStickyNoteWindowController::saveDelay);
    // The theme's own periodic timer stays.
    const int pending = m_scheduler->scheduledCount();

    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        SNTimeOfDayTheme::didChangeNotificationName());

    QCOMPARE(controller->contentView()->startColor(), note->theme()->startColor().toQColor());
    // Nothing in the text needed a change: the edit history is still there, and no save waits.
    QVERIFY(document->isUndoAvailable());
    QCOMPARE(m_scheduler->scheduledCount(), pending);
}

QTEST_MAIN(TestSNStickyNoteWindowControllerTheme)
#include "TestSNStickyNoteWindowControllerTheme.moc"
