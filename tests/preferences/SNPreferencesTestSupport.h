#pragma once

#include "kit/widgets/SNModalPresenter.h"
#include "settings/SNUserDefaults.h"
#include "support/QWManualScheduler.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QCoreApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <memory>

// Answers the preferences' alerts as a person would, each alert run for real: ticks its box or
// not, then presses the button of the given text, or Escape, or else the alert window's close
// button. Remembers the text of each alert.
class AnsweringPresenter final : public SNModalPresenter
{
public:
    struct Answer
    {
        QString button; // "Escape" for the key
        bool tickBox = false;
    };

    QList<Answer> answers;
    QStringList asked;
    int beeps = 0;

    QAbstractButton *runAlert(QMessageBox &alert) override
    {
        asked.append(alert.text());
        const Answer answer = answers.isEmpty() ? Answer() : answers.takeFirst();
        QTimer::singleShot(0, &alert, [&alert, answer] {
            if (alert.checkBox())
                alert.checkBox()->setChecked(answer.tickBox);
            const QList<QAbstractButton *> buttons = alert.buttons();
            for (QAbstractButton *button : buttons) {
                if (button->text() == answer.button)
                    return QTest::mouseClick(button, Qt::LeftButton);
            }
            if (answer.button == u"Escape")
                QTest::keyClick(&alert, Qt::Key_Escape);
            else
                alert.close();
        });
        return SNModalPresenter::runAlert(alert);
    }

    void beep() override { ++beeps; }
};

// What every preferences test starts from: time that moves only when told, a person to answer
// the alerts, and no alert suppressed yet.
struct PreferencesFixture
{
    QWManualScheduler time;
    std::shared_ptr<AnsweringPresenter> presenter = std::make_shared<AnsweringPresenter>();

    PreferencesFixture()
    {
        SNUserDefaults::setSuppressQuitAlert(false);
        SNUserDefaults::standardUserDefaults().setSuppressThemeDeletionAlert(false);
    }
};

// Lets queued work (the end of editing in item views) run.
inline void settle()
{
    for (int round = 0; round < 5; ++round)
        QCoreApplication::processEvents();
}
