#include "preferences/SDApperancePreferencesViewController.h"

#include "kit/QWDebouncer.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWScheduler.h"
#include "kit/widgets/QWColorWell.h"
#include "kit/widgets/QWGradientView.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "preferences/SDThemeListModel.h"
#include "preferences/SDThemeNameDelegate.h"
#include "preferences/SDThemePanels.h"
#include "preferences/SDThemePreview.h"
#include "settings/SNUserDefaults.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"
#include "themeview/SNThemeSwatch.h"
#include "ui_SDApperancePreferencesViewController.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>

#include <algorithm>

namespace {
Q_LOGGING_CATEGORY(themeListKeys, "vellumo.themelist", QtInfoMsg)
} // namespace

QString SDApperancePreferencesViewController::cannotDeleteMessage()
{
    return tr("This theme can not be deleted.");
}

QString SDApperancePreferencesViewController::deleteConfirmationMessage()
{
    return tr("Are you sure you want to delete this theme?");
}

QString SDApperancePreferencesViewController::deleteConfirmationInformativeText()
{
    return tr("This action can not be undone.");
}

QString SDApperancePreferencesViewController::missingNameMessage()
{
    return tr("Please enter a theme name");
}

SDApperancePreferencesViewController::SDApperancePreferencesViewController(QObject *parent)
    : SDApperancePreferencesViewController(nullptr, nullptr, parent)
{ }

SDApperancePreferencesViewController::SDApperancePreferencesViewController(
    SNThemeManager *themeManager, SNUserDefaults *defaults, QObject *parent)
    : QWModuleViewController(parent),
      m_themeManager(themeManager),
      m_defaults(defaults),
      m_presenter(SNModalPresenter::defaultPresenter()),
      m_delayTimer(std::make_unique<QWDebouncer>(saveDelay, [this] { save(); }))
{
    setViewMinSize(QSize(560, 440));
}

SDApperancePreferencesViewController::~SDApperancePreferencesViewController()
{
    // A change still waiting for its save is not lost with the window.
    if (m_delayTimer->isPending())
        save();
    resetFontPanel();
}

SNThemeManager &SDApperancePreferencesViewController::themeManager() const
{
    return m_themeManager ? *m_themeManager : SNThemeManager::sharedManager();
}

SNUserDefaults &SDApperancePreferencesViewController::defaults() const
{
    return m_defaults ? *m_defaults : SNUserDefaults::standardUserDefaults();
}

std::shared_ptr<SNModalPresenter> SDApperancePreferencesViewController::presenter() const
{
    return m_presenter;
}

void SDApperancePreferencesViewController::setModalPresenter(
    const std::shared_ptr<SNModalPresenter> &presenter)
{
    m_presenter = presenter ? presenter : SNModalPresenter::defaultPresenter();
}

QString SDApperancePreferencesViewController::moduleTitle() const
{
    return tr("Themes");
}

std::unique_ptr<QWidget> SDApperancePreferencesViewController::loadView()
{
    auto view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::SDApperancePreferencesViewController>();
    m_ui->setupUi(view.get());
    return view;
}

void SDApperancePreferencesViewController::qw_viewDidLoad()
{
    m_themeList = std::make_unique<SDThemeListModel>(themeManager(), defaults());
    m_preview = std::make_unique<SDThemePreview>(m_ui->gradientView, m_ui->textView);
    m_panels = std::make_unique<SDThemePanels>(view());
    connect(m_panels.get(), &SDThemePanels::fontChosen, this,
        &SDApperancePreferencesViewController::didChangeFont);

    QTableView *table = m_ui->tableView;
    table->setModel(m_themeList.get());
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    // Each row is as high as the list asks: the group row stands taller.
    table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->setIconSize(QSize(SNThemeSwatch::swatchSize, SNThemeSwatch::swatchSize));
    table->setFocusPolicy(Qt::StrongFocus);
    // Rows are chosen whole: no frame around the cell that has the keyboard.
    table->setStyleSheet(QStringLiteral("QTableView { outline: 0; }"));
    auto *delegate = new SDThemeNameDelegate(table);
    table->setItemDelegate(delegate);
    connect(delegate, &SDThemeNameDelegate::editingDidBegin, this,
        [this](QLineEdit *field, int) { m_editingTextField = field; });
    connect(delegate, &SDThemeNameDelegate::editingDidEnd, this,
        &SDApperancePreferencesViewController::nameEditingDidEnd);
    table->installEventFilter(this);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &SDApperancePreferencesViewController::tableViewSelectionDidChange);

    connect(
        m_ui->addThemeButton, &QToolButton::clicked, this, [this] { groupsActionWasClicked(0); });
    connect(m_ui->removeThemeButton, &QToolButton::clicked, this,
        [this] { groupsActionWasClicked(1); });
    connect(m_ui->defaultThemeButton, &QPushButton::clicked, this,
        &SDApperancePreferencesViewController::makeDefaultTheme);
    connect(m_ui->fontButton, &QPushButton::clicked, this,
        &SDApperancePreferencesViewController::openFontPanel);
    for (QWColorWell *well : { m_ui->startColorWell, m_ui->endColorWell, m_ui->textColorWell,
             m_ui->linkColorWell, m_ui->cursorColorWell }) {
        connect(well, &QWColorWell::clicked, this, [this, well] { openColorPanel(well); });
        connect(well, &QWColorWell::colorChanged, this,
            &SDApperancePreferencesViewController::colorDidChange);
    }

    // Opens on the theme new notes get.
    const int row = m_themeList->rowOfTheme(defaults().defaultThemeName());
    selectRow(row > 0 ? row : 1);
}

bool SDApperancePreferencesViewController::eventFilter(QObject *watched, QEvent *event)
{
    // Themes are deleted with the list's own button, which asks first; the key only leaves a
    // trace, in a category that stays out of the user's journal unless asked for
    // (QT_LOGGING_RULES="vellumo.themelist.debug=true").
    if (m_ui && watched == m_ui->tableView && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Delete) {
        qCDebug(themeListKeys, "Del");
        return true;
    }
    return QWModuleViewController::eventFilter(watched, event);
}

int SDApperancePreferencesViewController::selectedRow() const
{
    if (!m_ui)
        return -1;
    const QModelIndexList rows = m_ui->tableView->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void SDApperancePreferencesViewController::selectRow(int row)
{
    view();
    if (row <= 0 || row >= m_themeList->numberOfRows())
        return;
    m_ui->tableView->selectRow(row);
    m_ui->tableView->scrollTo(m_themeList->index(row));
    // Selecting the row that is already selected announces nothing; the preview still follows.
    tableViewSelectionDidChange();
}

void SDApperancePreferencesViewController::tableViewSelectionDidChange()
{
    const int row = selectedRow();
    if (row <= 0)
        return;
    m_currentTheme = m_themeList->themeAtRow(row);
    updatePreview();
}

void SDApperancePreferencesViewController::updatePreview()
{
    const int row = selectedRow();
    const std::shared_ptr<SNTheme> theme = m_themeList ? m_themeList->themeAtRow(row) : nullptr;
    if (!theme)
        return;
    const bool editable = theme->isEditable();
    const QList<QWColorWell *> wells = { m_ui->startColorWell, m_ui->endColorWell,
        m_ui->textColorWell, m_ui->linkColorWell, m_ui->cursorColorWell };
    for (QWColorWell *well : wells)
        well->setEnabled(editable);
    m_ui->fontButton->setEnabled(editable);
    m_ui->removeThemeButton->setEnabled(editable);

    m_ui->startColorWell->setColor(theme->startColor().toQColor());
    m_ui->endColorWell->setColor(theme->endColor().toQColor());
    m_ui->textColorWell->setColor(theme->defaultFontColor().toQColor());
    m_ui->linkColorWell->setColor(theme->linkColor().toQColor());
    m_ui->cursorColorWell->setColor(theme->cursorColor().toQColor());
    // An open colour panel shows the colour of its well in the theme now selected.
    if (m_panels->colorPanel() && m_panels->colorPanel()->isVisible())
        m_panels->colorPanelFollowWell();

    const QWFont font = theme->defaultFont();
    m_ui->fontLabel->setText(
        tr("%1pt %2").arg(QString::number(font.pointSize(), 'f', 0), font.family()));
    m_preview->showTheme(*theme);

    m_ui->defaultThemeButton->setEnabled(theme->saveName() != defaults().defaultThemeName());
    // The row's swatch follows the colours.
    m_themeList->themeDidChangeAtRow(row);
}

void SDApperancePreferencesViewController::groupsActionWasClicked(int segment)
{
    if (segment == 0)
        addTheme();
    else
        deleteSelectedGroups();
}

void SDApperancePreferencesViewController::addTheme()
{
    view();
    themeManager().addTheme(SNUserTheme::theme());
    reloadGroupsTableViewAndSelectLastRow();
    // The user types the name at once.
    const int last = m_themeList->numberOfRows() - 1;
    if (last > 0) {
        m_ui->tableView->setFocus(Qt::OtherFocusReason);
        m_ui->tableView->edit(m_themeList->index(last));
    }
}

void SDApperancePreferencesViewController::reloadGroupsTableViewAndSelectLastRow()
{
    view();
    m_themeList->reloadThemes();
    const int rows = m_themeList->numberOfRows();
    if (rows <= 1) {
        m_currentTheme.reset();
        return;
    }
    selectRow(rows - 1);
}

void SDApperancePreferencesViewController::nameEditingDidEnd(QLineEdit *field, bool cancelled)
{
    if (!field || field != m_editingTextField)
        return;
    const int row = field->property("row").toInt();
    const std::shared_ptr<SNTheme> theme = m_themeList->themeAtRow(row);
    // Escape gives the typed name up: the theme keeps its name, and one that never had a name
    // goes again.
    const QString text = cancelled ? (theme ? theme->name() : QString()) : field->text();
    m_editingTextField = nullptr;
    // The list is rebuilt once the view is done with its editor.
    QMetaObject::invokeMethod(
        this,
        [this, row, text, theme = std::weak_ptr<SNTheme>(theme)] {
            if (theme.lock() != m_themeList->themeAtRow(row))
                return;
            QLineEdit field;
            field.setProperty("row", row);
            field.setText(text);
            didEditThemeNameShouldReload(&field, true);
        },
        Qt::QueuedConnection);
}

void SDApperancePreferencesViewController::didEditThemeName(QLineEdit *field)
{
    didEditThemeNameShouldReload(field, true);
}

void SDApperancePreferencesViewController::didEditThemeNameShouldReload(
    QLineEdit *field, bool reload)
{
    if (!field)
        return;
    const QVariant tag = field->property("row");
    const int row = tag.isValid() ? tag.toInt() : -1;
    const auto theme = std::dynamic_pointer_cast<SNUserTheme>(m_themeList->themeAtRow(row));
    if (row <= 0 || !theme)
        return;
    const QString typed = field->text().trimmed();

    if (typed.isEmpty()) {
        if (!theme->name().isEmpty()) {
            field->setText(theme->name());
        } else {
            themeManager().removeTheme(theme);
            themeManager().save();
            if (reload) {
                m_themeList->reloadThemes();
                selectRow(std::min(row, m_themeList->numberOfRows() - 1));
            }
        }
        m_editingTextField = nullptr;
        return;
    }

    // Unique among the user's themes; a built-in theme's name may be taken again.
    QString name = typed;
    const auto takenByAnother = [&](const QString &candidate) {
        const std::shared_ptr<SNUserTheme> owner = themeManager().userThemeWithName(candidate);
        return owner && owner != theme;
    };
    for (qint64 suffix = 1; takenByAnother(name); ++suffix)
        name = QStringLiteral("%1 %2").arg(typed).arg(suffix);

    const QString oldSaveName = theme->saveName();
    theme->setName(name);
    const QString newSaveName = theme->saveName();
    if (oldSaveName != newSaveName) {
        QWNotificationCenter::defaultCenter().postNotificationNameObjectUserInfo(
            SNStickyNote::themeNameDidChangeNotification, nullptr,
            { { QStringLiteral("oldName"), oldSaveName },
                { QStringLiteral("newName"), newSaveName } });
        // New notes follow the default theme under its new name too.
        if (defaults().defaultThemeName() == oldSaveName)
            defaults().setDefaultThemeName(newSaveName);
    }
    themeManager().save();
    m_editingTextField = nullptr;
    if (reload) {
        m_themeList->reloadData();
        selectRow(row);
    }
}

void SDApperancePreferencesViewController::deleteSelectedGroups()
{
    m_editingTextField = nullptr;
    const int row = selectedRow();
    if (row <= 0) {
        presenter()->beep();
        return;
    }
    const auto theme = std::dynamic_pointer_cast<SNUserTheme>(m_themeList->themeAtRow(row));
    if (!theme || !theme->isEditable()) {
        QMessageBox sheet(QMessageBox::Warning, SDThemeListModel::groupRowTitle(),
            cannotDeleteMessage(), QMessageBox::Ok, parentWindow());
        sheet.setWindowModality(Qt::WindowModal);
        presenter()->runAlert(sheet);
        return;
    }
    if (!defaults().suppressThemeDeletionAlert()) {
        QMessageBox sheet(QMessageBox::Warning, SDThemeListModel::groupRowTitle(),
            deleteConfirmationMessage(), QMessageBox::NoButton, parentWindow());
        sheet.setWindowModality(Qt::WindowModal);
        sheet.setInformativeText(deleteConfirmationInformativeText());
        QPushButton *remove = sheet.addButton(tr("Delete"), QMessageBox::DestructiveRole);
        QPushButton *cancel = sheet.addButton(QMessageBox::Cancel);
        sheet.setDefaultButton(cancel);
        sheet.setEscapeButton(cancel);
        sheet.setCheckBox(new QCheckBox(tr("Do not ask again"), &sheet));
        if (presenter()->runAlert(sheet) != remove)
            return;
        defaults().setSuppressThemeDeletionAlert(sheet.checkBox()->isChecked());
    }
    themeManager().removeTheme(theme);
    themeManager().save();
    reloadGroupsTableViewAndSelectLastRow();
}

void SDApperancePreferencesViewController::makeDefaultTheme()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme)
        return;
    defaults().setDefaultThemeName(theme->saveName());
    m_ui->defaultThemeButton->setEnabled(false);
    const int row = selectedRow();
    m_themeList->reloadData();
    selectRow(row);
}

void SDApperancePreferencesViewController::colorDidChange(QWColorWell *well)
{
    if (well == m_ui->startColorWell)
        startColorDidChange();
    else if (well == m_ui->endColorWell)
        endColorDidChange();
    else if (well == m_ui->textColorWell)
        textColorDidChange();
    else if (well == m_ui->linkColorWell)
        linkColorDidChange();
    else if (well == m_ui->cursorColorWell)
        cursorColorDidChange();
}

void SDApperancePreferencesViewController::startColorDidChange()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    theme->setStartColor(QWColor::fromQColor(m_ui->startColorWell->color()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::endColorDidChange()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    theme->setEndColor(QWColor::fromQColor(m_ui->endColorWell->color()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::textColorDidChange()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    theme->setDefaultFontColor(QWColor::fromQColor(m_ui->textColorWell->color()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::linkColorDidChange()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    theme->setLinkColor(QWColor::fromQColor(m_ui->linkColorWell->color()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::cursorColorDidChange()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    theme->setCursorColor(QWColor::fromQColor(m_ui->cursorColorWell->color()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::openColorPanel(QWColorWell *well)
{
    view();
    m_panels->openColorPanel(well, parentWindow());
}

void SDApperancePreferencesViewController::openFontPanel()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    m_panels->openFontPanel(theme->defaultFont().toQFont(), parentWindow());
}

void SDApperancePreferencesViewController::didChangeFont(const QFont &font)
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    const double size
        = font.pointSizeF() > 0 ? font.pointSizeF() : theme->defaultFont().pointSize();
    theme->setDefaultFont(QWFont(font.family(), size, font.bold(), font.italic()));
    updatePreview();
    saveAfterDelay();
}

void SDApperancePreferencesViewController::fontPanelDidClose()
{
    resetFontPanel();
}

void SDApperancePreferencesViewController::resetFontPanel()
{
    if (m_panels)
        m_panels->resetFontPanel();
}

void SDApperancePreferencesViewController::saveAfterDelay()
{
    m_delayTimer->restart();
}

void SDApperancePreferencesViewController::save()
{
    m_delayTimer->cancel();
    themeManager().save();
}

bool SDApperancePreferencesViewController::windowShouldClose()
{
    if (!moduleIsVisible() || !m_editingTextField)
        return true;
    if (!m_editingTextField->text().trimmed().isEmpty()) {
        didEditThemeNameShouldReload(m_editingTextField, false);
        return true;
    }
    QMessageBox sheet(QMessageBox::Warning, SDThemeListModel::groupRowTitle(), missingNameMessage(),
        QMessageBox::Ok, parentWindow());
    sheet.setWindowModality(Qt::WindowModal);
    presenter()->runAlert(sheet);
    return false;
}

void SDApperancePreferencesViewController::windowDidResignKey()
{
    if (m_panels)
        m_panels->windowDidResignKey(parentWindow());
}

void SDApperancePreferencesViewController::qw_viewWillDisappear()
{
    QWModuleViewController::qw_viewWillDisappear();
    if (m_panels)
        m_panels->closePanels();
}

QColorDialog *SDApperancePreferencesViewController::colorPanel() const
{
    return m_panels ? m_panels->colorPanel() : nullptr;
}

QFontDialog *SDApperancePreferencesViewController::fontPanel() const
{
    return m_panels ? m_panels->fontPanel() : nullptr;
}

QTableView *SDApperancePreferencesViewController::tableView() const
{
    return m_ui ? m_ui->tableView : nullptr;
}

QWGradientView *SDApperancePreferencesViewController::gradientView() const
{
    return m_ui ? m_ui->gradientView : nullptr;
}

QTextBrowser *SDApperancePreferencesViewController::textView() const
{
    return m_ui ? m_ui->textView : nullptr;
}

QWColorWell *SDApperancePreferencesViewController::startColorWell() const
{
    return m_ui ? m_ui->startColorWell : nullptr;
}

QWColorWell *SDApperancePreferencesViewController::endColorWell() const
{
    return m_ui ? m_ui->endColorWell : nullptr;
}

QWColorWell *SDApperancePreferencesViewController::textColorWell() const
{
    return m_ui ? m_ui->textColorWell : nullptr;
}

QWColorWell *SDApperancePreferencesViewController::linkColorWell() const
{
    return m_ui ? m_ui->linkColorWell : nullptr;
}

QWColorWell *SDApperancePreferencesViewController::cursorColorWell() const
{
    return m_ui ? m_ui->cursorColorWell : nullptr;
}

QPushButton *SDApperancePreferencesViewController::fontButton() const
{
    return m_ui ? m_ui->fontButton : nullptr;
}

QString SDApperancePreferencesViewController::fontLabelText() const
{
    return m_ui ? m_ui->fontLabel->text() : QString();
}

QPushButton *SDApperancePreferencesViewController::defaultThemeButton() const
{
    return m_ui ? m_ui->defaultThemeButton : nullptr;
}
