#pragma once

#include "app/QWHotKeyGrabber.h"
#include "kit/widgets/QWWindowManager.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyNoteWindowController.h"

#include <QFile>
#include <QFileDialog>
#include <QHash>
#include <QMessageBox>
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
        lastName = request.name;
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
    QString lastName;
    QList<qint64> refusedCodes;
    int ungrabs = 0;
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

inline QString writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Could not write %s", qUtf8Printable(path));
    return path;
}

inline QString textOf(const std::shared_ptr<SNStickyNote> &note)
{
    return note->attributedString().value_or(QWAttributedString()).string();
}
