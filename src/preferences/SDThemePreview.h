#pragma once

#include <QCoreApplication>
#include <QString>

class QTextBrowser;
class QWGradientView;
class SNLinkHighlighter;
class SNTheme;

// The theme editor's preview, a note in miniature: a sample text over the theme's gradient,
// drawn in the theme's font and colours, its hashtags drawn as the theme draws links.
class SDThemePreview final
{
    Q_DECLARE_TR_FUNCTIONS(SDThemePreview)
    Q_DISABLE_COPY_MOVE(SDThemePreview)

public:
    static QString sampleText();

    // Both views stay the caller's; the text view gets the sample text.
    SDThemePreview(QWGradientView *gradientView, QTextBrowser *textView);
    ~SDThemePreview();

    void showTheme(const SNTheme &theme);

private:
    void tokenizeTags();

    QWGradientView *m_gradientView;
    QTextBrowser *m_textView;
    SNLinkHighlighter *m_linkHighlighter; // owned by the text view's document
};
