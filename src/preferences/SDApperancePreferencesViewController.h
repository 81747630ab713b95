#pragma once

#include "kit/widgets/QWColorWell.h"
#include "preferences/QWModuleViewController.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QLineEdit>
#include <QPointer>

#include <memory>

class QFont;
class QPushButton;
class QTableView;
class QTextBrowser;
class QWGradientView;
class QWDebouncer;
class SDThemeListModel;
class SDThemePanels;
class SDThemePreview;
class SNModalPresenter;
class SNTheme;
class SNThemeManager;
class SNUserDefaults;

namespace Ui {
class SDApperancePreferencesViewController;
}

// The theme editor, the "Themes" page of the preferences: every theme listed under a group
// row, a preview of the selected one, its five colours and its font. Built-in themes can be
// previewed and made the default for new notes; the user's own can also be added, named,
// changed and deleted. Changes are saved half a second after the last one, which repaints the
// open notes in the theme.
class SDApperancePreferencesViewController final : public QWModuleViewController
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SDApperancePreferencesViewController)

public:
    static constexpr double saveDelay = 0.5;

    static QString cannotDeleteMessage(); // "This theme can not be deleted."
    static QString deleteConfirmationMessage(); // "Are you sure you want to delete this theme?"
    static QString deleteConfirmationInformativeText(); // "This action can not be undone."
    static QString missingNameMessage(); // "Please enter a theme name"

    // Null arguments mean the shared registry and settings.
    explicit SDApperancePreferencesViewController(QObject *parent = nullptr);
    SDApperancePreferencesViewController(
        SNThemeManager *themeManager, SNUserDefaults *defaults, QObject *parent = nullptr);
    ~SDApperancePreferencesViewController() override;

    QString moduleTitle() const override;
    bool moduleIsResizable() const override { return true; }
    bool windowShouldClose() override;
    void windowDidResignKey() override;
    void qw_viewWillDisappear() override;

    void setModalPresenter(const std::shared_ptr<SNModalPresenter> &presenter);

    // The list: the group row, then every theme; made with the view.
    SDThemeListModel *themeList() const { return m_themeList.get(); }
    std::shared_ptr<SNTheme> currentTheme() const { return m_currentTheme.lock(); }
    int selectedRow() const;
    void selectRow(int row);

    void tableViewSelectionDidChange();
    void updatePreview();

    // 0 adds a theme, anything else deletes the selection.
    void groupsActionWasClicked(int segment);
    void addTheme();
    void reloadGroupsTableViewAndSelectLastRow();
    // Names the theme of the field's row from the field's text; an empty text gives the old
    // name back, or drops a theme that never had one.
    void didEditThemeName(QLineEdit *field);
    void didEditThemeNameShouldReload(QLineEdit *field, bool reload);
    void deleteSelectedGroups();
    void makeDefaultTheme();

    void startColorDidChange();
    void endColorDidChange();
    void textColorDidChange();
    void linkColorDidChange();
    void cursorColorDidChange();
    // Opens the shared colour panel for a well; its choices go into the well as they are made.
    void openColorPanel(QWColorWell *well);
    void openFontPanel();
    void didChangeFont(const QFont &font);
    void fontPanelDidClose();
    void resetFontPanel();

    void saveAfterDelay();
    void save();

    QLineEdit *editingTextField() const { return m_editingTextField; }
    QTableView *tableView() const;
    QWGradientView *gradientView() const;
    QTextBrowser *textView() const;
    QWColorWell *startColorWell() const;
    QWColorWell *endColorWell() const;
    QWColorWell *textColorWell() const;
    QWColorWell *linkColorWell() const;
    QWColorWell *cursorColorWell() const;
    QPushButton *fontButton() const;
    QString fontLabelText() const;
    QPushButton *defaultThemeButton() const;
    QColorDialog *colorPanel() const;
    QFontDialog *fontPanel() const;

protected:
    std::unique_ptr<QWidget> loadView() override;
    void qw_viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    SNThemeManager &themeManager() const;
    SNUserDefaults &defaults() const;
    void colorDidChange(QWColorWell *well);
    void nameEditingDidEnd(QLineEdit *field, bool cancelled);
    std::shared_ptr<SNModalPresenter> presenter() const;

    SNThemeManager *m_themeManager = nullptr;
    SNUserDefaults *m_defaults = nullptr;
    std::shared_ptr<SNModalPresenter> m_presenter;
    std::unique_ptr<Ui::SDApperancePreferencesViewController> m_ui;
    std::unique_ptr<SDThemeListModel> m_themeList;
    std::unique_ptr<SDThemePreview> m_preview;
    std::unique_ptr<SDThemePanels> m_panels;
    std::weak_ptr<SNTheme> m_currentTheme;
    QPointer<QLineEdit> m_editingTextField;
    std::unique_ptr<QWDebouncer> m_delayTimer;
};
