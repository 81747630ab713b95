#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

// Shows the links of a note in the theme's link style without storing that style in the text:
// the style belongs to the theme, so a link keeps its own attributes and only looks different.
//
// Qt draws the formats of one highlighter per block; whatever else is to be shown this way
// (spelling marks) belongs in this pass rather than in a second highlighter.
class SNLinkHighlighter final : public QSyntaxHighlighter
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNLinkHighlighter)

public:
    explicit SNLinkHighlighter(QTextDocument *document);
    ~SNLinkHighlighter() override;

    const QTextCharFormat &linkFormat() const { return m_linkFormat; }
    void setLinkFormat(const QTextCharFormat &format);

protected:
    void highlightBlock(const QString &text) override;

private:
    QTextCharFormat m_linkFormat;
};
