#include "kit/widgets/SNModalPresenter.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

SNModalPresenter::~SNModalPresenter() = default;

QAbstractButton *SNModalPresenter::runAlert(QMessageBox &alert)
{
    alert.exec();
    return alert.clickedButton();
}

QString SNModalPresenter::runSavePanel(QFileDialog &panel)
{
    if (panel.exec() != QDialog::Accepted)
        return {};
    const QStringList files = panel.selectedFiles();
    return files.isEmpty() ? QString() : files.first();
}

void SNModalPresenter::beep()
{
    QApplication::beep();
}

std::shared_ptr<SNModalPresenter> SNModalPresenter::defaultPresenter()
{
    static const auto presenter = std::make_shared<SNModalPresenter>();
    return presenter;
}
