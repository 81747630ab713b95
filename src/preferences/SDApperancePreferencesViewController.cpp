#include "preferences/SDApperancePreferencesViewController.h"

#include "kit/QWDebouncer.h"
#include "kit/QWNotificationCenter.h"
#include "kit/QWScheduler.h"
#include "kit/widgets/QWColorWell.h"
#include "kit/widgets/QWGradientView.h"
#include "kit/widgets/SNModalPresenter.h"
#include "notes/SNStickyNote.h"
#include "preferences/SDThemeNameDelegate.h"
#include "settings/SNUserDefaults.h"
#include "themes/SNThemeManager.h"
#include "themes/SNUserTheme.h"
#include "themeview/SNLinkHighlighter.h"
#include "themeview/SNThemeSwatch.h"
#include "themeview/SNThemeTextStyler.h"
#include "ui_SDApperancePreferencesViewController.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QFontDatabase>
#include <QFontDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int nameColumn = 0;
constexpr int rowHeight = 28;

// Panels open beside the preferences window, so the preview stays in sight while they are used.
void placeBesideWindow(QWidget *panel, const QWidget *window)
{
    if (!window || panel->isVisible())
        return;
    const QRect frame = window->frameGeometry();
    const QScreen *screen = window->screen();
    const QRect available = screen ? screen->availableGeometry() : frame;
    const QSize size = panel->sizeHint();
    QPoint origin(frame.right() + 8, frame.top());
    if (origin.x() + size.width() > available.right())
        origin.setX(frame.left() - 8 - size.width());
    origin.setX(std::clamp(origin.x(), available.left(),
        std::max(available.left(), available.right() - size.width())));
    origin.setY(std::clamp(origin.y(), available.top(),
        std::max(available.top(), available.bottom() - size.height())));
    panel->move(origin);
}

// The font panel shows the first style of a family unless told which one the font is; the
// plainest style with the font's weight and slant is meant.
QFont fontWithStyleName(QFont font)
{
    const QString family = QWFont::substitutedFamily(font.family());
    QString best;
    for (const QString &style : QFontDatabase::styles(family)) {
        if (QFontDatabase::bold(family, style) != font.bold()
            || QFontDatabase::italic(family, style) != font.italic())
            continue;
        if (best.isEmpty() || style.size() < best.size())
            best = style;
    }
    if (!best.isEmpty()) {
        font.setFamily(family);
        font.setStyleName(best);
    }
    return font;
}

} // namespace

QString SDApperancePreferencesViewController::groupRowTitle()
{
    return tr("Themes");
}

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

QString SDApperancePreferencesViewController::sampleText()
{
    return tr("Saturday market #home\n"
              "Bread, pears and flowers for the table. Ask about the cake for #family lunch.");
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
    if (isViewLoaded())
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
    QTableWidget *table = m_ui->tableView;
    table->setColumnCount(1);
    table->horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
    table->verticalHeader()->setDefaultSectionSize(rowHeight);
    table->setIconSize(QSize(SNThemeSwatch::swatchSize, SNThemeSwatch::swatchSize));
    table->setFocusPolicy(Qt::StrongFocus);
    // Rows are chosen whole: no frame around the cell that has the keyboard.
    table->setStyleSheet(QStringLiteral("QTableWidget { outline: 0; }"));
    auto *delegate = new SDThemeNameDelegate(table);
    table->setItemDelegate(delegate);
    connect(delegate, &SDThemeNameDelegate::editingDidBegin, this,
        [this](QLineEdit *field, int) { m_editingTextField = field; });
    connect(delegate, &SDThemeNameDelegate::editingDidEnd, this,
        &SDApperancePreferencesViewController::nameEditingDidEnd);
    table->installEventFilter(this);
    connect(table, &QTableWidget::itemSelectionChanged, this,
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

    // The preview is a note in miniature: the gradient shows through the text.
    QTextBrowser *preview = m_ui->textView;
    preview->setStyleSheet(QStringLiteral("QTextBrowser { background: transparent; }"));
    preview->viewport()->setAutoFillBackground(false);
    preview->setFocusPolicy(Qt::NoFocus);
    preview->setPlainText(sampleText());
    m_linkHighlighter = new SNLinkHighlighter(preview->document());
    tokenizeTags();

    reloadThemes();
    reloadData();
    int row = 1;
    const QString defaultName = defaults().defaultThemeName();
    for (int candidate = 1; candidate < numberOfRows(); ++candidate) {
        if (themeAtRow(candidate)->saveName() == defaultName) {
            row = candidate;
            break;
        }
    }
    selectRow(row);
}

bool SDApperancePreferencesViewController::eventFilter(QObject *watched, QEvent *event)
{
    // Themes are deleted with the list's own button, which asks first; the key does nothing.
    if (m_ui && watched == m_ui->tableView && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Delete)
        return true;
    return QWModuleViewController::eventFilter(watched, event);
}

void SDApperancePreferencesViewController::tokenizeTags()
{
    // Links only: the preview's hashtags are not tags of any note.
    QTextDocument *document = m_ui->textView->document();
    static const QRegularExpression hashtag(
        QStringLiteral("#(\\w+)"), QRegularExpression::CaseInsensitiveOption);
    QTextCursor batch(document);
    batch.beginEditBlock();
    const QString text = document->toPlainText();
    for (QRegularExpressionMatchIterator it = hashtag.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        QTextCursor cursor(document);
        cursor.setPosition(int(match.capturedStart()));
        cursor.setPosition(int(match.capturedEnd()), QTextCursor::KeepAnchor);
        QTextCharFormat link;
        link.setAnchor(true);
        link.setAnchorHref(match.captured());
        cursor.mergeCharFormat(link);
    }
    batch.endEditBlock();
}

void SDApperancePreferencesViewController::reloadThemes()
{
    m_themes.clear();
    m_themes.append(groupRowTitle());
    for (const std::shared_ptr<SNTheme> &theme : themeManager().themes())
        m_themes.append(theme);
}

std::shared_ptr<SNTheme> SDApperancePreferencesViewController::themeAtRow(int row) const
{
    if (row < 0 || row >= m_themes.size())
        return nullptr;
    const auto *theme = std::get_if<std::shared_ptr<SNTheme>>(&m_themes[row]);
    return theme ? *theme : nullptr;
}

bool SDApperancePreferencesViewController::isDefaultMarkerVisibleAtRow(int row) const
{
    const QTableWidgetItem *item = m_ui ? m_ui->tableView->item(row, nameColumn) : nullptr;
    return item && item->data(SDThemeNameDelegate::defaultMarkerRole).toBool();
}

bool SDApperancePreferencesViewController::isNameEditableAtRow(int row) const
{
    const QTableWidgetItem *item = m_ui ? m_ui->tableView->item(row, nameColumn) : nullptr;
    return item && item->flags().testFlag(Qt::ItemIsEditable);
}

void SDApperancePreferencesViewController::reloadData()
{
    if (!m_ui)
        return;
    QTableWidget *table = m_ui->tableView;
    const QSignalBlocker blocker(table);
    table->setRowCount(0);
    table->setRowCount(numberOfRows());
    const QString defaultName = defaults().defaultThemeName();
    for (int row = 0; row < numberOfRows(); ++row) {
        const std::shared_ptr<SNTheme> theme = themeAtRow(row);
        if (!theme) {
            auto *group = new QTableWidgetItem(std::get<QString>(m_themes[row]));
            group->setFlags(Qt::ItemIsEnabled);
            QFont font = group->font();
            font.setBold(true);
            font.setPointSizeF(font.pointSizeF() * 0.85);
            group->setFont(font);
            group->setForeground(table->palette().color(QPalette::PlaceholderText));
            group->setTextAlignment(Qt::AlignLeft | Qt::AlignBottom);
            table->setItem(row, nameColumn, group);
            table->setRowHeight(row, groupRowHeight);
            continue;
        }
        auto *name
            = new QTableWidgetItem(SNThemeSwatch::colorImageWithTheme(*theme), theme->name());
        Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
        if (theme->isEditable())
            flags |= Qt::ItemIsEditable;
        name->setFlags(flags);
        const bool isDefault = theme->saveName() == defaultName;
        name->setData(SDThemeNameDelegate::defaultMarkerRole, isDefault);
        if (isDefault)
            name->setToolTip(tr("New notes use this theme"));
        table->setItem(row, nameColumn, name);
        table->setRowHeight(row, rowHeight);
    }
}

int SDApperancePreferencesViewController::selectedRow() const
{
    if (!m_ui)
        return -1;
    const QList<QTableWidgetSelectionRange> ranges = m_ui->tableView->selectedRanges();
    return ranges.isEmpty() ? -1 : ranges.first().topRow();
}

void SDApperancePreferencesViewController::selectRow(int row)
{
    view();
    if (row <= 0 || row >= numberOfRows())
        return;
    m_ui->tableView->selectRow(row);
    m_ui->tableView->scrollToItem(m_ui->tableView->item(row, nameColumn));
    // Selecting the row that is already selected announces nothing; the preview still follows.
    tableViewSelectionDidChange();
}

void SDApperancePreferencesViewController::tableViewSelectionDidChange()
{
    const int row = selectedRow();
    if (row <= 0)
        return;
    m_currentTheme = themeAtRow(row);
    updatePreview();
}

void SDApperancePreferencesViewController::updatePreview()
{
    const std::shared_ptr<SNTheme> theme = themeAtRow(selectedRow());
    if (!theme || !m_ui)
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
    if (m_colorPanel && m_colorPanelWell && m_colorPanel->isVisible()) {
        const QSignalBlocker blocker(m_colorPanel);
        m_colorPanel->setCurrentColor(m_colorPanelWell->color());
    }

    const QWFont font = theme->defaultFont();
    m_ui->fontLabel->setText(
        tr("%1pt %2").arg(QString::number(font.pointSize(), 'f', 0), font.family()));

    m_ui->gradientView->setStartColor(theme->startColor().toQColor());
    m_ui->gradientView->setEndColor(theme->endColor().toQColor());
    m_ui->gradientView->update();

    QTextBrowser *preview = m_ui->textView;
    QPalette palette = preview->palette();
    palette.setColor(QPalette::Text, theme->defaultFontColor().toQColor());
    // The insertion point is drawn in the text colour of the palette; a preview has none, but
    // the colour is kept where an editable preview would look for it.
    palette.setColor(QPalette::WindowText, theme->cursorColor().toQColor());
    preview->setPalette(palette);
    preview->document()->setDefaultFont(font.toQFont());
    QTextCursor all(preview->document());
    all.select(QTextCursor::Document);
    all.mergeCharFormat(SNThemeTextStyler::fontFormat(font));
    m_linkHighlighter->setLinkFormat(SNThemeTextStyler::linkFormat(*theme));
    m_linkHighlighter->rehighlight();

    m_ui->defaultThemeButton->setEnabled(theme->saveName() != defaults().defaultThemeName());
    // The row's swatch follows the colours.
    if (QTableWidgetItem *item = m_ui->tableView->item(selectedRow(), nameColumn))
        item->setIcon(SNThemeSwatch::colorImageWithTheme(*theme));
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
    const int last = numberOfRows() - 1;
    if (QTableWidgetItem *item = m_ui->tableView->item(last, nameColumn)) {
        m_ui->tableView->setFocus(Qt::OtherFocusReason);
        m_ui->tableView->editItem(item);
    }
}

void SDApperancePreferencesViewController::reloadGroupsTableViewAndSelectLastRow()
{
    reloadThemes();
    reloadData();
    if (numberOfRows() <= 1) {
        m_currentTheme.reset();
        return;
    }
    selectRow(numberOfRows() - 1);
}

void SDApperancePreferencesViewController::nameEditingDidEnd(QLineEdit *field, bool cancelled)
{
    if (!field || field != m_editingTextField)
        return;
    const int row = field->property("row").toInt();
    const std::shared_ptr<SNTheme> theme = themeAtRow(row);
    // Escape gives the typed name up: the theme keeps its name, and one that never had a name
    // goes again.
    const QString text = cancelled ? (theme ? theme->name() : QString()) : field->text();
    m_editingTextField = nullptr;
    // The list is rebuilt once the view is done with its editor.
    QMetaObject::invokeMethod(
        this,
        [this, row, text, theme = std::weak_ptr<SNTheme>(theme)] {
            if (theme.lock() != themeAtRow(row))
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
    const auto theme = std::dynamic_pointer_cast<SNUserTheme>(themeAtRow(row));
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
                reloadThemes();
                reloadData();
                selectRow(std::min(row, numberOfRows() - 1));
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
        reloadData();
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
    const auto theme = std::dynamic_pointer_cast<SNUserTheme>(themeAtRow(row));
    if (!theme || !theme->isEditable()) {
        QMessageBox sheet(QMessageBox::Warning, groupRowTitle(), cannotDeleteMessage(),
            QMessageBox::Ok, parentWindow());
        sheet.setWindowModality(Qt::WindowModal);
        presenter()->runAlert(sheet);
        return;
    }
    if (!defaults().suppressThemeDeletionAlert()) {
        QMessageBox sheet(QMessageBox::Warning, groupRowTitle(), deleteConfirmationMessage(),
            QMessageBox::NoButton, parentWindow());
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
    reloadData();
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
    if (!well || !well->isEnabled())
        return;
    if (!m_colorPanel) {
        m_colorPanel = new QColorDialog(view());
        m_colorPanel->setWindowFlag(Qt::Dialog);
        m_colorPanel->setWindowTitle(tr("Colours"));
        // Every choice applies at once, as in the note itself.
        m_colorPanel->setOption(QColorDialog::NoButtons);
        connect(
            m_colorPanel, &QColorDialog::currentColorChanged, this, [this](const QColor &color) {
                if (m_colorPanelWell && m_colorPanelWell->isEnabled()
                    && m_colorPanelWell->color() != color)
                    m_colorPanelWell->setColor(color, true);
            });
    }
    m_colorPanelWell = well;
    placeBesideWindow(m_colorPanel, parentWindow());
    {
        const QSignalBlocker blocker(m_colorPanel);
        m_colorPanel->setCurrentColor(well->color());
    }
    m_colorPanel->show();
    m_colorPanel->raise();
    m_colorPanel->activateWindow();
}

void SDApperancePreferencesViewController::openFontPanel()
{
    const std::shared_ptr<SNTheme> theme = currentTheme();
    if (!theme || !theme->isEditable())
        return;
    if (!m_fontPanel) {
        m_fontPanel = new QFontDialog(view());
        m_fontPanel->setWindowTitle(tr("Fonts"));
        m_fontPanel->setOption(QFontDialog::NoButtons);
    }
    {
        const QSignalBlocker blocker(m_fontPanel);
        m_fontPanel->setCurrentFont(fontWithStyleName(theme->defaultFont().toQFont()));
    }
    placeBesideWindow(m_fontPanel, parentWindow());
    connect(m_fontPanel, &QFontDialog::currentFontChanged, this,
        &SDApperancePreferencesViewController::didChangeFont, Qt::UniqueConnection);
    connect(m_fontPanel, &QFontDialog::finished, this,
        &SDApperancePreferencesViewController::fontPanelDidClose, Qt::UniqueConnection);
    m_fontPanel->show();
    m_fontPanel->raise();
    m_fontPanel->activateWindow();
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
    if (!m_fontPanel)
        return;
    m_fontPanel->disconnect(this);
    m_fontPanel->hide();
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
    QMessageBox sheet(QMessageBox::Warning, groupRowTitle(), missingNameMessage(), QMessageBox::Ok,
        parentWindow());
    sheet.setWindowModality(Qt::WindowModal);
    presenter()->runAlert(sheet);
    return false;
}

void SDApperancePreferencesViewController::windowDidResignKey()
{
    // Once the focus has settled: moving to the panels themselves keeps them open.
    QTimer::singleShot(0, this, [this] {
        QWidget *active = QApplication::activeWindow();
        if (m_colorPanel && active != m_colorPanel && active != m_fontPanel
            && active != parentWindow())
            m_colorPanel->close();
    });
}

void SDApperancePreferencesViewController::qw_viewWillDisappear()
{
    QWModuleViewController::qw_viewWillDisappear();
    if (m_colorPanel)
        m_colorPanel->close();
    resetFontPanel();
}

QTableWidget *SDApperancePreferencesViewController::tableView() const
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
