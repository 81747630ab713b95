#pragma once

#include <QByteArrayView>

// A control word the RTF reader acts on, and what it does: the reader's vocabulary, from
// "\ansi" to "\zwnj". Words that are not here are ignored, as RTF readers must.
struct QWRtfKeyword final
{
    enum class Action {
        // Document
        CodePage, // value: the page number
        AnsiCodePage,
        DefaultFont,
        // Destinations
        SkipDestination,
        FontTable,
        ColorTable,
        Picture,
        PictureProperty,
        ShapePropertyName,
        ShapePropertyValue,
        Field,
        FieldInstruction,
        FieldResult,
        AttachmentName,
        UnicodePair,
        UnicodeAlternative,
        ReadThrough, // a destination whose text is document text, such as list numbers
        // Font and colour tables
        Font,
        FontCharset,
        FontCodePage,
        Red,
        Green,
        Blue,
        // Character formatting
        Plain,
        Bold,
        Italic,
        FontSize,
        Underline, // value: the style
        Strikethrough, // value: the style
        ForegroundColor,
        Hidden,
        // Paragraph formatting
        ParagraphDefaults,
        InTable,
        // Text
        Character, // value: the character
        Paragraph,
        Cell,
        Row,
        Unicode,
        UnicodeSkip,
    };

    Action action;
    int value = 0;

    // Nothing for a word the reader does not know.
    static const QWRtfKeyword *find(QByteArrayView name);
};
