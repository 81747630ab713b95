#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

struct str_enchant_broker;
struct str_enchant_dict;

// Checks words against one of the system's dictionaries (enchant, usually with hunspell's
// dictionaries). The dictionary of the user's language is taken, else American English, else
// any that is installed; without one, every word counts as correct, so the editor simply shows
// no marks. Answers are remembered per word: a note is checked again on every keystroke.
class QWSpellChecker final
{
public:
    // A misspelt word in a text: its start and length in UTF-16 code units.
    struct Range
    {
        qsizetype start = 0;
        qsizetype length = 0;
        friend bool operator==(const Range &, const Range &) = default;
    };

    // The checker the notes share, made on first use (loading dictionaries takes a moment).
    static QWSpellChecker &sharedSpellChecker();
    // Whether sharedSpellChecker() has been asked for yet.
    static bool isSharedSpellCheckerLoaded();

    // An empty language means the user's own (the locale), then "en_US", then any dictionary.
    explicit QWSpellChecker(const QString &language = QString());
    ~QWSpellChecker();
    QWSpellChecker(const QWSpellChecker &) = delete;
    QWSpellChecker &operator=(const QWSpellChecker &) = delete;

    bool isAvailable() const { return m_dictionary != nullptr; }
    // The dictionary's language tag ("en_US"), empty without one.
    const QString &language() const { return m_language; }

    bool isWordMisspelled(QStringView word);
    // The dictionary's suggestions, best first.
    QStringList guessesForWord(QStringView word);
    // What auto-correction puts in place of a misspelt word: the dictionary's best suggestion,
    // only when it is one slip of the finger away (isOneEditAway). Nothing for a correct word.
    std::optional<QString> correctionForWord(QStringView word);
    // Whether one letter added, dropped or changed, or two neighbouring letters swapped, turn
    // the one word into the other.
    static bool isOneEditAway(QStringView word, QStringView other);

    // Accepted from now on in this run of the program.
    void ignoreWord(const QString &word);
    // Accepted for good: added to the user's personal word list.
    void learnWord(const QString &word);

    // The misspelt words of a text. Words with digits, and words of a single letter, are never
    // marked: they are names, codes and numbers more often than mistakes.
    QList<Range> misspelledRangesInString(QStringView text);

    // Whether the character may be part of a word the checker looks at.
    static bool isWordCharacter(QChar character);

private:
    static bool s_sharedLoaded;
    static QString defaultLanguage(str_enchant_broker *broker);

    str_enchant_broker *m_broker = nullptr;
    str_enchant_dict *m_dictionary = nullptr;
    QString m_language;
    QHash<QString, bool> m_answers; // word -> misspelt
};
