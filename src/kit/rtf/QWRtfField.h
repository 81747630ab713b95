#pragma once

#include <QString>
#include <QStringView>

// The instruction of an RTF field as far as links go: "HYPERLINK "url"" with its switches.
class QWRtfField final
{
public:
    // The link target of a HYPERLINK instruction, "#name" for one that only names a bookmark
    // ("\l"); empty for every other field.
    static QString linkFromInstruction(QStringView instruction);
    // The instruction of a field that links to url.
    static QString instructionForLink(const QString &url);
};
