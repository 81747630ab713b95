#pragma once

#include <QIcon>
#include <QString>

// The four images of a note's title bar ("icon-close", "icon-pin", "icon-settings",
// "icon-search"), each with a "-dark" form for dark backgrounds. They are SVG resources, drawn
// here at one and two device pixels per point so that they stay sharp on every screen.
class SNToolbarIcon final
{
public:
    static const QString closeIconName;
    static const QString pinIconName;
    static const QString settingsIconName;
    static const QString searchIconName;
    static const QString darkSuffix; // "-dark"
    static constexpr int iconSize = 16;

    SNToolbarIcon() = delete;

    // The name to use on a background of that kind.
    static QString nameForTheme(const QString &name, bool isDark);
    // A null icon when there is no image of that name.
    static QIcon iconNamed(const QString &name);
    static QString resourcePath(const QString &name);
};
