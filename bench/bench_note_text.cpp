// What a note does with its text after each pause in typing, on notes of a few KB (the usual
// size) and of 1 MB: reading its tags, counting it, marking the tags in the stored text, and
// drawing the tags and spelling marks of the whole document afresh.
#include "kit/QWAttributedString.h"
#include "kit/QWSpellChecker.h"
#include "notes/SNTextCounter.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTagManager.h"
#include "themeview/SNLinkHighlighter.h"

#include <QApplication>
#include <QTextDocument>

#include <benchmark/benchmark.h>

namespace {

// Sentences with a hashtag every ten words or so, some of them repeated, and paragraphs.
QString noteText(qsizetype bytes)
{
    static const QStringList words = { QStringLiteral("the"), QStringLiteral("meeting"),
        QStringLiteral("moved"), QStringLiteral("to"), QStringLiteral("Thursday,"),
        QStringLiteral("bring"), QStringLiteral("notes"), QStringLiteral("and"),
        QStringLiteral("café"), QStringLiteral("receipts.") };
    QString text;
    text.reserve(bytes + 64);
    int word = 0;
    while (text.size() < bytes) {
        if (word % 10 == 9)
            text += QStringLiteral("#topic%1 ").arg(word % 230);
        else
            text += words[word % words.size()] + QLatin1Char(' ');
        if (word % 60 == 59)
            text += QLatin1Char('\n');
        ++word;
    }
    return text;
}

void BM_TokenizeTags(benchmark::State &state)
{
    const QString text = noteText(state.range(0));
    SNTagManager tags;
    for (auto _ : state)
        benchmark::DoNotOptimize(SNHashtagScanner::tokenizeTags(text, tags));
    state.SetBytesProcessed(state.iterations() * text.size() * qsizetype(sizeof(QChar)));
}

void BM_CountWords(benchmark::State &state)
{
    const QString text = noteText(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(SNTextCounter::countOfText(text, SNTextCounter::CountWords));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * qsizetype(sizeof(QChar)));
}

void BM_CountCharacters(benchmark::State &state)
{
    const QString text = noteText(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(SNTextCounter::countOfText(text, SNTextCounter::CountCharacters));
    }
    state.SetBytesProcessed(state.iterations() * text.size() * qsizetype(sizeof(QChar)));
}

// What a save adds for the tags: the stored text marked with every occurrence.
void BM_TaggedString(benchmark::State &state)
{
    const QWAttributedString text(noteText(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(SNHashtagScanner::taggedString(text));
    state.SetBytesProcessed(state.iterations() * text.length() * qsizetype(sizeof(QChar)));
}

// Every block's tags and spelling marks drawn anew, as when spell checking is switched on.
void BM_HighlightDocument(benchmark::State &state)
{
    QTextDocument document(noteText(state.range(0)));
    SNLinkHighlighter highlighter(&document);
    QTextCharFormat link;
    link.setForeground(Qt::blue);
    highlighter.setLinkFormat(link);
    highlighter.setSpellChecker(&QWSpellChecker::sharedSpellChecker());
    highlighter.setChecksSpelling(true);
    for (auto _ : state)
        highlighter.rehighlight();
    state.SetBytesProcessed(
        state.iterations() * document.characterCount() * qsizetype(sizeof(QChar)));
}

} // namespace

BENCHMARK(BM_TokenizeTags)->Arg(4 * 1024)->Arg(1024 * 1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CountWords)->Arg(4 * 1024)->Arg(1024 * 1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CountCharacters)->Arg(4 * 1024)->Arg(1024 * 1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TaggedString)->Arg(4 * 1024)->Arg(1024 * 1024)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HighlightDocument)->Arg(4 * 1024)->Arg(1024 * 1024)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    // Documents lay out text with fonts: a (windowless) application is needed.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
