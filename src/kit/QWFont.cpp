#include "kit/QWFont.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <QFontDatabase>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

const QString familyKey = QStringLiteral("family");
const QString pointSizeKey = QStringLiteral("pointSize");
const QString boldKey = QStringLiteral("bold");
const QString italicKey = QStringLiteral("italic");

// Sizes outside this range are damage, not a choice a user made.
constexpr double minimumPointSize = 1.0;
constexpr double maximumPointSize = 1000.0;

// The only place that knows which installed fonts stand in for the ones themes name. Every
// look-alike comes from a Debian package that ./build.sh installs, except Nimbus Sans
// (fonts-urw-base35, pulled in by Ghostscript on most desktops), which is Helvetica's own
// metric clone and so preferred when it is there. Menlo is itself derived from DejaVu Sans Mono.
const QList<std::pair<QString, QStringList>> &substitutions()
{
    static const QList<std::pair<QString, QStringList>> table = {
        { QStringLiteral("Helvetica Neue"),
            { QStringLiteral("Nimbus Sans"), QStringLiteral("Liberation Sans"),
                QStringLiteral("DejaVu Sans") } },
        // The face the tag cloud names, by its PostScript name.
        { QStringLiteral("HelveticaNeue-Medium"),
            { QStringLiteral("Nimbus Sans"), QStringLiteral("Liberation Sans"),
                QStringLiteral("DejaVu Sans") } },
        { QStringLiteral("Menlo"),
            { QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Liberation Mono") } },
        { QStringLiteral("Monaco"),
            { QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Liberation Mono") } },
        { QStringLiteral("Georgia"),
            { QStringLiteral("DejaVu Serif"), QStringLiteral("Liberation Serif") } },
    };
    return table;
}

} // namespace

QWFont::QWFont(QString family, double pointSize, bool bold, bool italic)
    : m_family(std::move(family)), m_pointSize(pointSize), m_bold(bold), m_italic(italic)
{ }

std::optional<QWFont> QWFont::fontWithNameSize(const QString &family, double pointSize)
{
    if (!isFamilyAvailable(family))
        return std::nullopt;
    return QWFont(family, pointSize);
}

bool QWFont::isFamilyAvailable(const QString &family)
{
    if (isFamilyInstalled(family))
        return true;
    const QStringList lookAlikes = substitutesForFamily(family);
    return std::any_of(lookAlikes.cbegin(), lookAlikes.cend(), &QWFont::isFamilyInstalled);
}

bool QWFont::isFamilyInstalled(const QString &family)
{
    // Without a font database (a tool or test with no QGuiApplication) no font is installed,
    // and themes take their fallback fonts instead of aborting.
    if (family.isEmpty() || !qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    // A family that several foundries provide is listed once per foundry, as "Nimbus Sans [urw]".
    for (const QString &listed : QFontDatabase::families()) {
        if (listed.compare(family, Qt::CaseInsensitive) == 0)
            return true;
        const qsizetype foundry = listed.indexOf(QLatin1String(" ["));
        if (foundry > 0
            && QStringView(listed).left(foundry).compare(family, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
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

QStringList QWFont::substitutesForFamily(const QString &family)
{
    for (const auto &[named, lookAlikes] : substitutions()) {
        if (family.compare(named, Qt::CaseInsensitive) == 0)
            return lookAlikes;
    }
    return {};
}

QString QWFont::substitutedFamily(const QString &family)
{
    if (isFamilyInstalled(family))
        return family;
    for (const QString &lookAlike : substitutesForFamily(family)) {
        if (isFamilyInstalled(lookAlike))
            return lookAlike;
    }
    return family;
}

QFont QWFont::toQFont() const
{
    QFont font(m_family);
    font.setFamilies(QStringList { m_family } + substitutesForFamily(m_family));
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
