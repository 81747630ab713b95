#include "import/SNImportTextRanges.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

void SNImportTextRanges::add(Format format, qsizetype start, qsizetype end)
{
    if (start < end)
        m_ranges.append({ format, start, end });
}

void SNImportTextRanges::addSize(int slot, double pointSize, qsizetype start, qsizetype end)
{
    if (start < end && slot >= 0 && slot < sizeSlots) {
        m_sizes[slot] = pointSize;
        m_ranges.append({ FormatCount + slot, start, end });
    }
}

QWAttributedString SNImportTextRanges::apply(const QString &text) const
{
    struct Edge
    {
        qsizetype at;
        int delta;
        qsizetype range;
    };
    QList<Edge> edges;
    edges.reserve(m_ranges.size() * 2);
    for (qsizetype i = 0; i < m_ranges.size(); ++i) {
        const qsizetype start = std::clamp<qsizetype>(m_ranges[i].start, 0, text.size());
        const qsizetype end = std::clamp<qsizetype>(m_ranges[i].end, 0, text.size());
        if (start < end) {
            edges.append({ start, +1, i });
            edges.append({ end, -1, i });
        }
    }
    std::stable_sort(
        edges.begin(), edges.end(), [](const Edge &a, const Edge &b) { return a.at < b.at; });

    QList<QWTextRun> runs;
    std::array<qsizetype, FormatCount + sizeSlots> open {};
    qsizetype link = -1; // the range whose address the linked text has
    qsizetype at = 0;
    for (qsizetype e = 0; e <= edges.size(); ++e) {
        const qsizetype next = e < edges.size() ? edges[e].at : text.size();
        if (next > at) {
            QWTextAttributes attributes;
            attributes.setBold(open[Bold] > 0);
            attributes.setItalic(open[Italic] > 0);
            if (open[Monospace] > 0)
                attributes.setFontFamily(u"Monospace"_s);
            if (open[Underline] > 0)
                attributes.setUnderlineStyle(QWTextAttributes::LineStyleSingle);
            if (open[Strikethrough] > 0)
                attributes.setStrikethroughStyle(QWTextAttributes::LineStyleSingle);
            if (open[Link] > 0 && link >= 0) {
                const Range &range = m_ranges[link];
                const qsizetype end = std::min(range.end, text.size());
                attributes.setLink(text.sliced(range.start, end - range.start).trimmed());
            }
            for (int slot = sizeSlots - 1; slot >= 0; --slot) {
                if (open[FormatCount + slot] > 0) {
                    attributes.setFontSize(m_sizes[slot]);
                    break;
                }
            }
            runs.append({ at, next - at, attributes });
            at = next;
        }
        if (e == edges.size())
            break;
        const Edge &edge = edges[e];
        open[m_ranges[edge.range].kind] += edge.delta;
        if (m_ranges[edge.range].kind == Link) {
            if (edge.delta > 0)
                link = edge.range;
            else if (link == edge.range)
                link = -1;
        }
    }
    return QWAttributedString(text, runs);
}
