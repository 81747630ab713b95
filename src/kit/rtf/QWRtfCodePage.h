#pragma once

#include <optional>

// The single-byte code pages that "\'hh" escapes and 8-bit text of RTF files come in. Only the
// pages people's files actually use are known, by table, so that no conversion library is needed:
// Windows-1252 (the "\ansi" default), Mac Roman ("\mac", 10000) and ISO 8859-1.
class QWRtfCodePage final
{
public:
    enum class Page { Windows1252, MacRoman, Latin1 };

    constexpr QWRtfCodePage() = default;
    constexpr explicit QWRtfCodePage(Page page) : m_page(page) { }

    // The page of an "\ansicpgN" or "\cpgN" number; nothing for a page without a table.
    static std::optional<QWRtfCodePage> fromNumber(int number);
    // The page of a font's "\fcharsetN"; nothing when the charset has no table here.
    static std::optional<QWRtfCodePage> fromCharset(int charset);

    Page page() const { return m_page; }
    char16_t toUnicode(unsigned char byte) const;
    // The byte that stands for the character on this page, for the fallback of a "\uN".
    std::optional<unsigned char> fromUnicode(char16_t character) const;

    friend bool operator==(const QWRtfCodePage &, const QWRtfCodePage &) = default;

private:
    Page m_page = Page::Windows1252;
};
