#include "kit/rtf/QWRtfKeyword.h"

#include "kit/QWTextAttributes.h"

#include <string_view>
#include <unordered_map>

namespace {

using A = QWTextAttributes;
using Action = QWRtfKeyword::Action;

const std::unordered_map<std::string_view, QWRtfKeyword> &keywords()
{
    static const std::unordered_map<std::string_view, QWRtfKeyword> table = {
        { "ansi", { Action::CodePage, 1252 } },
        { "mac", { Action::CodePage, 10000 } },
        { "pc", { Action::CodePage, 437 } },
        { "pca", { Action::CodePage, 850 } },
        { "ansicpg", { Action::AnsiCodePage } },
        { "deff", { Action::DefaultFont } },

        { "fonttbl", { Action::FontTable } },
        { "colortbl", { Action::ColorTable } },
        { "pict", { Action::Picture } },
        { "picprop", { Action::PictureProperty } },
        { "sn", { Action::ShapePropertyName } },
        { "sv", { Action::ShapePropertyValue } },
        { "field", { Action::Field } },
        { "fldinst", { Action::FieldInstruction } },
        { "fldrslt", { Action::FieldResult } },
        { "NeXTGraphic", { Action::AttachmentName } },
        { "upr", { Action::UnicodePair } },
        { "ud", { Action::UnicodeAlternative } },
        { "shppict", { Action::ReadThrough } },
        { "listtext", { Action::ReadThrough } },
        { "pntext", { Action::ReadThrough } },

        // Destinations that are no part of the body text.
        { "stylesheet", { Action::SkipDestination } },
        { "info", { Action::SkipDestination } },
        { "header", { Action::SkipDestination } },
        { "headerl", { Action::SkipDestination } },
        { "headerr", { Action::SkipDestination } },
        { "headerf", { Action::SkipDestination } },
        { "footer", { Action::SkipDestination } },
        { "footerl", { Action::SkipDestination } },
        { "footerr", { Action::SkipDestination } },
        { "footerf", { Action::SkipDestination } },
        { "footnote", { Action::SkipDestination } },
        { "ftnsep", { Action::SkipDestination } },
        { "ftnsepc", { Action::SkipDestination } },
        { "ftncn", { Action::SkipDestination } },
        { "aftnsep", { Action::SkipDestination } },
        { "aftnsepc", { Action::SkipDestination } },
        { "aftncn", { Action::SkipDestination } },
        { "annotation", { Action::SkipDestination } },
        { "atnid", { Action::SkipDestination } },
        { "atnauthor", { Action::SkipDestination } },
        { "xe", { Action::SkipDestination } },
        { "tc", { Action::SkipDestination } },
        { "txe", { Action::SkipDestination } },
        { "rxe", { Action::SkipDestination } },
        { "template", { Action::SkipDestination } },
        { "fchars", { Action::SkipDestination } },
        { "lchars", { Action::SkipDestination } },
        { "filetbl", { Action::SkipDestination } },
        { "listtable", { Action::SkipDestination } },
        { "listoverridetable", { Action::SkipDestination } },
        { "revtbl", { Action::SkipDestination } },
        { "rsidtbl", { Action::SkipDestination } },
        { "pgdsctbl", { Action::SkipDestination } },
        { "pn", { Action::SkipDestination } },
        { "pntxta", { Action::SkipDestination } },
        { "pntxtb", { Action::SkipDestination } },
        { "objdata", { Action::SkipDestination } },
        { "objclass", { Action::SkipDestination } },
        { "nonshppict", { Action::SkipDestination } },
        { "nonesttables", { Action::SkipDestination } },

        { "f", { Action::Font } },
        { "fcharset", { Action::FontCharset } },
        { "cpg", { Action::FontCodePage } },
        { "red", { Action::Red } },
        { "green", { Action::Green } },
        { "blue", { Action::Blue } },

        { "plain", { Action::Plain } },
        { "b", { Action::Bold } },
        { "i", { Action::Italic } },
        { "fs", { Action::FontSize } },
        { "ul", { Action::Underline, A::LineStyleSingle } },
        { "ulw", { Action::Underline, A::LineStyleSingle | A::LineByWord } },
        { "uldb", { Action::Underline, A::LineStyleDouble } },
        { "ulth", { Action::Underline, A::LineStyleThick } },
        { "uld", { Action::Underline, A::LineStyleSingle | A::LinePatternDot } },
        { "ulthd", { Action::Underline, A::LineStyleThick | A::LinePatternDot } },
        { "uldash", { Action::Underline, A::LineStyleSingle | A::LinePatternDash } },
        { "ulthdash", { Action::Underline, A::LineStyleThick | A::LinePatternDash } },
        { "ulldash", { Action::Underline, A::LineStyleSingle | A::LinePatternDash } },
        { "ulthldash", { Action::Underline, A::LineStyleThick | A::LinePatternDash } },
        { "uldashd", { Action::Underline, A::LineStyleSingle | A::LinePatternDashDot } },
        { "ulthdashd", { Action::Underline, A::LineStyleThick | A::LinePatternDashDot } },
        { "uldashdd", { Action::Underline, A::LineStyleSingle | A::LinePatternDashDotDot } },
        { "ulthdashdd", { Action::Underline, A::LineStyleThick | A::LinePatternDashDotDot } },
        { "ulwave", { Action::Underline, A::LineStyleSingle | A::LinePatternWave } },
        { "ulhwave", { Action::Underline, A::LineStyleThick | A::LinePatternWave } },
        { "ululdbwave", { Action::Underline, A::LineStyleDouble | A::LinePatternWave } },
        { "ulnone", { Action::Underline, A::LineStyleNone } },
        { "strike", { Action::Strikethrough, A::LineStyleSingle } },
        { "striked", { Action::Strikethrough, A::LineStyleDouble } },
        { "cf", { Action::ForegroundColor } },
        { "v", { Action::Hidden } },

        { "pard", { Action::ParagraphDefaults } },
        { "intbl", { Action::InTable } },
        { "par", { Action::Paragraph } },
        { "sect", { Action::Character, u'\n' } },
        { "line", { Action::Character, 0x2028 } },
        { "tab", { Action::Character, u'\t' } },
        { "emdash", { Action::Character, 0x2014 } },
        { "endash", { Action::Character, 0x2013 } },
        { "emspace", { Action::Character, 0x2003 } },
        { "enspace", { Action::Character, 0x2002 } },
        { "qmspace", { Action::Character, 0x2005 } },
        { "bullet", { Action::Character, 0x2022 } },
        { "lquote", { Action::Character, 0x2018 } },
        { "rquote", { Action::Character, 0x2019 } },
        { "ldblquote", { Action::Character, 0x201C } },
        { "rdblquote", { Action::Character, 0x201D } },
        { "zwbo", { Action::Character, 0x200B } },
        { "zwj", { Action::Character, 0x200D } },
        { "zwnj", { Action::Character, 0x200C } },
        { "ltrmark", { Action::Character, 0x200E } },
        { "rtlmark", { Action::Character, 0x200F } },
        { "cell", { Action::Cell } },
        { "nestcell", { Action::Cell } },
        { "row", { Action::Row } },
        { "nestrow", { Action::Row } },
        { "u", { Action::Unicode } },
        { "uc", { Action::UnicodeSkip } },
    };
    return table;
}

} // namespace

const QWRtfKeyword *QWRtfKeyword::find(QByteArrayView name)
{
    const auto &table = keywords();
    const auto found = table.find(std::string_view(name.data(), size_t(name.size())));
    return found == table.end() ? nullptr : &found->second;
}
