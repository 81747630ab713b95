// Saves ever newer versions of the same notes until it is killed. The crash test kills it at
// random moments and checks that the archive on disk is always one whole version.
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QGuiApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: notes_save_loop FOLDER NOTES\n");
        return 2;
    }
    SNStickyNoteManager store(arguments.at(1));
    for (const std::shared_ptr<SNStickyNote> &note : store.notesArray())
        store.removeNote(note);
    const int count = arguments.at(2).toInt();
    QList<std::shared_ptr<SNStickyNote>> notes;
    for (int i = 0; i < count; ++i) {
        auto note = std::make_shared<SNStickyNote>();
        store.addNote(note);
        notes.append(note);
    }
    std::printf("ready\n");
    std::fflush(stdout);
    // Large enough that a write takes a while, so that kills land in the middle of one.
    const QString padding(20000, QLatin1Char('.'));
    for (qint64 version = 1;; ++version) {
        for (int i = 0; i < count; ++i)
            notes[i]->setAttributedString(QWAttributedString(
                QStringLiteral("version %1 note %2 ").arg(version).arg(i) + padding));
        store.save();
    }
}
