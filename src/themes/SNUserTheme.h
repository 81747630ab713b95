#pragma once

#include "themes/SNTheme.h"

class QWKeyedArchiver;
class QWKeyedUnarchiver;

// A theme the user made in the theme editor: editable, changed in place, kept in Themes.db by
// SNThemeManager. A note stores it as "SNUserTheme-<name>" and gets the registry's very object
// back, so the editor's changes reach the note at once.
class SNUserTheme final : public SNTheme
{
public:
    SNUserTheme();

    static std::shared_ptr<SNUserTheme> theme();

    static QString staticClassName() { return QStringLiteral("SNUserTheme"); }
    QString className() const override { return staticClassName(); }
    QString saveName() const override;
    // "<SNUserTheme 0x... name=Work>", for logs.
    QString description() const;

    // Sets the colour, then recomputes the dark flag.
    void setStartColor(const QWColor &color) override;
    // Dark exactly when the start colour's luminosity is below 0.6; a theme without a name yet
    // keeps its flag, so a theme being set up in the editor does not flicker.
    void updateIsDark();

    // The seven keys "name", "startColor", "endColor", "defaultFont", "defaultFontColor",
    // "linkColor", "cursorColor"; the dark flag is recomputed on reading, never stored.
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    // Never fails: a missing colour keeps its default, a missing font reads as none (so the
    // fallback font applies) and a missing name as no name.
    static std::shared_ptr<SNUserTheme> initWithCoder(const QWKeyedUnarchiver &coder);
    // Lets QWKeyedUnarchiver decode "SNUserTheme" objects; calling it again does no harm.
    static void registerWithUnarchiver();
};
