#include "kit/QWSpellChecker.h"

#include <QLocale>
#include <QTextBoundaryFinder>

#include <enchant.h>
#include <utility>

namespace {

constexpr qsizetype answerCacheLimit = 50000;

bool hasDigit(QStringView word)
{
    for (const QChar character : word) {
        if (character.isDigit())
            return true;
    }
    return false;
}

} // namespace

bool QWSpellChecker::s_sharedLoaded = false;

QWSpellChecker &QWSpellChecker::sharedSpellChecker()
{
    static QWSpellChecker checker;
    s_sharedLoaded = true;
    return checker;
}

bool QWSpellChecker::isSharedSpellCheckerLoaded()
{
    return s_sharedLoaded;
}

QWSpellChecker::QWSpellChecker(const QString &language) : m_broker(enchant_broker_init())
{
    if (!m_broker)
        return;
    const QString wanted = language.isEmpty() ? defaultLanguage(m_broker) : language;
    if (wanted.isEmpty())
        return;
    const QByteArray tag = wanted.toUtf8();
    if (enchant_broker_dict_exists(m_broker, tag.constData()) <= 0)
        return;
    m_dictionary = enchant_broker_request_dict(m_broker, tag.constData());
    if (!m_dictionary)
        return;
    m_language = wanted;
    // Words every note of this program may hold: its name and the keys it talks about.
    for (const char *word : { "Vellumo", "Ctrl", "Alt", "Esc" })
        enchant_dict_add_to_session(m_dictionary, word, -1);
}

QWSpellChecker::~QWSpellChecker()
{
    if (m_dictionary)
        enchant_broker_free_dict(m_broker, m_dictionary);
    if (m_broker)
        enchant_broker_free(m_broker);
}

QString QWSpellChecker::defaultLanguage(str_enchant_broker *broker)
{
    const QStringList candidates = { QLocale().name(), QStringLiteral("en_US") };
    for (const QString &candidate : candidates) {
        if (candidate.isEmpty() || candidate == QLatin1String("C"))
            continue;
        if (enchant_broker_dict_exists(broker, candidate.toUtf8().constData()) > 0)
            return candidate;
    }
    QString any;
    enchant_broker_list_dicts(
        broker,
        [](const char *tag, const char *, const char *, const char *, void *data) {
            auto *found = static_cast<QString *>(data);
            if (found->isEmpty())
                *found = QString::fromUtf8(tag);
        },
        &any);
    return any;
}

bool QWSpellChecker::isWordCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('\'')
        || character == QChar(0x2019) || character.category() == QChar::Mark_NonSpacing;
}

bool QWSpellChecker::isWordMisspelled(QStringView word)
{
    if (!m_dictionary || word.size() < 2 || hasDigit(word))
        return false;
    const QString key = word.toString();
    const auto known = m_answers.constFind(key);
    if (known != m_answers.constEnd())
        return known.value();
    const QByteArray utf8 = key.toUtf8();
    // Negative answers are errors of the dictionary; they mark nothing.
    const bool misspelt = enchant_dict_check(m_dictionary, utf8.constData(), utf8.size()) > 0;
    if (m_answers.size() >= answerCacheLimit)
        m_answers.clear();
    m_answers.insert(key, misspelt);
    return misspelt;
}

QStringList QWSpellChecker::guessesForWord(QStringView word)
{
    QStringList guesses;
    if (!m_dictionary || word.isEmpty())
        return guesses;
    const QByteArray utf8 = word.toString().toUtf8();
    size_t count = 0;
    char **suggestions = enchant_dict_suggest(m_dictionary, utf8.constData(), utf8.size(), &count);
    if (!suggestions)
        return guesses;
    for (size_t i = 0; i < count; ++i)
        guesses.append(QString::fromUtf8(suggestions[i]));
    enchant_dict_free_string_list(m_dictionary, suggestions);
    return guesses;
}

std::optional<QString> QWSpellChecker::correctionForWord(QStringView word)
{
    if (!isWordMisspelled(word))
        return std::nullopt;
    const QStringList guesses = guessesForWord(word);
    // A guess further away rewrites what the user meant ("qwertyuiop" into "qwerty"); the
    // mark stays.
    if (guesses.isEmpty() || !isOneEditAway(word, guesses.first()))
        return std::nullopt;
    return guesses.first();
}

bool QWSpellChecker::isOneEditAway(QStringView word, QStringView other)
{
    if (word.size() < other.size())
        std::swap(word, other);
    qsizetype first = 0;
    while (first < other.size() && word[first] == other[first])
        ++first;
    if (word.size() == other.size() + 1) // a letter added or dropped
        return word.sliced(first + 1) == other.sliced(first);
    if (word.size() != other.size() || first == word.size())
        return false;
    if (word.sliced(first + 1) == other.sliced(first + 1)) // a letter changed
        return true;
    return first + 1 < word.size() && word[first] == other[first + 1]
        && word[first + 1] == other[first] && word.sliced(first + 2) == other.sliced(first + 2);
}

void QWSpellChecker::ignoreWord(const QString &word)
{
    if (!m_dictionary || word.isEmpty())
        return;
    const QByteArray utf8 = word.toUtf8();
    enchant_dict_add_to_session(m_dictionary, utf8.constData(), utf8.size());
    m_answers.insert(word, false);
}

void QWSpellChecker::learnWord(const QString &word)
{
    if (!m_dictionary || word.isEmpty())
        return;
    const QByteArray utf8 = word.toUtf8();
    enchant_dict_add(m_dictionary, utf8.constData(), utf8.size());
    m_answers.insert(word, false);
}

QList<QWSpellChecker::Range> QWSpellChecker::misspelledRangesInString(QStringView text)
{
    QList<Range> ranges;
    if (!m_dictionary || text.isEmpty())
        return ranges;
    const QString copy = text.toString();
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, copy);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        if (finder.boundaryReasons().testFlag(QTextBoundaryFinder::EndOfItem)) {
            QStringView word = QStringView(copy).sliced(start, end - start);
            // Quotes around a word are not part of it.
            qsizetype trimmedStart = start;
            while (!word.isEmpty() && !word.front().isLetterOrNumber()) {
                word = word.sliced(1);
                ++trimmedStart;
            }
            while (!word.isEmpty() && !word.back().isLetterOrNumber())
                word.chop(1);
            if (!word.isEmpty() && isWordMisspelled(word))
                ranges.append({ trimmedStart, word.size() });
        }
        start = end;
    }
    return ranges;
}
