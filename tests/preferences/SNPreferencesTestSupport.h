#pragma once

#include "kit/widgets/SNModalPresenter.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QCoreApplication>
#include <QMessageBox>
#include <QStringList>

// Answers the preferences' alerts and sheets in place of a person: with the button of the
// given text (none: the alert goes away otherwise), ticking the suppression box when asked.
class AnsweringPresenter final : public SNModalPresenter
{
public:
    struct Answer
    {
        QString button;
        bool tickBox = false;
    };
    struct Asked
    {
        QString text;
        QString informativeText;
        QStringList buttons;
        bool hasCheckBox = false;
    };

    QList<Answer> answers;
    QList<Asked> asked;
    int beeps = 0;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        Asked question { alert.text(), alert.informativeText(), {}, alert.checkBox() != nullptr };
        const QList<QAbstractButton *> buttons = alert.buttons();
        for (QAbstractButton *button : buttons)
            question.buttons.append(button->text());
        asked.append(question);
        const Answer answer = answers.isEmpty() ? Answer() : answers.takeFirst();
        if (answer.tickBox && alert.checkBox())
            alert.checkBox()->setChecked(true);
        for (QAbstractButton *button : buttons) {
            if (button->text() == answer.button)
                return button;
        }
        return nullptr;
    }

    void beep() override { ++beeps; }
};

// Lets queued work (the end of editing in item views) run.
inline void settle()
{
    for (int round = 0; round < 5; ++round)
        QCoreApplication::processEvents();
}
