#pragma once

#include "kit/QWAttributedString.h"

#include <QList>
#include <QString>

#include <array>

// Formats that a notes program keeps as ranges over its text, applied all at once: a sweep over
// the ranges' edges, so that any number of them, overlapping as they like, costs no more than
// sorting them.
class SNImportTextRanges final
{
public:
    enum Format { Bold, Italic, Monospace, Underline, Strikethrough, Link, FormatCount };
    // Font sizes rank by their slot: where two overlap, the higher slot wins, as in a program
    // whose later tags win.
    static constexpr int sizeSlots = 4;

    // [start, end) in the text's UTF-16 positions; empty ranges are dropped. A link's address is
    // the text of its range.
    void add(Format format, qsizetype start, qsizetype end);
    void addSize(int slot, double pointSize, qsizetype start, qsizetype end);

    QWAttributedString apply(const QString &text) const;

private:
    struct Range
    {
        int kind; // a Format, or FormatCount + a size slot
        qsizetype start;
        qsizetype end;
    };
    QList<Range> m_ranges;
    std::array<double, sizeSlots> m_sizes {};
};
