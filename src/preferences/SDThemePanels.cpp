#include "preferences/SDThemePanels.h"

#include "kit/QWFont.h"
#include "kit/widgets/QWColorWell.h"

#include <QApplication>
#include <QFontDatabase>
#include <QScreen>
#include <QTimer>

#include <algorithm>

SDThemePanels::SDThemePanels(QWidget *owner, QObject *parent) : QObject(parent), m_owner(owner) { }

SDThemePanels::~SDThemePanels() = default;

void SDThemePanels::placeBesideWindow(QWidget *panel, const QWidget *window)
{
    if (!window || panel->isVisible())
        return;
    const QRect frame = window->frameGeometry();
    const QScreen *screen = window->screen();
    const QRect available = screen ? screen->availableGeometry() : frame;
    const QSize size = panel->sizeHint();
    QPoint origin(frame.right() + 8, frame.top());
    if (origin.x() + size.width() > available.right())
        origin.setX(frame.left() - 8 - size.width());
    origin.setX(std::clamp(origin.x(), available.left(),
        std::max(available.left(), available.right() - size.width())));
    origin.setY(std::clamp(origin.y(), available.top(),
        std::max(available.top(), available.bottom() - size.height())));
    panel->move(origin);
}

// The font panel shows the first style of a family unless told which one the font is; the
// plainest style with the font's weight and slant is meant.
QFont SDThemePanels::fontWithStyleName(QFont font)
{
    const QString family = QWFont::substitutedFamily(font.family());
    QString best;
    for (const QString &style : QFontDatabase::styles(family)) {
        if (QFontDatabase::bold(family, style) != font.bold()
            || QFontDatabase::italic(family, style) != font.italic())
            continue;
        if (best.isEmpty() || style.size() < best.size())
            best = style;
    }
    if (!best.isEmpty()) {
        font.setFamily(family);
        font.setStyleName(best);
    }
    return font;
}

void SDThemePanels::openColorPanel(QWColorWell *well, const QWidget *window)
{
    if (!well || !well->isEnabled())
        return;
    if (!m_colorPanel) {
        m_colorPanel = new QColorDialog(m_owner);
        m_colorPanel->setWindowFlag(Qt::Dialog);
        m_colorPanel->setWindowTitle(tr("Colours"));
        m_colorPanel->setOption(QColorDialog::NoButtons);
        connect(
            m_colorPanel, &QColorDialog::currentColorChanged, this, [this](const QColor &color) {
                if (m_colorPanelWell && m_colorPanelWell->isEnabled()
                    && m_colorPanelWell->color() != color)
                    m_colorPanelWell->setColor(color, true);
            });
    }
    m_colorPanelWell = well;
    placeBesideWindow(m_colorPanel, window);
    colorPanelFollowWell();
    m_colorPanel->show();
    m_colorPanel->raise();
    m_colorPanel->activateWindow();
}

void SDThemePanels::colorPanelFollowWell()
{
    if (!m_colorPanel || !m_colorPanelWell)
        return;
    const QSignalBlocker blocker(m_colorPanel);
    m_colorPanel->setCurrentColor(m_colorPanelWell->color());
}

void SDThemePanels::openFontPanel(const QFont &font, const QWidget *window)
{
    if (!m_fontPanel) {
        m_fontPanel = new QFontDialog(m_owner);
        m_fontPanel->setWindowTitle(tr("Fonts"));
        m_fontPanel->setOption(QFontDialog::NoButtons);
    }
    {
        const QSignalBlocker blocker(m_fontPanel);
        m_fontPanel->setCurrentFont(fontWithStyleName(font));
    }
    placeBesideWindow(m_fontPanel, window);
    connect(m_fontPanel, &QFontDialog::currentFontChanged, this, &SDThemePanels::fontChosen,
        Qt::UniqueConnection);
    connect(m_fontPanel, &QFontDialog::finished, this, &SDThemePanels::resetFontPanel,
        Qt::UniqueConnection);
    m_fontPanel->show();
    m_fontPanel->raise();
    m_fontPanel->activateWindow();
}

void SDThemePanels::resetFontPanel()
{
    if (!m_fontPanel)
        return;
    m_fontPanel->disconnect(this);
    m_fontPanel->hide();
}

void SDThemePanels::closePanels()
{
    if (m_colorPanel)
        m_colorPanel->close();
    resetFontPanel();
}

void SDThemePanels::windowDidResignKey(const QWidget *window)
{
    // Once the focus has settled: moving to the panels themselves keeps them open.
    QTimer::singleShot(0, this, [this, window = QPointer<const QWidget>(window)] {
        QWidget *active = QApplication::activeWindow();
        if (m_colorPanel && active != m_colorPanel && active != m_fontPanel
            && active != window.data())
            m_colorPanel->close();
    });
}
