#include "notes/SNWindowFrameString.h"

#include <QRegularExpression>

#include <cmath>

QString SNWindowFrameString::stringFromRect(const QRect &frame)
{
    return QStringLiteral("{{%1, %2}, {%3, %4}}")
        .arg(frame.x())
        .arg(frame.y())
        .arg(frame.width())
        .arg(frame.height());
}

std::optional<QRect> SNWindowFrameString::rectFromString(const QString &string)
{
    static const QRegularExpression pattern(QStringLiteral(
        R"(^\s*\{\s*\{\s*([-+0-9.eE]+)\s*,\s*([-+0-9.eE]+)\s*\}\s*,\s*\{\s*([-+0-9.eE]+)\s*,\s*([-+0-9.eE]+)\s*\}\s*\}\s*$)"));
    const QRegularExpressionMatch match = pattern.match(string);
    if (!match.hasMatch())
        return std::nullopt;
    double values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = match.captured(i + 1).toDouble(&ok);
        // Far outside any desktop: a damaged archive, not a place to put a window.
        if (!ok || !std::isfinite(values[i]) || std::abs(values[i]) > 1.0e6)
            return std::nullopt;
    }
    const QRect frame(int(std::lround(values[0])), int(std::lround(values[1])),
        int(std::lround(values[2])), int(std::lround(values[3])));
    if (frame.width() <= 0 || frame.height() <= 0)
        return std::nullopt;
    return frame;
}
