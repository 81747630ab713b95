#pragma once

#include <QColor>
#include <QString>

#include <optional>

class SNThemeManager;

// Finds the theme for a colour another program gave a note: the built-in theme whose colour a
// person would call the same, else a user theme made for that colour before, else a new user
// theme, named after the program and the colour ("xpad: Blue"), which it adds to the registry and
// saves.
class SNImportThemeMatcher final
{
public:
    // Colours nearer than this (CIE76 ΔE) look alike on a note; past it a theme is made.
    static constexpr double sameColorDistance = 12.0;

    explicit SNImportThemeMatcher(SNThemeManager &themes);

    // The save name of the theme for the colours; null when the note has no colour, so that it
    // takes the default theme.
    QString themeNameFor(const std::optional<QColor> &background, const std::optional<QColor> &text,
        const QString &colorName, const QString &programName);
    // The names of the themes made so far, for the report.
    const QStringList &themesMade() const { return m_themesMade; }

    // The perceptual distance between two colours.
    static double distance(const QColor &a, const QColor &b);

private:
    SNThemeManager &m_themes;
    QStringList m_themesMade;
};
