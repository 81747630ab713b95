#include "SNAppTestSupport.h"
#include "app/SNLaunchRequest.h"
#include "app/SNLaunchRequestHandler.h"

#include <QTest>
#include <QUrl>

class TestSNLaunchRequestHandler final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_notes = std::make_unique<TestNotes>();
        m_handler = std::make_unique<SNLaunchRequestHandler>(
            m_notes->windows, std::make_shared<RecordingPresenter>());
        m_passedOn.clear();
        connect(m_handler.get(), &SNLaunchRequestHandler::openURLRequested, this,
            [this](const QString &url) { m_passedOn << url; });
        using Handler = SNLaunchRequestHandler;
        for (const auto &[signal, what] : { std::pair { &Handler::showAllNotesRequested, "show" },
                 { &Handler::newNoteRequested, "new" }, { &Handler::toggleTagsRequested, "tags" },
                 { &Handler::quitRequested, "quit" } })
            connect(m_handler.get(), signal, this,
                [this, name = what] { m_passedOn << QString::fromLatin1(name); });
    }

    void cleanup()
    {
        m_handler.reset();
        m_notes.reset();
    }

    void requestsRunInOrderAndPassOnWhatIsNotTheirs()
    {
        const qsizetype notes = m_notes->store.notesArray().size();
        const auto file = [this](const char *name, const QByteArray &bytes) {
            return QUrl::fromLocalFile(
                writtenFile(m_notes->folder.filePath(QString::fromLatin1(name)), bytes))
                .toString();
        };
        SNLaunchRequest request;
        // Files without text are passed over.
        request.uris = { QStringLiteral("vellumo://lal"), file("empty.rtf", "{\\rtf1\\ansi }"),
            file("picture.png", QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16)),
            file("letter.rtf", "{\\rtf1\\ansi Dear {\\b Anna}}") };
        request.actions = { SNLaunchRequest::showAllNotesAction(), SNLaunchRequest::newNoteAction(),
            SNLaunchRequest::noteFromSelectionAction(), SNLaunchRequest::toggleTagsAction(),
            SNLaunchRequest::quitAction() };
        request.selectionText = QStringLiteral("from a pipe");
        QCOMPARE(m_handler->handleLaunchRequest(request), QString());
        QCOMPARE(m_passedOn,
            (QStringList { QStringLiteral("vellumo://lal"), QStringLiteral("show"),
                QStringLiteral("new"), QStringLiteral("tags"), QStringLiteral("quit") }));
        const QList<std::shared_ptr<SNStickyNote>> added = m_notes->store.notesArray().mid(notes);
        QCOMPARE(added.size(), 2);
        QCOMPARE(textOf(added.at(0)), QStringLiteral("Dear Anna"));
        QCOMPARE(textOf(added.at(1)), QStringLiteral("from a pipe"));
        QCOMPARE(m_notes->visibleCount(), 2);

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

private:
    std::unique_ptr<TestNotes> m_notes;
    std::unique_ptr<SNLaunchRequestHandler> m_handler;
    QStringList m_passedOn;
};

QTEST_MAIN(TestSNLaunchRequestHandler)
#include "TestSNLaunchRequestHandler.moc"
