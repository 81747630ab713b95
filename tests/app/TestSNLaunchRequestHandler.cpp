#include "SNAppTestSupport.h"
#include "app/SNLaunchRequest.h"
#include "app/SNLaunchRequestHandler.h"
#include "kit/QWTextAttributes.h"
#include "themes/SNTheme.h"

#include <QFile>
#include <QTest>
#include <QUrl>

class TestSNLaunchRequestHandler final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void filesWithTextBecomeShownNotes();
    void textBecomesANoteInItsThemeAndNothingIsRefused();
    void requestsRunInOrderAndPassOnWhatIsNotTheirs();

private:
    QString write(const QString &name, const QByteArray &bytes);

    std::unique_ptr<TestNotes> m_notes;
    std::shared_ptr<RecordingPresenter> m_presenter;
    std::unique_ptr<SNLaunchRequestHandler> m_handler;
    QStringList m_passedOn;
};

void TestSNLaunchRequestHandler::init()
{
    m_notes = std::make_unique<TestNotes>();
    m_presenter = std::make_shared<RecordingPresenter>();
    m_handler = std::make_unique<SNLaunchRequestHandler>(m_notes->windows, m_presenter);
    m_passedOn.clear();
    const auto record
        = [this](const QString &what) { return [this, what] { m_passedOn << what; }; };
    connect(m_handler.get(), &SNLaunchRequestHandler::openURLRequested, this,
        [this](const QString &url) { m_passedOn << url; });
    connect(m_handler.get(), &SNLaunchRequestHandler::showAllNotesRequested, this,
        record(QStringLiteral("show")));
    connect(m_handler.get(), &SNLaunchRequestHandler::newNoteRequested, this,
        record(QStringLiteral("new")));
    connect(m_handler.get(), &SNLaunchRequestHandler::toggleTagsRequested, this,
        record(QStringLiteral("tags")));
    connect(m_handler.get(), &SNLaunchRequestHandler::quitRequested, this,
        record(QStringLiteral("quit")));
}

void TestSNLaunchRequestHandler::cleanup()
{
    m_handler.reset();
    m_notes.reset();
}

QString TestSNLaunchRequestHandler::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_notes->folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Could not write %s", qUtf8Printable(path));
    return path;
}

void TestSNLaunchRequestHandler::filesWithTextBecomeShownNotes()
{
    const qsizetype notes = m_notes->store.notesArray().size();
    m_handler->applicationOpenFiles({ write(QStringLiteral("empty.rtf"), "{\\rtf1\\ansi }"),
        write(QStringLiteral("picture.png"), QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)),
        m_notes->folder.filePath(QStringLiteral("missing.rtf")),
        write(QStringLiteral("letter.rtf"), "{\\rtf1\\ansi Dear {\\b Anna}}") });
    QCOMPARE(m_notes->store.notesArray().size(), notes + 1);
    const std::shared_ptr<SNStickyNote> note = m_notes->store.notesArray().constLast();
    QCOMPARE(textOf(note), QStringLiteral("Dear Anna"));
    QVERIFY(note->attributedString()->attributesAtIndex(5).isBold());
    QVERIFY(m_notes->windows.controllerForNote(note.get())->window()->isVisible());
}

void TestSNLaunchRequestHandler::textBecomesANoteInItsThemeAndNothingIsRefused()
{
    const qsizetype notes = m_notes->store.notesArray().size();
    QString error;
    m_handler->noteFromServiceUserDataError(QString(), QString(), &error);
    QCOMPARE(error, SNLaunchRequestHandler::noteFromServiceErrorText());
    QCOMPARE(m_notes->store.notesArray().size(), notes);

    error.clear();
    m_handler->noteFromServiceUserDataError(QStringLiteral("Buy stamps"), QString(), &error);
    QVERIFY(error.isEmpty());
    const std::shared_ptr<SNStickyNote> note = m_notes->store.notesArray().constLast();
    QCOMPARE(textOf(note), QStringLiteral("Buy stamps"));
    const QWTextAttributes attributes = note->attributedString()->attributesAtIndex(0);
    QCOMPARE(attributes.foregroundColor(), std::optional(note->theme()->defaultFontColor()));
    QCOMPARE(attributes.font(), note->theme()->defaultFont());
    QVERIFY(m_notes->windows.controllerForNote(note.get())->window()->isVisible());
}

void TestSNLaunchRequestHandler::requestsRunInOrderAndPassOnWhatIsNotTheirs()
{
    const qsizetype notes = m_notes->store.notesArray().size();
    SNLaunchRequest request;
    request.uris = { QStringLiteral("vellumo://lal"),
        QUrl::fromLocalFile(write(QStringLiteral("a.txt"), "from a file")).toString() };
    request.actions = { SNLaunchRequest::showAllNotesAction(), SNLaunchRequest::newNoteAction(),
        SNLaunchRequest::noteFromSelectionAction(), SNLaunchRequest::toggleTagsAction(),
        SNLaunchRequest::quitAction() };
    request.selectionText = QStringLiteral("from a pipe");
    QCOMPARE(m_handler->handleLaunchRequest(request), QString());
    QCOMPARE(m_passedOn,
        (QStringList { QStringLiteral("vellumo://lal"), QStringLiteral("show"),
            QStringLiteral("new"), QStringLiteral("tags"), QStringLiteral("quit") }));
    QCOMPARE(m_notes->store.notesArray().size(), notes + 2);
    QCOMPARE(textOf(m_notes->store.notesArray().constLast()), QStringLiteral("from a pipe"));

    // Empty input is no text; an unknown action is an error; nothing at all shows the notes.
    m_passedOn.clear();
    request = SNLaunchRequest();
    request.actions = { SNLaunchRequest::noteFromSelectionAction() };
    request.selectionText = QString();
    QCOMPARE(m_handler->handleLaunchRequest(request),
        SNLaunchRequestHandler::noteFromServiceErrorText());
    request.actions = { QStringLiteral("make-coffee") };
    QVERIFY(!m_handler->handleLaunchRequest(request).isEmpty());
    QCOMPARE(m_handler->handleLaunchRequest(SNLaunchRequest()), QString());
    QCOMPARE(m_passedOn, QStringList { QStringLiteral("show") });
}

QTEST_MAIN(TestSNLaunchRequestHandler)
#include "TestSNLaunchRequestHandler.moc"
