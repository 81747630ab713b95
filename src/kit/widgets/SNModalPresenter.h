#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

class QAbstractButton;
class QFileDialog;
class QMessageBox;

// Runs the questions and file choosers that a note window puts in front of the user, each built
// and configured by the window's controller. Tests give a controller a presenter of their own
// that answers in place of a person.
class SNModalPresenter
{
    Q_DISABLE_COPY_MOVE(SNModalPresenter)

public:
    SNModalPresenter() = default;
    virtual ~SNModalPresenter();

    // The button pressed; null when the alert went away otherwise.
    virtual QAbstractButton *runAlert(QMessageBox &alert);
    // The file chosen; empty when the user cancelled.
    virtual QString runSavePanel(QFileDialog &panel);
    virtual void beep();

    static std::shared_ptr<SNModalPresenter> defaultPresenter();
};
