#pragma once

#include <QRect>
#include <QString>

#include <optional>

// The form in which a note stores its window frames: "{{x, y}, {width, height}}", in logical
// pixels of the virtual desktop with the origin at the top left. Frames written by other
// versions may carry fractions ("{{10.5, 20}, {300, 200.25}}"); they are rounded.
class SNWindowFrameString final
{
public:
    SNWindowFrameString() = delete;

    static QString stringFromRect(const QRect &frame);
    // Nothing for an empty or unreadable string, or a frame without area.
    static std::optional<QRect> rectFromString(const QString &string);
};
