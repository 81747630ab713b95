#pragma once

#include "kit/rtf/QWRtfCodePage.h"

#include <QHash>
#include <QString>

#include <optional>

// The font table of an RTF document ("\fonttbl"): each font's name by its number, and the code
// page its bytes are in when the font names one. Entries are read one at a time: "\fN", the
// charset or code page, the name, and a semicolon or the end of the entry's group.
class QWRtfFontTable final
{
public:
    struct Font
    {
        QString name;
        std::optional<QWRtfCodePage> codePage;
    };

    // Starts the table over for a "\fonttbl" group.
    void begin();
    // "\fN": a new entry; the one before it is committed.
    void defineFont(int number);
    void setCharset(int charset);
    void setCodePage(int number);
    void appendToName(char16_t c);
    // Adds the entry read so far, if it has a number and a name; returns whether it did.
    bool commitFont();

    // The code page of the entry being read, for the bytes of its name.
    std::optional<QWRtfCodePage> pendingCodePage() const { return m_pendingPage; }
    const Font *font(int number) const;

private:
    QHash<int, Font> m_fonts;
    int m_pendingNumber = -1;
    QString m_pendingName;
    std::optional<QWRtfCodePage> m_pendingPage;
};
