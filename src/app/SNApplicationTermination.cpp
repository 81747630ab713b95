#include "app/SNApplicationTermination.h"

#include "notes/SNStickyNoteManager.h"
#include "notewindow/SNNoteWindowSet.h"
#include "notewindow/SNStickyWindow.h"

#include <QApplication>
#include <QEvent>

SNApplicationTermination::SNApplicationTermination(
    SNNoteWindowSet &notes, SNStickyNoteManager &store, QObject *parent)
    : QObject(parent), m_notes(notes), m_store(store)
{
    qApp->installEventFilter(this);
    // Also when the event loop is ended without a quit request.
    connect(qApp, &QCoreApplication::aboutToQuit, this,
        &SNApplicationTermination::applicationWillTerminate);
}

SNApplicationTermination::~SNApplicationTermination() = default;

bool SNApplicationTermination::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Quit && watched == qApp) {
        if (!applicationShouldTerminate()) {
            event->ignore();
            return true;
        }
        applicationWillTerminate();
    }
    return QObject::eventFilter(watched, event);
}

bool SNApplicationTermination::applicationShouldTerminate()
{
    // Any window may refuse to close and so cancel the quit (the preferences do while a theme
    // has no name). The notes are told the program ends only once every other window has
    // closed: told too early, the notes Qt closes before a refusal would vanish undeleted and
    // the others could no longer be deleted.
    setTerminating(true);
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->windowType() != Qt::Popup
            && !qobject_cast<SNStickyWindow *>(window) && !window->close()) {
            setTerminating(false);
            return false;
        }
    }
    return true;
}

void SNApplicationTermination::applicationWillTerminate()
{
    // A quit request and the end of the event loop both lead here: the archive is written once.
    if (m_didTerminate)
        return;
    m_didTerminate = true;
    setTerminating(true);
    saveEveryNote(true);
}

void SNApplicationTermination::applicationMustTerminate()
{
    applicationWillTerminate();
    // Ends every event loop, a dialog's too; the windows are not asked to close.
    QCoreApplication::exit(0);
}

void SNApplicationTermination::commitDataRequest()
{
    // Not terminating yet: the user may cancel the logout and go on closing notes.
    saveEveryNote(false);
}

void SNApplicationTermination::setTerminating(bool terminating)
{
    m_isTerminating = terminating;
    Q_EMIT terminatingDidChange(terminating);
}

void SNApplicationTermination::saveEveryNote(bool terminating)
{
    m_notes.flushEveryNote(terminating);
    // The whole archive, so that it holds every note while the program is not running.
    m_store.waitForBackgroundSaves();
    m_store.compact();
}
