#pragma once

#include "preferences/QWViewController.h"

#include <QIcon>
#include <QString>

// One page of the preferences window: what its sidebar row says, the window title while it is
// shown, and whether the window may be resized meanwhile.
class QWModuleViewController : public QWViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QWModuleViewController)

public:
    explicit QWModuleViewController(QObject *parent = nullptr);
    ~QWModuleViewController() override;

    virtual QString moduleTitle() const { return m_moduleTitle; }
    void setModuleTitle(const QString &title) { m_moduleTitle = title; }
    // Declared for a second line and a picture; the preferences window shows neither.
    QString moduleSubTitle() const { return m_moduleSubTitle; }
    void setModuleSubTitle(const QString &subTitle) { m_moduleSubTitle = subTitle; }
    QIcon moduleImage() const { return m_moduleImage; }
    void setModuleImage(const QIcon &image) { m_moduleImage = image; }
    // Empty means moduleTitle().
    virtual QString moduleWindowTitle() const { return m_moduleWindowTitle; }
    void setModuleWindowTitle(const QString &title) { m_moduleWindowTitle = title; }

    // True while the module is the one shown.
    bool moduleIsVisible() const { return m_moduleIsVisible; }
    void setModuleIsVisible(bool visible) { m_moduleIsVisible = visible; }
    virtual bool moduleIsResizable() const { return false; }

    // The preferences window asks before it closes; false keeps it open.
    virtual bool windowShouldClose() { return true; }
    // The preferences window lost the keyboard to another window or program.
    virtual void windowDidResignKey() { }

private:
    QString m_moduleTitle;
    QString m_moduleSubTitle;
    QIcon m_moduleImage;
    QString m_moduleWindowTitle;
    bool m_moduleIsVisible = false;
};
