#include "kit/rtf/QWRtfFontTable.h"

namespace {

// Names of fonts are short; anything longer is damage.
constexpr qsizetype maximumNameLength = 1024;

} // namespace

void QWRtfFontTable::begin()
{
    m_pendingNumber = -1;
    m_pendingName.clear();
}

void QWRtfFontTable::defineFont(int number)
{
    commitFont();
    m_pendingNumber = number;
    m_pendingPage.reset();
}

void QWRtfFontTable::setCharset(int charset)
{
    // An explicit "\cpgN" wins over the charset, whichever comes first.
    if (!m_pendingPage)
        m_pendingPage = QWRtfCodePage::fromCharset(charset);
}

void QWRtfFontTable::setCodePage(int number)
{
    if (const std::optional<QWRtfCodePage> page = QWRtfCodePage::fromNumber(number))
        m_pendingPage = page;
}

void QWRtfFontTable::appendToName(char16_t c)
{
    if (m_pendingName.size() < maximumNameLength)
        m_pendingName.append(QChar(c));
}

bool QWRtfFontTable::commitFont()
{
    const QString name = m_pendingName.trimmed();
    m_pendingName.clear();
    if (m_pendingNumber < 0 || name.isEmpty())
        return false;
    m_fonts.insert(m_pendingNumber, { name, m_pendingPage });
    return true;
}

const QWRtfFontTable::Font *QWRtfFontTable::font(int number) const
{
    const auto found = m_fonts.constFind(number);
    return found == m_fonts.cend() ? nullptr : &*found;
}
