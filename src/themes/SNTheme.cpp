#include "themes/SNTheme.h"

SNTheme::SNTheme()
    : m_name(QStringLiteral("")),
      m_startColor(QWColor::white()),
      m_endColor(QWColor::white()),
      m_defaultFont(QWFont::fontWithNameSize(QStringLiteral("Helvetica Neue"), 14)),
      m_defaultFontColor(QWColor::black()),
      m_linkColor(0.0627, 0.2471, 0.9843, 1.0),
      m_cursorColor(QWColor::black())
{ }

SNTheme::~SNTheme() = default;

std::shared_ptr<SNTheme> SNTheme::theme()
{
    return std::make_shared<SNTheme>();
}

QWFont SNTheme::fallbackFont() const
{
    return QWFont(QStringLiteral("Helvetica Neue"), 14);
}

void SNTheme::setName(const QString &name)
{
    // An editor's empty field may hand over a null string; that must not read as "no name".
    m_name = name.isNull() ? QStringLiteral("") : name;
}

void SNTheme::setStartColor(const QWColor &color)
{
    m_startColor = color;
}

QWFont SNTheme::defaultFont() const
{
    return m_defaultFont ? *m_defaultFont : fallbackFont();
}
