#include "kit/rtf/QWRtfReadResult.h"

QString QWRtfReadResult::errorString() const
{
    switch (error) {
    case Error::None:
        break;
    case Error::Unreadable:
        return QStringLiteral("The file could not be read.");
    case Error::NotRtf:
        return QStringLiteral("The file is not an RTF document.");
    case Error::Truncated:
        return QStringLiteral("The RTF document ends before it is complete.");
    case Error::NestingTooDeep:
        return QStringLiteral("The RTF document nests its groups too deeply.");
    }
    return {};
}
