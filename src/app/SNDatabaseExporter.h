#pragma once

#include <QObject>
#include <QString>

#include <memory>

class SNModalPresenter;
class SNStickyNoteManager;

// "Export All Notes": asks where to, writes a copy of the notes archive there and shows it in
// the file browser, or tells the user it could not.
class SNDatabaseExporter final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNDatabaseExporter)

public:
    static QString exportFailedMessage(); // "Could not export the database"
    static QString exportFailedInformativeText();

    SNDatabaseExporter(SNStickyNoteManager &store, std::shared_ptr<SNModalPresenter> presenter,
        QObject *parent = nullptr);
    ~SNDatabaseExporter() override;

    void exportDatabase(QObject *sender);

private:
    SNStickyNoteManager &m_store;
    std::shared_ptr<SNModalPresenter> m_presenter;
};
