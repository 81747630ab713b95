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
    void showsEachThemeWithItsHashtagsAsLinks();
};

void TestSDThemePreview::showsEachThemeWithItsHashtagsAsLinks()
{
    QWGradientView gradient;
    QTextBrowser text;
    SDThemePreview preview(&gradient, &text);
    // Every hashtag of the sample is a link to itself, and nothing else is.
    qsizetype links = 0;
    for (QTextBlock block = text.document()->begin(); block.isValid(); block = block.next()) {
        for (QTextBlock::iterator it = block.begin(); !it.atEnd(); ++it) {
            if (!it.fragment().charFormat().isAnchor())
                continue;
            ++links;
            QCOMPARE(it.fragment().charFormat().anchorHref(), it.fragment().text());
            QVERIFY(it.fragment().text().startsWith(u'#'));
        }
    }
    QCOMPARE(links, SDThemePreview::sampleText().count(u'#'));

    const QTemporaryDir directory;
    const SNThemeManager registry(directory.path());
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
