#pragma once

#include <QPlainTextEdit>
#include <QString>

#include <functional>

// The tag browser's one-line search field. Unlike a line edit it keeps colours on parts of its
// text, which is how typed hashtags show their tags' colours.
//
// Return and Escape are commands: "insertNewline:" and "cancel:". Each is first offered to the
// command handler; one it does not take does what a search field does by itself: Return ends
// the search (searchFinished), Escape clears the text.
class SNTagSearchField final : public QPlainTextEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNTagSearchField)

public:
    static QString cancelCommand() { return QStringLiteral("cancel:"); }
    static QString insertNewlineCommand() { return QStringLiteral("insertNewline:"); }

    // True when the handler took the command.
    using CommandHandler = std::function<bool(const QString &command)>;

    explicit SNTagSearchField(QWidget *parent = nullptr);
    ~SNTagSearchField() override;

    QString text() const { return toPlainText(); }
    void setText(const QString &text);
    void moveCursorToEnd();

    void setCommandHandler(CommandHandler handler) { m_commandHandler = std::move(handler); }
    void doCommand(const QString &command);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void searchFinished();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    int lineHeight() const;

    CommandHandler m_commandHandler;
};
