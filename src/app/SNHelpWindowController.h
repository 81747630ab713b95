#pragma once

#include "kit/widgets/QWWindowController.h"

#include <memory>

class QTextBrowser;

namespace Ui {
class SNHelpWindowController;
}

// The user guide, shown from the program's own resources: help works without a network and
// says what this very version does.
class SNHelpWindowController final : public QWWindowController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNHelpWindowController)

public:
    explicit SNHelpWindowController(QObject *parent = nullptr);
    ~SNHelpWindowController() override;

    QTextBrowser *textBrowser() const;

protected:
    std::unique_ptr<QWidget> loadWindow() override;

private:
    std::unique_ptr<Ui::SNHelpWindowController> m_ui;
};
