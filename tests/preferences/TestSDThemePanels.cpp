#include "kit/widgets/QWColorWell.h"
#include "preferences/SDThemePanels.h"

#include <QSignalSpy>
#include <QTest>

class TestSDThemePanels final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void colourPanelChoicesGoIntoItsEnabledWell();
    void fontPanelTellsItsChoicesUntilClosed();
};

void TestSDThemePanels::colourPanelChoicesGoIntoItsEnabledWell()
{
    QWidget owner;
    QWColorWell links(&owner);
    QWColorWell text(&owner);
    links.setColor(QColor(10, 20, 30));
    text.setColor(QColor(200, 200, 200));
    SDThemePanels panels(&owner);
    panels.openColorPanel(&links, &owner);
    QColorDialog *panel = panels.colorPanel();
    QVERIFY(panel && panel->isVisible());
    QCOMPARE(panel->currentColor().rgb(), qRgb(10, 20, 30));
    QSignalSpy changed(&links, &QWColorWell::colorChanged);
    panel->setCurrentColor(QColor(30, 120, 60));
    QCOMPARE(links.color().rgb(), qRgb(30, 120, 60));
    // The well's colour changes under the panel (another theme): the panel follows it.
    links.setColor(QColor(1, 2, 3));
    panels.colorPanelFollowWell();
    QCOMPARE(panel->currentColor().rgb(), qRgb(1, 2, 3));
    QCOMPARE(changed.count(), 1);
    // A disabled well takes nothing, nor opens the panel.
    links.setEnabled(false);
    panel->setCurrentColor(Qt::yellow);
    QCOMPARE(links.color().rgb(), qRgb(1, 2, 3));
    text.setEnabled(false);
    panels.openColorPanel(&text, &owner);
    QCOMPARE(panel->currentColor().rgb(), QColor(Qt::yellow).rgb());
    panels.closePanels();
    QVERIFY(!panel->isVisible());
}

void TestSDThemePanels::fontPanelTellsItsChoicesUntilClosed()
{
    QWidget owner;
    SDThemePanels panels(&owner);
    QSignalSpy chosen(&panels, &SDThemePanels::fontChosen);
    panels.openFontPanel(QFont(QStringLiteral("DejaVu Sans"), 14), &owner);
    QFontDialog *panel = panels.fontPanel();
    QVERIFY(panel && panel->isVisible());
    QCOMPARE(chosen.count(), 0);
    panel->setCurrentFont(QFont(QStringLiteral("DejaVu Sans Mono"), 11));
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(chosen.constLast().first().value<QFont>().pointSize(), 11);
    panels.closePanels();
    QVERIFY(!panel->isVisible());
    panel->setCurrentFont(QFont(QStringLiteral("DejaVu Serif"), 20));
    QCOMPARE(chosen.count(), 1);
}

QTEST_MAIN(TestSDThemePanels)
#include "TestSDThemePanels.moc"
