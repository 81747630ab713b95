#include "kit/rtf/QWRtfTokenizer.h"

#include <algorithm>
#include <limits>

namespace {

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexValue(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

QWRtfTokenizer::Token QWRtfTokenizer::next()
{
    using Type = Token::Type;
    const qsizetype size = m_input.size();
    // Line breaks in the file carry no meaning.
    while (m_position < size && (m_input[m_position] == '\r' || m_input[m_position] == '\n'))
        ++m_position;
    if (m_position >= size)
        return {};

    const char c = m_input[m_position];
    if (c == '{' || c == '}') {
        ++m_position;
        return { c == '{' ? Type::GroupStart : Type::GroupEnd, {}, 0, false, 0 };
    }
    if (c != '\\') {
        const qsizetype start = m_position;
        while (m_position < size) {
            const char t = m_input[m_position];
            if (t == '\\' || t == '{' || t == '}' || t == '\r' || t == '\n')
                break;
            ++m_position;
        }
        return { Type::Text, m_input.sliced(start, m_position - start), 0, false, 0 };
    }

    ++m_position;
    if (m_position >= size)
        return {};
    const char after = m_input[m_position];
    if (isLetter(after))
        return controlWord();
    ++m_position;
    if (after == '\'') {
        if (m_position + 2 > size)
            return {}; // cut off
        const int high = hexValue(m_input[m_position]);
        const int low = hexValue(m_input[m_position + 1]);
        if (high >= 0 && low >= 0) {
            m_position += 2;
            return { Type::HexByte, {}, 0, false, static_cast<char>(high * 16 + low) };
        }
    }
    return { Type::ControlSymbol, {}, 0, false, after };
}

QWRtfTokenizer::Token QWRtfTokenizer::controlWord()
{
    const qsizetype size = m_input.size();
    const qsizetype start = m_position;
    while (m_position < size && isLetter(m_input[m_position]))
        ++m_position;
    Token token { Token::Type::ControlWord, m_input.sliced(start, m_position - start), 0, false,
        0 };

    bool negative = false;
    if (m_position + 1 == size && m_input[m_position] == '-')
        return {}; // the digits of a negative parameter are cut off
    if (m_position + 1 < size && m_input[m_position] == '-' && isDigit(m_input[m_position + 1])) {
        negative = true;
        ++m_position;
    }
    if (m_position < size && isDigit(m_input[m_position])) {
        // Saturates rather than wraps, so that a huge value stays huge for the range checks.
        constexpr long long limit = std::numeric_limits<int>::max();
        long long value = 0;
        while (m_position < size && isDigit(m_input[m_position])) {
            value = std::min(limit, value * 10 + (m_input[m_position] - '0'));
            ++m_position;
        }
        token.hasParameter = true;
        token.parameter = static_cast<int>(negative ? -value : value);
    }
    // A word the input ends in may have lost letters or digits; it is not acted on.
    if (m_position >= size)
        return {};
    if (m_input[m_position] == ' ')
        ++m_position;

    if (token.bytes == "bin") {
        const qsizetype wanted = token.hasParameter ? std::max(token.parameter, 0) : 0;
        const qsizetype available = std::min(wanted, size - m_position);
        m_binaryWasTruncated = m_binaryWasTruncated || available < wanted;
        token = { Token::Type::Binary, m_input.sliced(m_position, available), 0, false, 0 };
        m_position += available;
    }
    return token;
}
