#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>

#include <optional>

class QWidget;
class QWWindowController;

// Tiles a set of windows in a grid over the primary screen, animated, and puts them back where
// they were when the masonry was made. Frames are window geometries (QWidget::geometry()) in
// the virtual desktop's coordinates, as the note windows store them.
class QWWindowMasonry final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWWindowMasonry)

public:
    // Records every window's present frame (loading windows not yet loaded).
    explicit QWWindowMasonry(
        const QList<QWWindowController *> &controllers, QObject *parent = nullptr);
    ~QWWindowMasonry() override;

    // Appends every window's present frame to originalWindowRects(); an empty rectangle for a
    // controller without a window. Never clears the list.
    void updateNodeDimensions();
    // Arranges the windows in list order: row 0 at the top, filled from the left.
    void layout();
    // Returns every window to the frame it had when the masonry was made, however often
    // layout() ran since.
    void restore();

    QList<QRect> originalWindowRects() const { return m_originalWindowRects; }

    // The screen to arrange on, instead of the primary screen: its whole geometry and the part
    // not covered by panels.
    void setScreenGeometry(const QRect &geometry, const QRect &availableGeometry);

private:
    QWidget *windowAt(qsizetype index) const;
    void animateWindow(QWidget *window, const QRect &frame, std::optional<int> durationMs);

    QList<QPointer<QWWindowController>> m_controllers;
    QList<QRect> m_originalWindowRects;
    std::optional<QRect> m_screenGeometry;
    std::optional<QRect> m_availableGeometry;
};
