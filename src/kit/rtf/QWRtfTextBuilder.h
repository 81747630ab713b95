#pragma once

#include "kit/QWAttributedString.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <functional>

// Collects the text an RTF reader finds, in runs of equal attributes. The attributes are asked
// for only when the reader has said they may have changed, and a run goes on while they stay
// the same. Table cells become tab-separated text: tabs and the paragraph ends inside a cell
// wait for the text that follows them, so that a row's last cell adds no tab and a cell's last
// paragraph no line.
class QWRtfTextBuilder final
{
public:
    using AttributesSource = std::function<QWTextAttributes()>;

    explicit QWRtfTextBuilder(AttributesSource currentAttributes);

    // The formatting, a font or a colour may have changed since the last character.
    void invalidateAttributes() { m_attributesStale = true; }

    void appendCharacter(char16_t c);
    // Printable ASCII only.
    void appendPlain(QByteArrayView ascii);
    // One object replacement character that carries the file.
    void appendAttachment(const QByteArray &bytes, const QString &name);

    void paragraphInCell() { ++m_pendingBreaks; }
    void cellDidEnd();
    void rowDidEnd();

    QWAttributedString take();

private:
    void flushTable();
    void append(char16_t c);

    AttributesSource m_currentAttributes;
    QString m_text;
    QList<QWTextRun> m_runs;
    QWTextAttributes m_attributes;
    bool m_attributesStale = true;
    bool m_lastRunMatches = false;
    int m_pendingCells = 0;
    int m_pendingBreaks = 0;
};
