#include "kit/QWKeyCombo.h"

#include "kit/QWKeyCodes.h"

#include <QKeySequence>
#include <QStringList>

QWKeyCombo QWKeyCombo::fromQtKey(int qtKey, Qt::KeyboardModifiers modifiers)
{
    const qint64 code = QWKeyCodes::keyCodeForQtKey(qtKey, modifiers.testFlag(Qt::KeypadModifier));
    if (code < 0)
        return {};
    return { QWKeyCodes::flagsForQtModifiers(modifiers), code };
}

QString QWKeyCombo::description() const
{
    if (isEmpty())
        return {};
    // Our own modifier names: Qt calls Super "Meta", which no Linux keyboard is labelled with.
    QStringList parts;
    if (flags & ControlKeyMask)
        parts.append(QStringLiteral("Ctrl"));
    if (flags & OptionKeyMask)
        parts.append(QStringLiteral("Alt"));
    if (flags & ShiftKeyMask)
        parts.append(QStringLiteral("Shift"));
    if (flags & CommandKeyMask)
        parts.append(QStringLiteral("Super"));

    const Qt::Key key = QWKeyCodes::qtKeyForKeyCode(code);
    if (key == Qt::Key_unknown) {
        parts.append(QStringLiteral("Key %1").arg(code));
    } else {
        const Qt::KeyboardModifiers keypad
            = QWKeyCodes::isKeypadKeyCode(code) ? Qt::KeypadModifier : Qt::NoModifier;
        parts.append(
            QKeySequence(QKeyCombination(keypad, key)).toString(QKeySequence::PortableText));
    }
    return parts.join(QLatin1Char('+'));
}
