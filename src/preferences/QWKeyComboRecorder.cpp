#include "preferences/QWKeyComboRecorder.h"

#include "kit/QWKeyCodes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QToolButton>

namespace {

bool isModifierKey(int key)
{
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt
        || key == Qt::Key_Meta || key == Qt::Key_Super_L || key == Qt::Key_Super_R
        || key == Qt::Key_AltGr || key == Qt::Key_Hyper_L || key == Qt::Key_Hyper_R;
}

bool isFunctionKey(qint64 code)
{
    const Qt::Key key = QWKeyCodes::qtKeyForKeyCode(code);
    return key >= Qt::Key_F1 && key <= Qt::Key_F35;
}

QString heldModifiersText(Qt::KeyboardModifiers modifiers)
{
    QStringList parts;
    if (modifiers & Qt::ControlModifier)
        parts.append(QStringLiteral("Ctrl"));
    if (modifiers & Qt::AltModifier)
        parts.append(QStringLiteral("Alt"));
    if (modifiers & Qt::ShiftModifier)
        parts.append(QStringLiteral("Shift"));
    if (modifiers & Qt::MetaModifier)
        parts.append(QStringLiteral("Super"));
    return parts.join(QLatin1Char('+'));
}

constexpr int horizontalPadding = 8;

} // namespace

QWKeyComboRecorder::QWKeyComboRecorder(QWidget *parent)
    : QWidget(parent), m_clearButton(new QToolButton(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled, false);
    setCursor(Qt::PointingHandCursor);
    m_clearButton->setText(QStringLiteral("×"));
    m_clearButton->setToolTip(tr("Clear the shortcut"));
    m_clearButton->setAutoRaise(true);
    m_clearButton->setCursor(Qt::ArrowCursor);
    m_clearButton->setFocusPolicy(Qt::NoFocus);
    connect(m_clearButton, &QToolButton::clicked, this, [this] {
        endRecording();
        record({ 0, 0 });
    });
    setKeyCombo({ 0, 0 });
}

QWKeyComboRecorder::~QWKeyComboRecorder() = default;

void QWKeyComboRecorder::setKeyCombo(const QWKeyCombo &combo)
{
    m_keyCombo = combo;
    m_clearButton->setVisible(!combo.isEmpty());
    update();
}

QString QWKeyComboRecorder::displayedText() const
{
    if (m_recording) {
        const QString held = heldModifiersText(m_heldModifiers);
        return held.isEmpty() ? tr("Type a shortcut") : held + QStringLiteral("+…");
    }
    if (m_keyCombo.isEmpty())
        return tr("None");
    return m_keyCombo.description();
}

void QWKeyComboRecorder::beginRecording()
{
    if (m_recording)
        return;
    m_recording = true;
    m_heldModifiers = Qt::NoModifier;
    setFocus(Qt::OtherFocusReason);
    // Our own hot keys are passive grabs: an active grab takes precedence over them.
    if (isVisible())
        grabKeyboard();
    update();
}

void QWKeyComboRecorder::endRecording()
{
    if (!m_recording)
        return;
    m_recording = false;
    releaseKeyboard();
    update();
}

void QWKeyComboRecorder::clearKeyCombo()
{
    record({ 0, 0 });
}

void QWKeyComboRecorder::record(const QWKeyCombo &combo)
{
    setKeyCombo(combo);
    Q_EMIT keyComboDidChange(this, combo);
}

void QWKeyComboRecorder::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    if (m_recording)
        endRecording();
    else
        beginRecording();
}

void QWKeyComboRecorder::keyPressEvent(QKeyEvent *event)
{
    const int key = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers()
        & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier
            | Qt::KeypadModifier);
    if (!m_recording) {
        if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter)
            beginRecording();
        else if (key == Qt::Key_Backspace || key == Qt::Key_Delete)
            clearKeyCombo();
        else
            QWidget::keyPressEvent(event);
        return;
    }

    const Qt::KeyboardModifiers held = modifiers & ~Qt::KeypadModifier;
    if (isModifierKey(key)) {
        m_heldModifiers = held;
        update();
        return;
    }
    if (held == Qt::NoModifier && key == Qt::Key_Escape) {
        endRecording();
        return;
    }
    if (held == Qt::NoModifier && (key == Qt::Key_Backspace || key == Qt::Key_Delete)) {
        endRecording();
        clearKeyCombo();
        return;
    }

    QWKeyCombo combo = QWKeyCombo::fromQtKey(key, modifiers);
    if (combo.isEmpty() && event->nativeVirtualKey() != 0) {
        // Shifted symbols arrive as their own keys ("!" for Shift+1); the key's keysym names
        // the key itself.
        const qint64 code = QWKeyCodes::keyCodeForKeysym(event->nativeVirtualKey());
        if (code >= 0)
            combo = { QWKeyCodes::flagsForQtModifiers(held), code };
    }
    // A plain letter as a system-wide hot key would take that letter from every program.
    if (combo.isEmpty() || (combo.flags == 0 && !isFunctionKey(combo.code))) {
        QApplication::beep();
        return;
    }
    endRecording();
    record(combo);
}

void QWKeyComboRecorder::keyReleaseEvent(QKeyEvent *event)
{
    if (m_recording && isModifierKey(event->key())) {
        m_heldModifiers = event->modifiers()
            & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
        update();
        return;
    }
    QWidget::keyReleaseEvent(event);
}

void QWKeyComboRecorder::focusOutEvent(QFocusEvent *event)
{
    endRecording();
    QWidget::focusOutEvent(event);
}

QSize QWKeyComboRecorder::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int width = metrics.horizontalAdvance(QStringLiteral("Ctrl+Alt+Shift+Super+N"))
        + 2 * horizontalPadding + m_clearButton->sizeHint().width();
    return { width, std::max(metrics.height() + 12, 28) };
}

QSize QWKeyComboRecorder::minimumSizeHint() const
{
    return sizeHint();
}

void QWKeyComboRecorder::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeClearButton();
}

void QWKeyComboRecorder::placeClearButton()
{
    const int side = height() - 6;
    m_clearButton->setGeometry(width() - side - 3, 3, side, side);
}

void QWKeyComboRecorder::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, this);
    frame.midLineWidth = 0;
    frame.state |= QStyle::State_Sunken;
    if (m_recording)
        frame.state |= QStyle::State_HasFocus;
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);

    QRect textRect = rect().adjusted(horizontalPadding, 0, -horizontalPadding, 0);
    if (m_clearButton->isVisible())
        textRect.setRight(m_clearButton->geometry().left() - 2);
    const bool dim = m_recording || m_keyCombo.isEmpty();
    painter.setPen(palette().color(isEnabled() ? (dim ? QPalette::PlaceholderText : QPalette::Text)
                                               : QPalette::PlaceholderText));
    painter.drawText(textRect, Qt::AlignVCenter | Qt::AlignHCenter, displayedText());
}
