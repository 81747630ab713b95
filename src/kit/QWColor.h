#pragma once

#include <QColor>
#include <QString>

#include <optional>

class QRandomGenerator;
class QWKeyedArchiver;
class QWKeyedUnarchiver;

// A colour as the notes store it: device RGB components and alpha, each 0 to 1, kept as
// doubles so that theme colours survive archiving exactly (QColor keeps only 16 bits).
class QWColor final
{
public:
    struct HSB
    {
        double hue = 0.0; // 0 to 1
        double saturation = 0.0;
        double brightness = 0.0;
        double alpha = 1.0;
    };

    constexpr QWColor() = default;
    constexpr QWColor(double red, double green, double blue, double alpha = 1.0)
        : m_red(red), m_green(green), m_blue(blue), m_alpha(alpha)
    { }

    static QWColor white() { return { 1.0, 1.0, 1.0, 1.0 }; }
    static QWColor black() { return { 0.0, 0.0, 0.0, 1.0 }; }

    static QWColor colorWithHueSaturationBrightnessAlpha(
        double hue, double saturation, double brightness, double alpha);
    static QWColor fromQColor(const QColor &color);

    double redComponent() const { return m_red; }
    double greenComponent() const { return m_green; }
    double blueComponent() const { return m_blue; }
    double alphaComponent() const { return m_alpha; }

    HSB hsb() const;
    QColor toQColor() const;

    // 0.299 R + 0.587 G + 0.114 B, the weights taken as single-precision constants.
    double qw_luminosity() const;
    // A random opaque colour for a new tag: saturation 0.70 to 0.99, brightness 50/70 to 69/70.
    static QWColor qw_randomColor();
    static QWColor qw_randomColor(QRandomGenerator &generator);
    // Brightness b becomes b - amount * b; hue, saturation and alpha are kept.
    QWColor qw_darkenBy(float amount) const;

    // "r g b a", for logs and descriptions.
    QString description() const;

    static QString className() { return QStringLiteral("QWColor"); }
    void encodeWithCoder(QWKeyedArchiver &coder) const;
    static std::optional<QWColor> initWithCoder(const QWKeyedUnarchiver &coder);

    friend bool operator==(const QWColor &, const QWColor &) = default;

private:
    double m_red = 0.0;
    double m_green = 0.0;
    double m_blue = 0.0;
    double m_alpha = 1.0;
};
