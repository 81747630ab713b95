#include "themes/SNUserTheme.h"

#include "kit/QWKeyedArchiver.h"
#include "kit/QWKeyedUnarchiver.h"

#include <mutex>

namespace {

const QString nameKey = QStringLiteral("name");
const QString startColorKey = QStringLiteral("startColor");
const QString endColorKey = QStringLiteral("endColor");
const QString defaultFontKey = QStringLiteral("defaultFont");
const QString defaultFontColorKey = QStringLiteral("defaultFontColor");
const QString linkColorKey = QStringLiteral("linkColor");
const QString cursorColorKey = QStringLiteral("cursorColor");

} // namespace

SNUserTheme::SNUserTheme()
{
    setEditable(true);
}

std::shared_ptr<SNUserTheme> SNUserTheme::theme()
{
    return std::make_shared<SNUserTheme>();
}

QString SNUserTheme::saveName() const
{
    return QStringLiteral("%1-%2").arg(className(), name());
}

QString SNUserTheme::description() const
{
    return QStringLiteral("<%1 %2 name=%3>")
        .arg(className(), QString::asprintf("%p", static_cast<const void *>(this)),
            hasName() ? name() : QStringLiteral("(null)"));
}

void SNUserTheme::setStartColor(const QWColor &color)
{
    SNTheme::setStartColor(color);
    updateIsDark();
}

void SNUserTheme::updateIsDark()
{
    if (name().isEmpty())
        return;
    setIsDark(startColor().qw_luminosity() < 0.6);
}

void SNUserTheme::encodeWithCoder(QWKeyedArchiver &coder) const
{
    if (hasName())
        coder.encodeStringForKey(name(), nameKey);
    coder.encodeObjectForKey(startColor(), startColorKey);
    coder.encodeObjectForKey(endColor(), endColorKey);
    coder.encodeObjectForKey(defaultFont(), defaultFontKey);
    coder.encodeObjectForKey(defaultFontColor(), defaultFontColorKey);
    coder.encodeObjectForKey(linkColor(), linkColorKey);
    coder.encodeObjectForKey(cursorColor(), cursorColorKey);
}

std::shared_ptr<SNUserTheme> SNUserTheme::initWithCoder(const QWKeyedUnarchiver &coder)
{
    auto theme = SNUserTheme::theme();
    if (const std::optional<QString> name = coder.decodeStringForKey(nameKey))
        theme->setName(*name);
    else
        theme->removeName();
    if (const std::optional<QWColor> color
        = coder.decodeObjectOfClassForKey<QWColor>(startColorKey))
        theme->setStartColor(*color);
    if (const std::optional<QWColor> color = coder.decodeObjectOfClassForKey<QWColor>(endColorKey))
        theme->setEndColor(*color);
    theme->setDefaultFont(coder.decodeObjectOfClassForKey<QWFont>(defaultFontKey));
    if (const std::optional<QWColor> color
        = coder.decodeObjectOfClassForKey<QWColor>(defaultFontColorKey))
        theme->setDefaultFontColor(*color);
    if (const std::optional<QWColor> color = coder.decodeObjectOfClassForKey<QWColor>(linkColorKey))
        theme->setLinkColor(*color);
    if (const std::optional<QWColor> color
        = coder.decodeObjectOfClassForKey<QWColor>(cursorColorKey))
        theme->setCursorColor(*color);
    theme->updateIsDark();
    return theme;
}

void SNUserTheme::registerWithUnarchiver()
{
    static std::once_flag registered;
    std::call_once(registered, [] {
        QWKeyedUnarchiver::registerClass(staticClassName(),
            [](const QWKeyedUnarchiver &coder) { return std::any(initWithCoder(coder)); });
    });
}
