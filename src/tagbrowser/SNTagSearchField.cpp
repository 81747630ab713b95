#include "tagbrowser/SNTagSearchField.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

SNTagSearchField::SNTagSearchField(QWidget *parent) : QPlainTextEdit(parent)
{
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setWordWrapMode(QTextOption::NoWrap);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

SNTagSearchField::~SNTagSearchField() = default;

void SNTagSearchField::setText(const QString &text)
{
    setPlainText(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')));
}

void SNTagSearchField::moveCursorToEnd()
{
    QTextCursor cursor = textCursor();
    cursor.movePosition(QTextCursor::End);
    setTextCursor(cursor);
}

void SNTagSearchField::doCommand(const QString &command)
{
    if (m_commandHandler && m_commandHandler(command))
        return;
    if (command == insertNewlineCommand())
        Q_EMIT searchFinished();
    else if (command == cancelCommand())
        clear();
}

void SNTagSearchField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        doCommand(insertNewlineCommand());
        event->accept();
        return;
    case Qt::Key_Escape:
        doCommand(cancelCommand());
        event->accept();
        return;
    default:
        QPlainTextEdit::keyPressEvent(event);
    }
}

void SNTagSearchField::insertFromMimeData(const QMimeData *source)
{
    // One line only: pasted lines run on, separated by blanks.
    if (source && source->hasText()) {
        QString text = source->text();
        text.replace(QLatin1String("\r\n"), QLatin1String(" "));
        text.replace(QLatin1Char('\n'), QLatin1Char(' '));
        text.replace(QLatin1Char('\r'), QLatin1Char(' '));
        insertPlainText(text);
        return;
    }
    QPlainTextEdit::insertFromMimeData(source);
}

int SNTagSearchField::lineHeight() const
{
    const QMargins margins = contentsMargins();
    return fontMetrics().lineSpacing() + int(2 * document()->documentMargin()) + margins.top()
        + margins.bottom();
}

QSize SNTagSearchField::sizeHint() const
{
    return { 240, lineHeight() };
}

QSize SNTagSearchField::minimumSizeHint() const
{
    return { 80, lineHeight() };
}
