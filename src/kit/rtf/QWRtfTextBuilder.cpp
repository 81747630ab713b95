#include "kit/rtf/QWRtfTextBuilder.h"

#include <utility>

namespace {

constexpr char16_t attachmentCharacter = 0xFFFC;

} // namespace

QWRtfTextBuilder::QWRtfTextBuilder(AttributesSource currentAttributes)
    : m_currentAttributes(std::move(currentAttributes))
{ }

void QWRtfTextBuilder::appendCharacter(char16_t c)
{
    flushTable();
    append(c);
}

void QWRtfTextBuilder::appendPlain(QByteArrayView ascii)
{
    flushTable();
    append(char16_t(ascii.front()));
    m_runs.last().length += ascii.size() - 1;
    m_text.append(QLatin1StringView(ascii.sliced(1)));
}

void QWRtfTextBuilder::appendAttachment(const QByteArray &bytes, const QString &name)
{
    flushTable();
    QWTextAttributes attributes = m_currentAttributes();
    attributes.setAttachment(bytes);
    attributes.setAttachmentFileName(name);
    m_runs.append({ m_text.size(), 1, attributes });
    m_text.append(QChar(attachmentCharacter));
    m_lastRunMatches = false;
}

void QWRtfTextBuilder::cellDidEnd()
{
    m_pendingBreaks = 0;
    ++m_pendingCells;
}

void QWRtfTextBuilder::rowDidEnd()
{
    m_pendingCells = 0;
    m_pendingBreaks = 0;
}

QWAttributedString QWRtfTextBuilder::take()
{
    return QWAttributedString(std::exchange(m_text, QString()), std::exchange(m_runs, {}));
}

void QWRtfTextBuilder::flushTable()
{
    for (; m_pendingCells > 0; --m_pendingCells)
        append(u'\t');
    for (; m_pendingBreaks > 0; --m_pendingBreaks)
        append(u'\n');
}

void QWRtfTextBuilder::append(char16_t c)
{
    if (m_attributesStale) {
        m_attributesStale = false;
        m_attributes = m_currentAttributes();
        m_lastRunMatches = !m_runs.isEmpty() && m_runs.last().attributes == m_attributes;
    }
    if (!m_lastRunMatches) {
        m_runs.append({ m_text.size(), 0, m_attributes });
        m_lastRunMatches = true;
    }
    ++m_runs.last().length;
    m_text.append(QChar(c));
}
