#include "kit/QWColor.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

namespace {

const QString redKey = QStringLiteral("red");
const QString greenKey = QStringLiteral("green");
const QString blueKey = QStringLiteral("blue");
const QString alphaKey = QStringLiteral("alpha");

double clamp01(double value)
{
    return std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 1.0);
}

} // namespace

QWColor QWColor::colorWithHueSaturationBrightnessAlpha(
    double hue, double saturation, double brightness, double alpha)
{
    hue = clamp01(hue);
    saturation = clamp01(saturation);
    brightness = clamp01(brightness);
    if (saturation == 0.0)
        return { brightness, brightness, brightness, alpha };

    // The usual six-sector HSB to RGB conversion; a hue of 1 is the same as 0.
    const double sector = hue == 1.0 ? 0.0 : hue * 6.0;
    const int index = static_cast<int>(std::floor(sector));
    const double fraction = sector - index;
    const double p = brightness * (1.0 - saturation);
    const double q = brightness * (1.0 - saturation * fraction);
    const double t = brightness * (1.0 - saturation * (1.0 - fraction));
    switch (index) {
    case 0:
        return { brightness, t, p, alpha };
    case 1:
        return { q, brightness, p, alpha };
    case 2:
        return { p, brightness, t, alpha };
    case 3:
        return { p, q, brightness, alpha };
    case 4:
        return { t, p, brightness, alpha };
    default:
        return { brightness, p, q, alpha };
    }
}

QWColor QWColor::fromQColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return { rgb.redF(), rgb.greenF(), rgb.blueF(), rgb.alphaF() };
}

QWColor::HSB QWColor::hsb() const
{
    const double maximum = std::max({ m_red, m_green, m_blue });
    const double minimum = std::min({ m_red, m_green, m_blue });
    const double delta = maximum - minimum;
    HSB result;
    result.brightness = maximum;
    result.alpha = m_alpha;
    result.saturation = maximum > 0.0 ? delta / maximum : 0.0;
    if (delta > 0.0) {
        double hue;
        if (maximum == m_red)
            hue = (m_green - m_blue) / delta;
        else if (maximum == m_green)
            hue = 2.0 + (m_blue - m_red) / delta;
        else
            hue = 4.0 + (m_red - m_green) / delta;
        hue /= 6.0;
        if (hue < 0.0)
            hue += 1.0;
        result.hue = hue;
    }
    return result;
}

QColor QWColor::toQColor() const
{
    return QColor::fromRgbF(static_cast<float>(clamp01(m_red)),
        static_cast<float>(clamp01(m_green)), static_cast<float>(clamp01(m_blue)),
        static_cast<float>(clamp01(m_alpha)));
}

double QWColor::qw_luminosity() const
{
    constexpr float redWeight = 0.299f;
    constexpr float greenWeight = 0.587f;
    constexpr float blueWeight = 0.114f;
    return double(redWeight) * m_red + double(greenWeight) * m_green + double(blueWeight) * m_blue;
}

QWColor QWColor::qw_randomColor()
{
    return qw_randomColor(*QRandomGenerator::global());
}

QWColor QWColor::qw_randomColor(QRandomGenerator &generator)
{
    const double r1 = generator.generate();
    const double r2 = generator.generate();
    const double r3 = generator.generate();
    const double hue = std::fmod(r1, 360.0) / 360.0;
    const double saturation = (std::fmod(r2, 30.0) + 70.0) / 100.0;
    // Divided by 70, not 100: keeps every tag colour fairly bright.
    const double brightness = (std::fmod(r3, 20.0) + 50.0) / 70.0;
    return colorWithHueSaturationBrightnessAlpha(hue, saturation, brightness, 1.0);
}

QWColor QWColor::qw_darkenBy(float amount) const
{
    const HSB components = hsb();
    const float hue = static_cast<float>(components.hue);
    const float saturation = static_cast<float>(components.saturation);
    const float brightness = static_cast<float>(components.brightness);
    const float alpha = static_cast<float>(components.alpha);
    const float darker = brightness - amount * brightness;
    return colorWithHueSaturationBrightnessAlpha(hue, saturation, darker, alpha);
}

QString QWColor::description() const
{
    return QStringLiteral("QWColor(%1 %2 %3 %4)")
        .arg(m_red, 0, 'g', 6)
        .arg(m_green, 0, 'g', 6)
        .arg(m_blue, 0, 'g', 6)
        .arg(m_alpha, 0, 'g', 6);
}

void QWColor::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeDoubleForKey(m_red, redKey);
    coder.encodeDoubleForKey(m_green, greenKey);
    coder.encodeDoubleForKey(m_blue, blueKey);
    coder.encodeDoubleForKey(m_alpha, alphaKey);
}

std::optional<QWColor> QWColor::initWithCoder(const QWKeyedUnarchiver &coder)
{
    if (!coder.containsValueForKey(redKey) || !coder.containsValueForKey(greenKey)
        || !coder.containsValueForKey(blueKey))
        return std::nullopt;
    const double alpha
        = coder.containsValueForKey(alphaKey) ? coder.decodeDoubleForKey(alphaKey) : 1.0;
    // Components out of range or not numbers would draw garbage; clamp them.
    return QWColor(clamp01(coder.decodeDoubleForKey(redKey)),
        clamp01(coder.decodeDoubleForKey(greenKey)), clamp01(coder.decodeDoubleForKey(blueKey)),
        clamp01(alpha));
}
