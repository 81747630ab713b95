#pragma once

#include "preferences/QWModuleViewController.h"

#include <QList>

#include <memory>

namespace Ui {
class QWAboutViewController;
}

// The About page: the program's name and version, and the free software it is built on with
// the licence of each.
class QWAboutViewController final : public QWModuleViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWAboutViewController)

public:
    struct Credit
    {
        QString name;
        QString use;
        QString licence;
    };
    static QList<Credit> credits();

    explicit QWAboutViewController(QObject *parent = nullptr);
    ~QWAboutViewController() override;

    QString moduleTitle() const override;
    QString moduleWindowTitle() const override;
    bool moduleIsResizable() const override { return false; }

    // As shown: "Vellumo", "Version 0.1.0", and the credits as plain text.
    QString nameText() const;
    QString versionText() const;
    QString creditsText() const;

protected:
    std::unique_ptr<QWidget> loadView() override;
    void qw_viewDidLoad() override;

private:
    std::unique_ptr<Ui::QWAboutViewController> m_ui;
};
