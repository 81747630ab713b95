#include "kit/widgets/QWGradientView.h"
#include "preferences/SDThemePreview.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>

class TestSDThemePreview final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hashtagsAreLinksOnly();
    void showsTheThemesColoursAndFont();
};

void TestSDThemePreview::hashtagsAreLinksOnly()
{
    QWGradientView gradient;
    QTextBrowser text;
    const SDThemePreview preview(&gradient, &text);
    QCOMPARE(text.toPlainText(), SDThemePreview::sampleText());
    int links = 0;
    for (QTextBlock block = text.document()->begin(); block.isValid(); block = block.next()) {
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().isAnchor()) {
                ++links;
                QCOMPARE(it.fragment().charFormat().anchorHref(), it.fragment().text());
                QVERIFY(it.fragment().text().startsWith(u'#'));
            }
        }
    }
    QCOMPARE(links, 2);
}

void TestSDThemePreview::showsTheThemesColoursAndFont()
{
    QTemporaryDir directory;
    const SNThemeManager registry(directory.path());
    QWGradientView gradient;
    QTextBrowser text;
    SDThemePreview preview(&gradient, &text);
    for (const std::shared_ptr<SNTheme> &theme : registry.themes()) {
        preview.showTheme(*theme);
        QCOMPARE(gradient.startColor(), theme->startColor().toQColor());
        QCOMPARE(gradient.endColor(), theme->endColor().toQColor());
        QCOMPARE(text.palette().color(QPalette::Text), theme->defaultFontColor().toQColor());
        QCOMPARE(text.document()->defaultFont().family(), theme->defaultFont().toQFont().family());
    }
}

QTEST_MAIN(TestSDThemePreview)
#include "TestSDThemePreview.moc"
