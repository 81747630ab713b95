#include "notewindow/SNWindowLevel.h"

#include "kit/widgets/QWX11WindowState.h"

SNWindowLevel::Level SNWindowLevel::levelForPinState(qint64 pinState)
{
    switch (pinState) {
    case 1:
        return Level::Floating;
    case 2:
        return Level::Desktop;
    default:
        return Level::Normal;
    }
}

void SNWindowLevel::applyPinState(QWidget *window, qint64 pinState)
{
    setLevel(window, levelForPinState(pinState));
}

void SNWindowLevel::applyDialogLevel(QWidget *dialog, qint64 notePinState)
{
    setLevel(
        dialog, levelForPinState(notePinState) == Level::Normal ? Level::Normal : Level::Floating);
}

void SNWindowLevel::setLevel(QWidget *window, Level level)
{
    switch (level) {
    case Level::Normal:
        QWX11WindowState::setLevel(window, QWX11WindowState::Level::Normal);
        break;
    case Level::Floating:
        QWX11WindowState::setLevel(window, QWX11WindowState::Level::KeepAbove);
        break;
    case Level::Desktop:
        QWX11WindowState::setLevel(window, QWX11WindowState::Level::KeepBelow);
        break;
    }
}
