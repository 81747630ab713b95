#pragma once

#include "kit/widgets/QWWindowController.h"

#include <memory>

class SNImportPanel;

namespace Ui {
class SNImportWindowController;
}

// The "Import Notes" window: the import panel, a button to look in another home folder (a
// copy from an old computer) and one to close. What the panel shows, its owner decides.
class SNImportWindowController final : public QWWindowController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNImportWindowController)

public:
    explicit SNImportWindowController(QObject *parent = nullptr);
    ~SNImportWindowController() override;

    // Null until the window is loaded.
    SNImportPanel *importPanel() const;

Q_SIGNALS:
    void otherFolderRequested();

protected:
    std::unique_ptr<QWidget> loadWindow() override;

private:
    std::unique_ptr<Ui::SNImportWindowController> m_ui;
};
