#include "import/SNImportThemeMatcher.h"

#include "kit/QWColor.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"

#include <QStringList>

#include <array>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

// sRGB to CIE L*a*b* under D65.
std::array<double, 3> lab(const QColor &color)
{
    const auto linear
        = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    const double r = linear(color.redF()), g = linear(color.greenF()), b = linear(color.blueF());
    const double x = (0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.95047;
    const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    const double z = (0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.08883;
    const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0; };
    return { 116.0 * f(y) - 16.0, 500.0 * (f(x) - f(y)), 200.0 * (f(y) - f(z)) };
}

QColor qColor(const QWColor &color)
{
    return QColor::fromRgbF(
        float(color.redComponent()), float(color.greenComponent()), float(color.blueComponent()));
}

// What the eye takes for a gradient's colour: its middle.
QColor middleColor(const SNTheme &theme)
{
    const QColor start = qColor(theme.startColor()), end = qColor(theme.endColor());
    return QColor::fromRgbF((start.redF() + end.redF()) / 2, (start.greenF() + end.greenF()) / 2,
        (start.blueF() + end.blueF()) / 2);
}

} // namespace

SNImportThemeMatcher::SNImportThemeMatcher(SNThemeManager &themes) : m_themes(themes) { }

double SNImportThemeMatcher::distance(const QColor &a, const QColor &b)
{
    const auto la = lab(a), lb = lab(b);
    return std::hypot(la[0] - lb[0], la[1] - lb[1], la[2] - lb[2]);
}

QString SNImportThemeMatcher::themeNameFor(const std::optional<QColor> &background,
    const std::optional<QColor> &text, const QString &colorName, const QString &programName)
{
    if (!background || !background->isValid())
        return QString();
    const QColor wanted = background->toRgb();
    const auto textMatches = [&text](const SNTheme &theme) {
        return !text || distance(*text, qColor(theme.defaultFontColor())) < sameColorDistance * 4;
    };
    const std::shared_ptr<SNTheme> *nearest = nullptr;
    double nearestDistance = sameColorDistance;
    for (const std::shared_ptr<SNTheme> &theme : m_themes.themes()) {
        const double d = distance(wanted, middleColor(*theme));
        if (d < nearestDistance && textMatches(*theme)) {
            nearest = &theme;
            nearestDistance = d;
        }
    }
    if (nearest)
        return (*nearest)->saveName();

    QString label = colorName.trimmed();
    if (label.isEmpty())
        label = wanted.name();
    else
        label[0] = label[0].toUpper();
    QString name = u"%1: %2"_s.arg(programName, label);
    for (int n = 2; m_themes.userThemeWithName(name); ++n)
        name = u"%1: %2 %3"_s.arg(programName, label).arg(n);

    const QColor textColor = text && text->isValid() ? text->toRgb()
        : wanted.lightnessF() < 0.55                 ? QColor(Qt::white)
                                                     : QColor(Qt::black);
    const std::shared_ptr<SNUserTheme> theme = SNUserTheme::theme();
    theme->setName(name);
    theme->setStartColor(QWColor::fromQColor(wanted));
    theme->setEndColor(QWColor::fromQColor(wanted));
    theme->setDefaultFontColor(QWColor::fromQColor(textColor));
    theme->setCursorColor(QWColor::fromQColor(textColor));
    m_themes.addTheme(theme);
    m_themes.save();
    m_themesMade.append(name);
    return theme->saveName();
}
