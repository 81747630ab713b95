#include "kit/QWTextAttributes.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QBrush>
#include <QFont>
#include <QStringList>
#include <QVariant>
#include <QVariantList>

#include <cmath>
#include <limits>

namespace {

const QString fontFamilyKey = QStringLiteral("fontFamily");
const QString fontSizeKey = QStringLiteral("fontSize");
const QString boldKey = QStringLiteral("bold");
const QString italicKey = QStringLiteral("italic");
const QString foregroundColorKey = QStringLiteral("foregroundColor");
const QString underlineStyleKey = QStringLiteral("underlineStyle");
const QString strikethroughStyleKey = QStringLiteral("strikethroughStyle");
const QString strokeColorKey = QStringLiteral("strokeColor");
const QString linkKey = QStringLiteral("link");
const QString tagNameKey = QStringLiteral("tagName");
const QString attachmentKey = QStringLiteral("attachment");
const QString attachmentFileNameKey = QStringLiteral("attachmentFileName");

bool isUsableFontSize(double size)
{
    return std::isfinite(size) && size > 0.0;
}

// A colour as four doubles, which QVariant compares and QTextFormat hashes without help.
QVariant colorVariant(const QWColor &color)
{
    return QVariantList { color.redComponent(), color.greenComponent(), color.blueComponent(),
        color.alphaComponent() };
}

std::optional<QWColor> colorFromVariant(const QVariant &variant)
{
    if (variant.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    const QVariantList components = variant.toList();
    if (components.size() != 4)
        return std::nullopt;
    double values[4] = {};
    for (int i = 0; i < 4; ++i) {
        if (components.at(i).typeId() != QMetaType::Double)
            return std::nullopt;
        values[i] = components.at(i).toDouble();
    }
    return QWColor(values[0], values[1], values[2], values[3]);
}

// The colour a brush shows, if it is a plain colour.
std::optional<QColor> visibleColor(const QTextFormat &format, int property)
{
    if (!format.hasProperty(property))
        return std::nullopt;
    const QBrush brush = format.brushProperty(property);
    if (brush.style() == Qt::NoBrush || brush.gradient() || brush.style() == Qt::TexturePattern)
        return std::nullopt;
    return brush.color();
}

std::optional<int> intProperty(const QTextFormat &format, int property)
{
    const QVariant value = format.property(property);
    if (value.typeId() != QMetaType::Int)
        return std::nullopt;
    return value.toInt();
}

int underlineStyleForQtStyle(QTextCharFormat::UnderlineStyle style)
{
    using A = QWTextAttributes;
    switch (style) {
    case QTextCharFormat::NoUnderline:
        return A::LineStyleNone;
    case QTextCharFormat::DashUnderline:
        return A::LineStyleSingle | A::LinePatternDash;
    case QTextCharFormat::DotLine:
        return A::LineStyleSingle | A::LinePatternDot;
    case QTextCharFormat::DashDotLine:
        return A::LineStyleSingle | A::LinePatternDashDot;
    case QTextCharFormat::DashDotDotLine:
        return A::LineStyleSingle | A::LinePatternDashDotDot;
    case QTextCharFormat::WaveUnderline:
        return A::LineStyleSingle | A::LinePatternWave;
    case QTextCharFormat::SingleUnderline:
    case QTextCharFormat::SpellCheckUnderline:
        break;
    }
    return A::LineStyleSingle;
}

} // namespace

bool QWTextAttributes::hasFont() const
{
    return !m_fontFamily.isEmpty() || m_fontSize > 0.0 || m_bold || m_italic;
}

QWFont QWTextAttributes::font() const
{
    return QWFont(m_fontFamily, m_fontSize, m_bold, m_italic);
}

void QWTextAttributes::setFont(const QWFont &font)
{
    m_fontFamily = font.family();
    m_fontSize = font.pointSize();
    m_bold = font.isBold();
    m_italic = font.isItalic();
}

QTextCharFormat::UnderlineStyle QWTextAttributes::qtUnderlineStyle(int style)
{
    if (style == LineStyleNone)
        return QTextCharFormat::NoUnderline;
    switch (style & linePatternMask) {
    case LinePatternDot:
        return QTextCharFormat::DotLine;
    case LinePatternDash:
        return QTextCharFormat::DashUnderline;
    case LinePatternDashDot:
        return QTextCharFormat::DashDotLine;
    case LinePatternDashDotDot:
        return QTextCharFormat::DashDotDotLine;
    default:
        break;
    }
    if (style & LinePatternWave)
        return QTextCharFormat::WaveUnderline;
    // Qt draws no thick or double lines; a single one at least shows that there is a line. Any
    // other non-zero value is drawn too, so that every stored style survives the editor.
    return QTextCharFormat::SingleUnderline;
}

QTextCharFormat QWTextAttributes::toCharFormat() const
{
    QTextCharFormat format;
    if (!m_fontFamily.isEmpty())
        format.setFontFamilies(QStringList { m_fontFamily });
    if (isUsableFontSize(m_fontSize))
        format.setFontPointSize(m_fontSize);
    if (m_bold)
        format.setFontWeight(QFont::Bold);
    if (m_italic)
        format.setFontItalic(true);
    if (m_foregroundColor) {
        format.setForeground(QBrush(m_foregroundColor->toQColor()));
        format.setProperty(ExactForegroundColorProperty, colorVariant(*m_foregroundColor));
    }
    if (m_underlineStyle != LineStyleNone) {
        format.setUnderlineStyle(qtUnderlineStyle(m_underlineStyle));
        format.setProperty(ExactUnderlineStyleProperty, m_underlineStyle);
    }
    if (m_strikethroughStyle != LineStyleNone) {
        format.setFontStrikeOut(true);
        format.setProperty(ExactStrikethroughStyleProperty, m_strikethroughStyle);
    }
    if (m_strokeColor)
        format.setProperty(StrokeColorProperty, colorVariant(*m_strokeColor));
    if (!m_link.isEmpty()) {
        format.setAnchor(true);
        format.setAnchorHref(m_link);
    }
    if (!m_tagName.isEmpty())
        format.setProperty(TagNameProperty, m_tagName);
    return format;
}

QWTextAttributes QWTextAttributes::fromCharFormat(const QTextCharFormat &format)
{
    QWTextAttributes attributes;

    const QStringList families = format.property(QTextFormat::FontFamilies).toStringList();
    if (!families.isEmpty())
        attributes.m_fontFamily = families.first();
    if (format.hasProperty(QTextFormat::FontPointSize)
        && isUsableFontSize(format.doubleProperty(QTextFormat::FontPointSize)))
        attributes.m_fontSize = format.doubleProperty(QTextFormat::FontPointSize);
    attributes.m_bold
        = format.hasProperty(QTextFormat::FontWeight) && format.fontWeight() >= QFont::DemiBold;
    attributes.m_italic = format.fontItalic();

    if (const std::optional<QColor> visible = visibleColor(format, QTextFormat::ForegroundBrush)) {
        const std::optional<QWColor> exact
            = colorFromVariant(format.property(ExactForegroundColorProperty));
        // The exact colour only stands for the brush it was written with.
        attributes.m_foregroundColor
            = exact && exact->toQColor() == *visible ? *exact : QWColor::fromQColor(*visible);
    }

    QTextCharFormat::UnderlineStyle qtStyle = format.underlineStyle();
    if (!format.hasProperty(QTextFormat::TextUnderlineStyle) && format.fontUnderline())
        qtStyle = QTextCharFormat::SingleUnderline;
    if (qtStyle != QTextCharFormat::NoUnderline) {
        const std::optional<int> exact = intProperty(format, ExactUnderlineStyleProperty);
        attributes.m_underlineStyle = exact && qtUnderlineStyle(*exact) == qtStyle
            ? *exact
            : underlineStyleForQtStyle(qtStyle);
    }

    if (format.fontStrikeOut()) {
        const std::optional<int> exact = intProperty(format, ExactStrikethroughStyleProperty);
        attributes.m_strikethroughStyle
            = exact && *exact != LineStyleNone ? *exact : LineStyleSingle;
    }

    attributes.m_strokeColor = colorFromVariant(format.property(StrokeColorProperty));
    if (format.isAnchor())
        attributes.m_link = format.anchorHref();
    attributes.m_tagName = format.stringProperty(TagNameProperty);
    return attributes;
}

void QWTextAttributes::encodeWithCoder(QWKeyedArchiver &coder) const
{
    if (!m_fontFamily.isEmpty())
        coder.encodeStringForKey(m_fontFamily, fontFamilyKey);
    if (isUsableFontSize(m_fontSize))
        coder.encodeDoubleForKey(m_fontSize, fontSizeKey);
    if (m_bold)
        coder.encodeBoolForKey(true, boldKey);
    if (m_italic)
        coder.encodeBoolForKey(true, italicKey);
    if (m_foregroundColor)
        coder.encodeObjectForKey(*m_foregroundColor, foregroundColorKey);
    if (m_underlineStyle != LineStyleNone)
        coder.encodeIntegerForKey(m_underlineStyle, underlineStyleKey);
    if (m_strikethroughStyle != LineStyleNone)
        coder.encodeIntegerForKey(m_strikethroughStyle, strikethroughStyleKey);
    if (m_strokeColor)
        coder.encodeObjectForKey(*m_strokeColor, strokeColorKey);
    if (!m_link.isEmpty())
        coder.encodeStringForKey(m_link, linkKey);
    if (!m_tagName.isEmpty())
        coder.encodeStringForKey(m_tagName, tagNameKey);
    if (!m_attachment.isEmpty())
        coder.encodeDataForKey(m_attachment, attachmentKey);
    if (!m_attachmentFileName.isEmpty())
        coder.encodeStringForKey(m_attachmentFileName, attachmentFileNameKey);
}

QWTextAttributes QWTextAttributes::decodeFromCoder(const QWKeyedUnarchiver &coder)
{
    // A style is a set of flags in an int; anything wider is not one of ours.
    const auto decodeStyle = [&coder](const QString &key) {
        const qint64 value = coder.decodeIntegerForKey(key);
        const bool fits
            = value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
        return fits ? static_cast<int>(value) : int(LineStyleNone);
    };

    QWTextAttributes attributes;
    attributes.m_fontFamily = coder.decodeStringForKey(fontFamilyKey).value_or(QString());
    if (const double size = coder.decodeDoubleForKey(fontSizeKey); isUsableFontSize(size))
        attributes.m_fontSize = size;
    attributes.m_bold = coder.decodeBoolForKey(boldKey);
    attributes.m_italic = coder.decodeBoolForKey(italicKey);
    attributes.m_foregroundColor = coder.decodeObjectOfClassForKey<QWColor>(foregroundColorKey);
    attributes.m_underlineStyle = decodeStyle(underlineStyleKey);
    attributes.m_strikethroughStyle = decodeStyle(strikethroughStyleKey);
    attributes.m_strokeColor = coder.decodeObjectOfClassForKey<QWColor>(strokeColorKey);
    attributes.m_link = coder.decodeStringForKey(linkKey).value_or(QString());
    attributes.m_tagName = coder.decodeStringForKey(tagNameKey).value_or(QString());
    attributes.m_attachment = coder.decodeDataForKey(attachmentKey).value_or(QByteArray());
    attributes.m_attachmentFileName
        = coder.decodeStringForKey(attachmentFileNameKey).value_or(QString());
    return attributes;
}
