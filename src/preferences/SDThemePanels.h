#pragma once

#include <QColorDialog>
#include <QFontDialog>
#include <QObject>
#include <QPointer>

class QWColorWell;

// The panels the theme editor opens beside the preferences window, so that the preview stays
// in sight: the shared colour panel, whose choices go into the well it was opened for, and the
// font panel. Every choice applies at once; neither panel has buttons.
class SDThemePanels final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SDThemePanels)

public:
    // The panels are made as children of owner, when first opened.
    explicit SDThemePanels(QWidget *owner, QObject *parent = nullptr);
    ~SDThemePanels() override;

    void openColorPanel(QWColorWell *well, const QWidget *window);
    // An open colour panel shows its well's colour again (another theme was selected).
    void colorPanelFollowWell();
    // Opens on font, in the style of the font's weight and slant; fontChosen tells each choice
    // until the panel is closed.
    void openFontPanel(const QFont &font, const QWidget *window);
    void resetFontPanel();
    void closePanels();
    // The colour panel goes when the focus leaves the window and the panels for elsewhere.
    void windowDidResignKey(const QWidget *window);

    QColorDialog *colorPanel() const { return m_colorPanel; }
    QFontDialog *fontPanel() const { return m_fontPanel; }

    static void placeBesideWindow(QWidget *panel, const QWidget *window);
    static QFont fontWithStyleName(QFont font);

Q_SIGNALS:
    void fontChosen(const QFont &font);

private:
    QWidget *m_owner;
    QPointer<QColorDialog> m_colorPanel;
    QPointer<QWColorWell> m_colorPanelWell;
    QPointer<QFontDialog> m_fontPanel;
};
