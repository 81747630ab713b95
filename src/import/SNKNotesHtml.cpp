#include "import/SNKNotesHtml.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>

using namespace Qt::Literals::StringLiterals;

namespace {

// Qt reads an <img> of a local path from disk: a note's HTML must not pull files (or the
// endless /dev/zero) into the note. KNotes keeps no pictures in its notes.
class DocumentWithoutResources final : public QTextDocument
{
protected:
    QVariant loadResource(int, const QUrl &) override { return {}; }
};

// The text of HTML without Qt's reader: block ends become line breaks, tags go, the usual
// entities are undone.
QString plainTextOf(const QString &html)
{
    static const QRegularExpression blockEnd(
        u"<(br\\b[^>]*|/p|/li|/div|/h\\d)\\s*>"_s, QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression tag(u"<[^>]*>"_s);
    static const QRegularExpression numeric(u"&#(x?)([0-9A-Fa-f]{1,6});"_s);
    // The head's style sheet is no text.
    const qsizetype body = html.indexOf(u"<body"_s, 0, Qt::CaseInsensitive);
    QString text = body < 0 ? html : html.mid(body);
    text.replace(u'\n', u' ');
    text.replace(blockEnd, u"\n"_s);
    text.remove(tag);
    QString out;
    qsizetype at = 0;
    for (QRegularExpressionMatchIterator it = numeric.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        out += QStringView(text).mid(at, match.capturedStart() - at);
        bool ok = false;
        const char32_t code
            = char32_t(match.captured(2).toUInt(&ok, match.captured(1).isEmpty() ? 10 : 16));
        if (ok && code > 0 && code <= 0x10FFFF)
            out += QString::fromUcs4(&code, 1);
        at = match.capturedEnd();
    }
    out += QStringView(text).mid(at);
    out.replace(u"&nbsp;"_s, u" "_s);
    out.replace(u"&lt;"_s, u"<"_s);
    out.replace(u"&gt;"_s, u">"_s);
    out.replace(u"&quot;"_s, u"\""_s);
    out.replace(u"&amp;"_s, u"&"_s);
    return out.trimmed();
}

} // namespace

QWAttributedString SNKNotesHtml::toAttributedString(const QString &html)
{
    // Qt's HTML reader asks the application for fonts (<tt>, <code>, <pre>) and crashes without
    // a GUI application: then the note keeps its words and loses its marks.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return QWAttributedString(plainTextOf(html));

    static const QRegularExpression bodyStyle(
        uR"((<body\b[^>]*?)\s+style\s*=\s*("[^"]*"|'[^']*'))"_s,
        QRegularExpression::CaseInsensitiveOption);
    QString cleaned = html;
    cleaned.replace(bodyStyle, u"\\1"_s);

    DocumentWithoutResources document;
    document.setHtml(cleaned);
    // Bullets are characters in a note: each list item gets one, indented by its level.
    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        QTextList *list = block.textList();
        if (!list)
            continue;
        const int level = std::max(1, list->format().indent());
        list->remove(block);
        cursor.setPosition(block.position());
        cursor.insertText(QString(2 * (level - 1), u' ') + u"• "_s, QTextCharFormat());
    }
    // What is left of a picture is its placeholder character.
    QWMutableAttributedString text(QWAttributedString::fromTextDocument(document));
    for (qsizetype at = text.length() - 1; at >= 0; --at) {
        if (text.string().at(at) == QChar::ObjectReplacementCharacter)
            text.deleteCharactersInRange(at, 1);
    }
    return text.attributedString();
}
