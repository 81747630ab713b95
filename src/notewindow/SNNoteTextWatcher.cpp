#include "notewindow/SNNoteTextWatcher.h"

#include "kit/QWDebouncer.h"
#include "kit/QWSpellChecker.h"
#include "notes/SNNoteTitle.h"
#include "notes/SNStickyNote.h"
#include "notes/SNTextCounter.h"
#include "notewindow/SNStickyWindow.h"
#include "notewindow/SNTextView.h"
#include "settings/SNUserDefaults.h"
#include "tags/SNHashtagScanner.h"
#include "tags/SNTagManager.h"
#include "ui_SNStickyNoteWindowController.h"

#include <QMouseEvent>
#include <QSignalBlocker>

SNNoteTextWatcher::SNNoteTextWatcher(SNStickyWindow *window, Ui::SNStickyNoteWindowController &ui,
    const std::shared_ptr<SNStickyNote> &note, QObject *parent)
    : QObject(parent),
      m_window(window),
      m_ui(ui),
      m_note(note),
      m_tokenizeDelayTimer(std::make_unique<QWDebouncer>(tokenizeDelay, [this] {
          tokenizeTags();
          updateWordCount();
      }))
{
    // A click on the counter switches between words, paragraphs and characters.
    m_ui.wordCountLabel->installEventFilter(this);
    m_ui.wordCountLabel->setCursor(Qt::PointingHandCursor);
    m_ui.wordCountLabel->setToolTip(tr("Click to count words, paragraphs or characters"));
    observeSpellingSettings();
}

SNNoteTextWatcher::~SNNoteTextWatcher() = default;

void SNNoteTextWatcher::tokenizeTagsAfterDelay()
{
    m_tokenizeDelayTimer->restart();
}

void SNNoteTextWatcher::tokenizeTags()
{
    if (m_note)
        m_note->setTags(SNHashtagScanner::tokenizeTags(
            m_ui.textView->document()->toPlainText(), SNTagManager::sharedManager()));
}

void SNNoteTextWatcher::clearOldTags()
{
    const QSignalBlocker blocker(m_ui.textView);
    SNHashtagScanner::removeTagMarkers(*m_ui.textView->document());
}

void SNNoteTextWatcher::updateTitle()
{
    const QString title = SNNoteTitle::titleTextOfDocument(*m_ui.textView->document());
    m_window->setWindowTitle(SNNoteTitle::windowTitle(title));
    m_ui.collapsedTitleLabel->setText(SNNoteTitle::collapsedTitle(title));
}

void SNNoteTextWatcher::updateWordCount()
{
    const qint64 state = m_note ? m_note->countState() : SNTextCounter::CountWords;
    const qsizetype count
        = SNTextCounter::countOfText(m_ui.textView->document()->toPlainText(), state);
    m_ui.wordCountLabel->setText(SNTextCounter::labelText(count, state));
}

void SNNoteTextWatcher::toggleCount()
{
    if (!m_note)
        return;
    m_note->setCountState(SNTextCounter::nextCountState(m_note->countState()));
    updateWordCount();
    Q_EMIT countStateDidChange();
}

bool SNNoteTextWatcher::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_ui.wordCountLabel && event->type() == QEvent::MouseButtonRelease
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        toggleCount();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void SNNoteTextWatcher::observeSpellingSettings()
{
    connect(&SNUserDefaults::standardUserDefaults(), &GVUserDefaults::didChangeValueForKey, this,
        [this](const QString &key) {
            if (key != SNUserDefaults::checkSpellingKey()
                && key != SNUserDefaults::autoCorrectSpellingKey())
                return;
            QMetaObject::invokeMethod(
                this, [this] { updateSpellChecking(); }, Qt::QueuedConnection);
        });
}

void SNNoteTextWatcher::updateSpellChecking()
{
    const SNUserDefaults &defaults = SNUserDefaults::standardUserDefaults();
    const bool check = defaults.checkSpelling();
    const bool correct = defaults.autoCorrectSpelling();
    SNTextView *text = m_ui.textView;
    if ((check || correct) && !text->spellChecker()) {
        // The dictionaries load on first use only, and once the notes are on screen: a user
        // who checks nothing never waits for them, and nobody waits for them at start.
        if (!QWSpellChecker::isSharedSpellCheckerLoaded()) {
            QMetaObject::invokeMethod(
                this,
                [this] {
                    QWSpellChecker::sharedSpellChecker();
                    updateSpellChecking();
                },
                Qt::QueuedConnection);
            return;
        }
        text->setSpellChecker(&QWSpellChecker::sharedSpellChecker());
    }
    text->setAutomaticSpellingCorrectionEnabled(correct);
    if (check && text->isContinuousSpellCheckingEnabled())
        text->checkSpelling();
    else
        text->setContinuousSpellCheckingEnabled(check);
}
