#include "kit/QWFont.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QFontDatabase>

#include <cmath>

namespace {

const QString familyKey = QStringLiteral("family");
const QString pointSizeKey = QStringLiteral("pointSize");
const QString boldKey = QStringLiteral("bold");
const QString italicKey = QStringLiteral("italic");

// Sizes outside this range are damage, not a choice a user made.
constexpr double minimumPointSize = 1.0;
constexpr double maximumPointSize = 1000.0;

} // namespace

QWFont::QWFont(QString family, double pointSize, bool bold, bool italic)
    : m_family(std::move(family)), m_pointSize(pointSize), m_bold(bold), m_italic(italic)
{ }

std::optional<QWFont> QWFont::fontWithNameSize(const QString &family, double pointSize)
{
    if (!isFamilyInstalled(family))
        return std::nullopt;
    return QWFont(family, pointSize);
}

bool QWFont::isFamilyInstalled(const QString &family)
{
    if (family.isEmpty())
        return false;
    return QFontDatabase::families().contains(family, Qt::CaseInsensitive);
}

QWFont QWFont::withBold(bool bold) const
{
    QWFont font = *this;
    font.m_bold = bold;
    return font;
}

QWFont QWFont::withItalic(bool italic) const
{
    QWFont font = *this;
    font.m_italic = italic;
    return font;
}

QWFont QWFont::withPointSize(double pointSize) const
{
    QWFont font = *this;
    font.m_pointSize = pointSize;
    return font;
}

QFont QWFont::toQFont() const
{
    QFont font(m_family);
    if (m_pointSize > 0.0)
        font.setPointSizeF(m_pointSize);
    font.setBold(m_bold);
    font.setItalic(m_italic);
    return font;
}

QString QWFont::description() const
{
    QString text = QStringLiteral("\"%1\" %2pt").arg(m_family).arg(m_pointSize);
    if (m_bold)
        text += QStringLiteral(" bold");
    if (m_italic)
        text += QStringLiteral(" italic");
    return text;
}

void QWFont::encodeWithCoder(QWKeyedArchiver &coder) const
{
    coder.encodeStringForKey(m_family, familyKey);
    coder.encodeDoubleForKey(m_pointSize, pointSizeKey);
    coder.encodeBoolForKey(m_bold, boldKey);
    coder.encodeBoolForKey(m_italic, italicKey);
}

std::optional<QWFont> QWFont::initWithCoder(const QWKeyedUnarchiver &coder)
{
    const std::optional<QString> family = coder.decodeStringForKey(familyKey);
    const double pointSize = coder.decodeDoubleForKey(pointSizeKey);
    if (!family || family->isEmpty() || !std::isfinite(pointSize) || pointSize < minimumPointSize
        || pointSize > maximumPointSize)
        return std::nullopt;
    return QWFont(
        *family, pointSize, coder.decodeBoolForKey(boldKey), coder.decodeBoolForKey(italicKey));
}
