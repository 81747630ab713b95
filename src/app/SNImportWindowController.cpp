#include "app/SNImportWindowController.h"

#include "kit/widgets/QWWindowCloseKeys.h"
#include "ui_SNImportWindowController.h"

SNImportWindowController::SNImportWindowController(QObject *parent) : QWWindowController(parent) { }

SNImportWindowController::~SNImportWindowController() = default;

SNImportPanel *SNImportWindowController::importPanel() const
{
    return m_ui ? m_ui->importPanel : nullptr;
}

std::unique_ptr<QWidget> SNImportWindowController::loadWindow()
{
    auto window = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::SNImportWindowController>();
    m_ui->setupUi(window.get());
    QWidget *raw = window.get();
    connect(m_ui->closeButton, &QPushButton::clicked, raw, &QWidget::close);
    QWWindowCloseKeys::install(raw);
    connect(m_ui->chooseFolderButton, &QPushButton::clicked, this,
        &SNImportWindowController::otherFolderRequested);
    return window;
}
