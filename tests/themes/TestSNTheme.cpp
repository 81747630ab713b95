#include "themes/SNEnglishTheme.h"
#include "themes/SNThemeKindRegistry.h"

#include <QFontInfo>
#include <QTest>

// The themes' fonts on a machine without the fonts they name, and the look-alikes drawing uses
// instead.
class TestSNTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // No Linux desktop has the fonts the themes name, but ./build.sh installs a look-alike of
    // each: every built-in theme keeps its own font, and so Monospace stays monospaced.
    void builtInThemesKeepTheirFonts()
    {
        for (const QString &kind : SNThemeKindRegistry::classNames()) {
            const std::shared_ptr<SNTheme> theme = SNThemeKindRegistry::themeWithClassName(kind);
            if (theme->isEditable() || kind == SNTheme::staticClassName())
                continue;
            QCOMPARE(theme->saveName(), kind);
            QVERIFY2(theme->storedDefaultFont(), qPrintable(kind));
            QCOMPARE(theme->defaultFont(), *theme->storedDefaultFont());
        }
    }

    // Without Georgia or any look-alike, the English theme takes its own fallback.
    void fontMissingEverywhereTakesTheFallback()
    {
        const std::shared_ptr<SNEnglishTheme> english = SNEnglishTheme::theme();
        english->setDefaultFont(QWFont::fontWithNameSize(QStringLiteral("No Such Serif"), 16));
        QCOMPARE(english->defaultFont(), QWFont(QStringLiteral("Menlo"), 16));
    }

    void drawingSubstitutesInstalledLookAlikes_data()
    {
        QTest::addColumn<QString>("family");
        QTest::addColumn<bool>("monospace");
        QTest::newRow("Helvetica Neue") << "Helvetica Neue" << false;
        QTest::newRow("Menlo") << "Menlo" << true;
        QTest::newRow("Monaco") << "Monaco" << true;
        QTest::newRow("Georgia") << "Georgia" << false;
    }

    void drawingSubstitutesInstalledLookAlikes()
    {
        QFETCH(QString, family);
        QFETCH(bool, monospace);
        const QString drawn = QWFont::substitutedFamily(family);
        QVERIFY(QWFont::isFamilyInstalled(drawn));
        QVERIFY(drawn == family || QWFont::substitutesForFamily(family).contains(drawn));

        const QFont font = QWFont(family, 13).toQFont();
        QCOMPARE(font.family(), family); // the name itself travels on
        // Qt names a family that several foundries provide with its foundry: "Nimbus Sans [urw]".
        const QFontInfo info(font);
        QCOMPARE(info.family().section(QStringLiteral(" ["), 0, 0), drawn);
        QCOMPARE(info.fixedPitch(), monospace);
    }
};

QTEST_MAIN(TestSNTheme)
#include "TestSNTheme.moc"
