#include "secret/QWSuperSecret.h"

#include "kit/QWDebouncer.h"
#include "kit/QWKeyCodes.h"
#include "kit/QWNotificationCenter.h"
#include "secret/QWSound.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPointer>

const QString QWSuperSecret::superSecretNotification = QStringLiteral("QWSuperSecretNotification");

namespace {

// Key codes of the keyboard table (QWKeyCodes): Q W E R T Y U I O P Space.
constexpr quint16 sequence[] = { 12, 13, 14, 15, 17, 16, 32, 34, 31, 35, 49 };

int hexDigitValue(QChar character)
{
    const char16_t c = character.unicode();
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

// Modifier keys alone are no key presses here: they only change the keys pressed with them,
// so Shift held for a capital neither spoils the sequence nor restarts the pause.
bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
        return true;
    default:
        return false;
    }
}

} // namespace

QWSuperSecret *QWSuperSecret::shhhhhh()
{
    // Made once; the application object owns it.
    static QWSuperSecret *const shared = new QWSuperSecret(QCoreApplication::instance());
    return shared;
}

QWSuperSecret::QWSuperSecret(QObject *parent)
    : QObject(parent), m_timer(std::make_unique<QWDebouncer>(resetDelay, [this] { byebye(); }))
{
    m_boom = QList<quint16>(std::begin(sequence), std::end(sequence));
    wellThen();
    yep();
}

QWSuperSecret::~QWSuperSecret() = default;

QByteArray QWSuperSecret::bytesFromHexString(const QString &hex)
{
    QByteArray bytes;
    bytes.reserve(hex.size() / 2 + 1);
    // Whether another pair follows is decided on half the length in single precision; a
    // missing digit reads as none, so no pair reaches past the end of the text.
    const float half = float(hex.size()) * 0.5f;
    for (qsizetype pair = 1;; ++pair) {
        const qsizetype first = 2 * (pair - 1);
        int value = 0;
        const int high = first < hex.size() ? hexDigitValue(hex.at(first)) : -1;
        if (high >= 0) {
            value = high;
            const int low = first + 1 < hex.size() ? hexDigitValue(hex.at(first + 1)) : -1;
            if (low >= 0)
                value = value * 16 + low;
        }
        bytes.append(char(value & 0xFF));
        if (!(half > float(pair)))
            break;
    }
    return bytes;
}

void QWSuperSecret::wellThen()
{
    m_sound = std::make_unique<QWSound>(bytesFromHexString(dontEvenAsk()));
}

void QWSuperSecret::yep()
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application) {
        qWarning("[DEBUG] No application to listen to: the hidden key sequence is off");
        return;
    }
    if (m_localEventListener)
        return;
    application->installEventFilter(this);
    m_localEventListener = true;
}

void QWSuperSecret::tada()
{
    m_sound->play();
    QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
        superSecretNotification);
}

void QWSuperSecret::byebye()
{
    m_magic.clear();
}

bool QWSuperSecret::handleKeyEvent(QKeyEvent *event)
{
    if (isModifierKey(event->key()))
        return false;
    if (event->type() == QEvent::KeyRelease) {
        m_timer->restart();
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;
    const qint64 code = QWKeyCodes::keyCodeForQtKey(
        event->key(), event->modifiers().testFlag(Qt::KeypadModifier));
    // Keys outside the table take the code no key has.
    m_magic.append(quint16(code));
    if (m_magic != m_boom)
        return false;
    tada();
    return true;
}

bool QWSuperSecret::eventFilter(QObject *watched, QEvent *event)
{
    // A key reaches the window first and is then handed on to the widget with the focus, each
    // time past this filter: it is counted at the window only.
    if ((event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
        && watched->isWindowType())
        return handleKeyEvent(static_cast<QKeyEvent *>(event));
    return QObject::eventFilter(watched, event);
}
