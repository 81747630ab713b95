#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class SNModalPresenter;
class SNNoteWindowSet;
struct SNLaunchRequest;

// Runs what a start of the program, the desktop or another program hands in: files and text
// become notes of their own, shown at once; "vellumo:" URLs and the actions that are the
// application's (new note, show all notes, the tag browser, quit) are passed on as requests.
class SNLaunchRequestHandler final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNLaunchRequestHandler)

public:
    static QString noteFromServiceErrorText(); // "Could not create a note with text"

    SNLaunchRequestHandler(SNNoteWindowSet &notes, std::shared_ptr<SNModalPresenter> presenter,
        QObject *parent = nullptr);
    ~SNLaunchRequestHandler() override;

    // An error text, or nothing. An empty request only brings the notes forward.
    QString handleLaunchRequest(const SNLaunchRequest &request);
    // Files without text are passed over.
    void applicationOpenFiles(const QStringList &paths);
    // Makes a note of the text in its theme's font and colour; *error gets the reason when
    // there is no text to make one of.
    void noteFromServiceUserDataError(
        const QString &pasteboardText, const QString &userData, QString *error);
    // note-from-selection: the X11 primary selection, else the clipboard; an alert without.
    void noteFromSelection(QObject *sender);
    static QString selectedText();

Q_SIGNALS:
    void openURLRequested(const QString &url);
    void showAllNotesRequested();
    void newNoteRequested();
    void toggleTagsRequested();
    void quitRequested();

private:
    SNNoteWindowSet &m_notes;
    std::shared_ptr<SNModalPresenter> m_presenter;
};
