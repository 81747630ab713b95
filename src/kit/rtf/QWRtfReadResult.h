#pragma once

#include "kit/QWAttributedString.h"

#include <QString>

// What reading an RTF file or RTFD package gave: the text, and why it may be incomplete. A
// damaged file still gives the text read up to the damage.
struct QWRtfReadResult final
{
    enum class Error {
        None,
        Unreadable, // the file or package could not be opened
        NotRtf, // the bytes do not begin an RTF document; the text is empty
        Truncated, // the document ends before its groups are closed
        NestingTooDeep, // reading stopped at a group nested deeper than the reader allows
    };

    QWAttributedString text;
    Error error = Error::None;

    bool isOk() const { return error == Error::None; }
    // A sentence for logs; empty when there is no error.
    QString errorString() const;
};
