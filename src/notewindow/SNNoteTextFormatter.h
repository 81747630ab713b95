#pragma once

#include "kit/QWColor.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

class QAction;
class QColorDialog;
class QMenu;
class QTextCharFormat;
class SNStickyNote;
class SNTextView;

// What a note's formatting commands do to its editor: bold, italic, underline and strikethrough,
// colours from the menu and the colour panel, pasting plain text, the formats typing goes on in,
// and the items they add to the right-click menu.
class SNNoteTextFormatter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNNoteTextFormatter)

public:
    // A stretch of the text; a location of -1 is no stretch at all.
    struct TextRange
    {
        qsizetype location = -1;
        qsizetype length = 0;
    };
    static constexpr qsizetype notFound = -1;

    // Undo step names, as the Undo item shows them.
    static QString strikethroughActionName(); // "Strikethrough"
    static QString changeColorActionName(); // "Change Color"

    // The note is read on each use, as its owner may be handed another one.
    SNNoteTextFormatter(
        SNTextView *textView, const std::shared_ptr<SNStickyNote> &note, QObject *parent = nullptr);
    ~SNNoteTextFormatter() override;

    // A sender's state says whether its format is on now (see formattingItemState); without a
    // sender it is read from the text.
    void toggleBold(QAction *sender);
    void toggleItalic(QAction *sender);
    void toggleUnderline(QAction *sender);
    void toggleStrikethrough(QObject *sender);
    void changeColorFromMenuItem(QAction *sender);
    void pastePlainText(QObject *sender);
    void strikethroughWithRange(bool struckThrough, TextRange range);
    void changeColorWithRange(const std::optional<QWColor> &color, TextRange range);
    // A colour dialog that colours the selection of the moment it was opened.
    void orderFrontColorPanel(QObject *sender);
    QColorDialog *colorPanel() const;
    TextRange selectedRange() const;
    QTextCharFormat formatAtIndex(qsizetype index) const;
    static bool formattingItemState(const QAction *item);

    // The menu builders of the right-click menu.
    void addPasteAsPlainTextItemToMenuWithAttributes(
        QMenu *menu, const QTextCharFormat &attributes);
    void addColorOptionsToMenuWithAttributes(QMenu *menu, const QTextCharFormat &attributes);
    void addFormattingOptionsToMenuWithAttributes(QMenu *menu, const QTextCharFormat &attributes);
    void addMakeListItemToMenuWithAttributesSelectedRanges(
        QMenu *menu, const QTextCharFormat &attributes, TextRange selectedRange);

    // What typing goes on in once the editor's formats change.
    QTextCharFormat textViewShouldChangeTypingAttributesToAttributes(SNTextView *view,
        const QTextCharFormat &oldAttributes, const QTextCharFormat &newAttributes) const;

private:
    // Changes the format of every fragment of the range through `edit`; an empty range changes
    // what is typed next.
    void editFormatInRange(TextRange range, const std::function<void(QTextCharFormat &)> &edit);

    SNTextView *m_textView;
    const std::shared_ptr<SNStickyNote> &m_note;
    QPointer<QColorDialog> m_colorPanel;
};
