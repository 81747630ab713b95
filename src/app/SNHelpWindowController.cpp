#include "app/SNHelpWindowController.h"

#include "kit/widgets/QWWindowCloseKeys.h"
#include "ui_SNHelpWindowController.h"

SNHelpWindowController::SNHelpWindowController(QObject *parent) : QWWindowController(parent) { }

SNHelpWindowController::~SNHelpWindowController() = default;

QTextBrowser *SNHelpWindowController::textBrowser() const
{
    return m_ui ? m_ui->textBrowser : nullptr;
}

std::unique_ptr<QWidget> SNHelpWindowController::loadWindow()
{
    auto window = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::SNHelpWindowController>();
    m_ui->setupUi(window.get());
    QWWindowCloseKeys::install(window.get());
    return window;
}
