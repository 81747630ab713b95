#pragma once

#include <QByteArrayView>

// Splits RTF bytes into groups, control words, control symbols and text. It allocates nothing:
// every token is a view into the input, which must outlive the tokenizer.
class QWRtfTokenizer final
{
public:
    struct Token
    {
        enum class Type {
            End,
            GroupStart,
            GroupEnd,
            ControlWord, // name in bytes, parameter if hasParameter
            ControlSymbol, // the character after the backslash in symbol
            Text, // bytes, line breaks of the file already left out
            HexByte, // "\'hh", the byte in symbol
            Binary, // the data of a "\binN", in bytes
        };
        Type type = Type::End;
        QByteArrayView bytes;
        int parameter = 0;
        bool hasParameter = false;
        char symbol = 0;
    };

    explicit QWRtfTokenizer(QByteArrayView input) : m_input(input) { }

    Token next();
    qsizetype position() const { return m_position; }
    // A "\binN" asked for more bytes than were left.
    bool binaryWasTruncated() const { return m_binaryWasTruncated; }

private:
    Token controlWord();

    QByteArrayView m_input;
    qsizetype m_position = 0;
    bool m_binaryWasTruncated = false;
};
