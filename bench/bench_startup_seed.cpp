// Writes a notes archive of N notes for the start-up and writes benchmarks, each window in its
// own place.
//
//   bench_startup_seed COUNT DATA_HOME WIDTH HEIGHT
//
// The archive goes to DATA_HOME/Vellumo/stickies.db, where Vellumo looks with XDG_DATA_HOME set
// to DATA_HOME.

#include "kit/QWAttributedString.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QString>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5) {
        std::fprintf(stderr, "usage: bench_startup_seed COUNT DATA_HOME WIDTH HEIGHT\n");
        return 2;
    }
    const int count = arguments.at(1).toInt();
    const QString folder = QDir(arguments.at(2)).filePath(QStringLiteral("Vellumo"));
    const int width = arguments.at(3).toInt();
    const int height = arguments.at(4).toInt();

    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    // Loading an empty folder copies the welcome notes in: start from none.
    SNStickyNoteManager store(folder);
    for (const auto &note : store.notesArray())
        store.removeNote(note);

    // Notes step across a 1280 by 800 screen and wrap, as a long-used desktop looks.
    constexpr int screenWidth = 1280;
    constexpr int screenHeight = 800;
    for (int i = 0; i < count; ++i) {
        auto note = SNStickyNote::note();
        note->setAttributedString(QWAttributedString(
            QStringLiteral("Note %1\nMilk, eggs and bread. Call Anna about the #weekend.")
                .arg(i + 1)));
        const int x = (i * 37) % (screenWidth - width);
        const int y = 30 + (i * 23) % (screenHeight - height - 30);
        note->setWindowFrame(
            QStringLiteral("{{%1, %2}, {%3, %4}}").arg(x).arg(y).arg(width).arg(height));
        store.addNote(note);
    }
    // Written whole, with an empty journal, as Vellumo leaves its folder when it quits.
    if (!store.compact())
        return 1;
    return store.notesArray().size() == count ? 0 : 1;
}
