#pragma once

#include "app/AppDelegate.h"
#include "app/QWGlobalShortcutsPortal.h"
#include "app/QWHotKeyGrabber.h"
#include "app/QWHotKeyHelper.h"
#include "app/QWPortalHotKeyGrabber.h"
#include "app/QWWelcomeWindowController.h"
#include "app/QWX11HotKeyGrabber.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notes/SNSyncFolder.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"
#include "support/QWTestFiles.h"

#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QHash>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QTemporaryDir>

#include <algorithm>

// Answers in place of a person and remembers what was asked.
class RecordingPresenter final : public SNModalPresenter
{
public:
    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        alerts.append(alert.text());
        return nullptr;
    }
    QString runSavePanel(QFileDialog &panel) override
    {
        panels.append(panel.selectedFiles().value(0));
        return savePath;
    }
    void beep() override { ++beeps; }

    QStringList alerts;
    QStringList panels; // the file each proposed
    QString savePath; // the answer to every panel; empty cancels
    int beeps = 0;
};

// Holds every grab it is asked for, as the X server would, refuses the key codes it is told to,
// and presses keys on request.
class RecordingGrabber final : public QWHotKeyGrabber
{
public:
    bool grabKey(const QWHotKeyRequest &request) override
    {
        lastModifiers = request.modifiers;
        if (refusedCodes.contains(request.code))
            return false;
        codes.insert(request.identifier, request.code);
        return true;
    }
    void ungrabKeyWithIdentifier(qint64 identifier) override
    {
        codes.remove(identifier);
        ++ungrabs;
    }
    void press(qint64 identifier) const { keyWasPressed(identifier); }

    QHash<qint64, qint64> codes; // held grabs: identifier to key code
    quint16 lastModifiers = 0;
    QList<qint64> refusedCodes;
    int ungrabs = 0;
};

// The program's hot keys as a Wayland session makes them: the desktop's portal, with X11 grabs
// behind it, and the identifiers of the presses they report.
struct PortalHotKeys
{
    PortalHotKeys()
    {
        helper.setPressedBlock([this](qint64 identifier) { pressed << identifier; });
    }
    QWPortalHotKeyGrabber &grabber() const
    {
        return *static_cast<QWPortalHotKeyGrabber *>(helper.grabber());
    }

    QWHotKeyHelper helper { std::make_unique<QWPortalHotKeyGrabber>(
        std::make_unique<QWGlobalShortcutsPortal>(QStringLiteral("org.vellumo.Vellumo")),
        QWX11HotKeyGrabber::create()) };
    QList<qint64> pressed;
};

// A note store of its own, holding the welcome notes a first start copies in, and the windows
// that show its notes.
struct TestNotes
{
    QTemporaryDir folder;
    SNStickyNoteManager store { folder.path() };
    QWWindowManager windowManager;
    SNNoteWindowSet windows { store, windowManager };

    qsizetype visibleCount() const
    {
        const QList<SNStickyNoteWindowController *> all = windows.controllers();
        return std::count_if(all.cbegin(), all.cend(), [](SNStickyNoteWindowController *note) {
            return note->isWindowLoaded() && note->window()->isVisible();
        });
    }
};

// The path of the file written; a file that cannot be written ends the test program.
inline QString writtenFile(const QString &path, const QByteArray &bytes)
{
    if (!writeFile(path, bytes))
        qFatal("Could not write %s", qUtf8Printable(path));
    return path;
}

inline QString textOf(const std::shared_ptr<SNStickyNote> &note)
{
    return note->attributedString().value_or(QWAttributedString()).string();
}

// Settings as a user has them who has met the program before: nothing set but that the welcome
// window was shown.
inline std::unique_ptr<SNUserDefaults> clearedDefaults()
{
    auto defaults = GVUserDefaults::make<SNUserDefaults>();
    defaults->userDefaults().clear();
    defaults->userDefaults().setValue(QWWelcomeWindowController::wasShownKey(), true);
    return defaults;
}

// The program's controller over parts of the test's own: time that moves only when told, cleared
// settings, a note store, hot keys that a RecordingGrabber holds and a person who answers.
struct TestApplication
{
    QWManualScheduler scheduler;
    std::unique_ptr<SNUserDefaults> defaults = clearedDefaults();
    TestNotes notes;
    QWHotKeyHelper hotKeys { std::make_unique<RecordingGrabber>() };
    std::shared_ptr<RecordingPresenter> presenter = std::make_shared<RecordingPresenter>();
    std::unique_ptr<AppDelegate> delegate = std::make_unique<AppDelegate>(AppDelegate::Services {
        defaults.get(), &notes.store, &notes.windowManager, &hotKeys, presenter });

    // A start of the program, by the URL when one is given.
    void launch(const QString &url = QString()) const
    {
        delegate->applicationWillFinishLaunching();
        if (!url.isEmpty())
            delegate->handleOpenURLWithReplyEvent(url);
        delegate->applicationDidFinishLaunching();
    }

    // Chooses the tray's item of this title; false when there is none.
    bool triggerTrayItem(const QString &text) const
    {
        for (QAction *item : delegate->statusItemMenu()->actions()) {
            if (item->text() == text) {
                item->trigger();
                return true;
            }
        }
        return false;
    }
};

// What another computer wrote into the shared folder: its welcome notes and one of its own,
// under the id "laptop-id" and the name "Laptop".
inline std::shared_ptr<SNStickyNote> writeLaptop(const QString &folder, const QString &text)
{
    QTemporaryDir home;
    SNStickyNoteManager laptop(home.path(), QStringLiteral("laptop-id"));
    auto note = SNStickyNote::note();
    note->setAttributedString(QWAttributedString(text));
    laptop.addNote(note);
    if (!laptop.save())
        qFatal("Could not save the laptop's notes");
    const QList<QByteArray> records = laptop.recordsOfEveryNote();
    SNSyncFolder shared(folder, QStringLiteral("laptop-id"));
    if (!shared.writeDescription(QStringLiteral("Laptop"), QStringLiteral("machine-2"))
        || !shared.rewriteOwnJournal([&records](const auto &) { return records; }))
        qFatal("Could not write the laptop's notes into %s", qUtf8Printable(folder));
    return note;
}

// A folder of the import tests' golden files.
inline QString importGolden(const QString &relative)
{
    return QStringLiteral(VELLUMO_TEST_DATA_DIR "/../../import/data/golden/") + relative;
}

// Copies every file under `from`, hidden ones and those of subfolders too.
inline void copyFolder(const QString &from, const QString &to)
{
    QDirIterator files(from, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const QString target = to + path.mid(from.size());
        if (!QDir().mkpath(QFileInfo(target).path()) || !QFile::copy(path, target))
            qFatal("Could not copy %s", qUtf8Printable(path));
    }
}
