#include "app/SNLaunchRequestHandler.h"

#include "app/SNLaunchRequest.h"
#include "app/SNNoteFileReader.h"
#include "kit/QWTextAttributes.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notewindow/SNNoteWindowSet.h"
#include "themes/SNTheme.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMessageBox>
#include <QUrl>

QString SNLaunchRequestHandler::noteFromServiceErrorText()
{
    return tr("Could not create a note with text");
}

SNLaunchRequestHandler::SNLaunchRequestHandler(
    SNNoteWindowSet &notes, std::shared_ptr<SNModalPresenter> presenter, QObject *parent)
    : QObject(parent), m_notes(notes), m_presenter(std::move(presenter))
{ }

SNLaunchRequestHandler::~SNLaunchRequestHandler() = default;

QString SNLaunchRequestHandler::handleLaunchRequest(const SNLaunchRequest &request)
{
    if (request.isEmpty()) {
        Q_EMIT showAllNotesRequested();
        return {};
    }
    QStringList paths;
    for (const QString &uri : request.uris) {
        const QUrl url(uri);
        if (url.scheme() == QLatin1String("vellumo"))
            Q_EMIT openURLRequested(uri);
        else if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    if (!paths.isEmpty())
        applicationOpenFiles(paths);

    QString error;
    for (const QString &action : request.actions) {
        if (action == SNLaunchRequest::newNoteAction()) {
            Q_EMIT newNoteRequested();
        } else if (action == SNLaunchRequest::showAllNotesAction()) {
            Q_EMIT showAllNotesRequested();
        } else if (action == SNLaunchRequest::toggleTagsAction()) {
            Q_EMIT toggleTagsRequested();
        } else if (action == SNLaunchRequest::noteFromSelectionAction()) {
            noteFromServiceUserDataError(
                request.selectionText.value_or(selectedText()), QString(), &error);
        } else if (action == SNLaunchRequest::quitAction()) {
            Q_EMIT quitRequested();
        } else {
            error = tr("Vellumo has no action \"%1\".").arg(action);
        }
    }
    return error;
}

void SNLaunchRequestHandler::applicationOpenFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        const std::optional<QWAttributedString> text
            = SNNoteFileReader::attributedStringWithContentsOfPath(path);
        if (!text || text->length() == 0)
            continue;
        const std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
        note->setAttributedString(*text);
        m_notes.openNote(note, true);
    }
}

void SNLaunchRequestHandler::noteFromServiceUserDataError(
    const QString &pasteboardText, const QString &, QString *error)
{
    if (pasteboardText.isEmpty()) {
        if (error)
            *error = noteFromServiceErrorText();
        return;
    }
    const std::shared_ptr<SNStickyNote> note = SNStickyNote::note();
    QWTextAttributes attributes;
    if (const std::shared_ptr<SNTheme> theme = note->theme()) {
        attributes.setForegroundColor(theme->defaultFontColor());
        attributes.setFont(theme->defaultFont());
    }
    note->setAttributedString(QWAttributedString(pasteboardText, attributes));
    m_notes.openNote(note, true);
}

void SNLaunchRequestHandler::noteFromSelection(QObject *)
{
    QString error;
    noteFromServiceUserDataError(selectedText(), QString(), &error);
    if (error.isEmpty())
        return;
    QMessageBox alert(QMessageBox::Warning, QCoreApplication::applicationName(), error);
    m_presenter->runAlert(alert);
}

QString SNLaunchRequestHandler::selectedText()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection()) {
        const QString selection = clipboard->text(QClipboard::Selection);
        if (!selection.isEmpty())
            return selection;
    }
    return clipboard->text(QClipboard::Clipboard);
}
