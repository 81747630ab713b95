// The RTF codec on a document of about 1 MB: writing, as an export does, and reading, as
// opening a file with the application does.
#include "kit/rtf/QWRtfReader.h"
#include "kit/rtf/QWRtfWriter.h"

#include <QBuffer>
#include <QImage>

#include <benchmark/benchmark.h>

namespace {

constexpr qsizetype documentBytes = 1024 * 1024;

QByteArray smallPng()
{
    QImage image(32, 32, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// Paragraphs of mixed runs as notes have them: plain text, bold, italic, colour, a link,
// non-ASCII words, and now and then an image.
QWAttributedString makeParagraphs(int count)
{
    QWTextAttributes plain;
    plain.setFontFamily(QStringLiteral("DejaVu Sans"));
    plain.setFontSize(14);
    QWTextAttributes bold = plain;
    bold.setBold(true);
    QWTextAttributes italic = plain;
    italic.setItalic(true);
    QWTextAttributes red = plain;
    red.setForegroundColor(QWColor(0.8, 0.1, 0.1));
    red.setUnderlineStyle(QWTextAttributes::LineStyleDouble);
    QWTextAttributes link = plain;
    link.setLink(QStringLiteral("https://example.org/notes?id=42"));
    QWTextAttributes image = plain;
    image.setAttachment(smallPng());
    image.setAttachmentFileName(QStringLiteral("picture.png"));

    QWMutableAttributedString text;
    for (int paragraph = 0; paragraph < count; ++paragraph) {
        text.appendString(QStringLiteral("Remember the milk, call Anna about "), plain);
        text.appendString(QStringLiteral("#work"), bold);
        text.appendString(QStringLiteral(" and water the plants; "), plain);
        text.appendString(QStringLiteral("Grüße aus Köln, café — 日本語 😀"), italic);
        text.appendString(QStringLiteral(" before "), plain);
        text.appendString(QStringLiteral("Friday"), red);
        text.appendString(QStringLiteral(", see "), plain);
        text.appendString(QStringLiteral("the list"), link);
        text.appendString(QStringLiteral(".\tDone\n"), plain);
        if (paragraph % 200 == 0)
            text.appendString(QStringLiteral("\uFFFC\n"), image);
    }
    return text.attributedString();
}

// As many paragraphs as make about 1 MB of RTF.
QWAttributedString makeDocument()
{
    constexpr int sample = 400;
    const qsizetype sampleBytes = QWRtfWriter().write(makeParagraphs(sample)).size();
    return makeParagraphs(int(sample * documentBytes / sampleBytes));
}

void BM_WriteRtf(benchmark::State &state)
{
    const QWAttributedString text = makeDocument();
    const QWRtfWriter writer;
    qsizetype written = 0;
    for (auto _ : state) {
        const QByteArray rtf = writer.write(text);
        benchmark::DoNotOptimize(rtf.constData());
        written = rtf.size();
    }
    state.SetBytesProcessed(state.iterations() * written);
    state.counters["rtf_bytes"] = double(written);
    state.counters["characters"] = double(text.length());
}
BENCHMARK(BM_WriteRtf)->Unit(benchmark::kMillisecond);

void BM_ReadRtf(benchmark::State &state)
{
    const QByteArray rtf = QWRtfWriter().write(makeDocument());
    const QWRtfReader reader;
    for (auto _ : state) {
        const QWRtfReadResult result = reader.read(rtf);
        benchmark::DoNotOptimize(result.text.string().constData());
    }
    state.SetBytesProcessed(state.iterations() * rtf.size());
    state.counters["rtf_bytes"] = double(rtf.size());
}
BENCHMARK(BM_ReadRtf)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
