#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

class QWSpellChecker;

// Shows the links and hashtags of a note in the theme's link style, and marks misspelt words,
// without storing either in the text: the link style belongs to the theme and the marks to the
// moment, so the text keeps its own attributes, its undo history and its saved form untouched.
//
// Qt draws the formats of one highlighter per block, so both are drawn in this one pass.
class SNLinkHighlighter final : public QSyntaxHighlighter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNLinkHighlighter)

public:
    explicit SNLinkHighlighter(QTextDocument *document);
    ~SNLinkHighlighter() override;

    const QTextCharFormat &linkFormat() const { return m_linkFormat; }
    void setLinkFormat(const QTextCharFormat &format);

    QWSpellChecker *spellChecker() const { return m_spellChecker; }
    void setSpellChecker(QWSpellChecker *checker);
    bool checksSpelling() const { return m_checksSpelling; }
    void setChecksSpelling(bool checks);
    // How a misspelt word is marked: a red wavy line.
    static QTextCharFormat misspelledFormat();

protected:
    void highlightBlock(const QString &text) override;

private:
    QTextCharFormat m_linkFormat;
    QWSpellChecker *m_spellChecker = nullptr;
    bool m_checksSpelling = false;
};
