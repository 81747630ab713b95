#include "preferences/SDThemeListModel.h"

#include "settings/SNUserDefaults.h"
#include "themes/SNTheme.h"
#include "themes/SNThemeManager.h"
#include "themeview/SNThemeSwatch.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <QSize>

QString SDThemeListModel::groupRowTitle()
{
    return tr("Themes");
}

SDThemeListModel::SDThemeListModel(
    SNThemeManager &themeManager, SNUserDefaults &defaults, QObject *parent)
    : QAbstractListModel(parent), m_themeManager(themeManager), m_defaults(defaults)
{
    reloadThemes();
}

SDThemeListModel::~SDThemeListModel() = default;

int SDThemeListModel::rowCount(const QModelIndex &parent) const
{
    // The group row comes first.
    return parent.isValid() ? 0 : int(m_themes.size()) + 1;
}

QVariant SDThemeListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const std::shared_ptr<SNTheme> theme = themeAtRow(index.row());
    if (!theme) {
        // The group row: a small bold title in the colour of placeholder text, at its foot.
        switch (role) {
        case Qt::DisplayRole:
            return groupRowTitle();
        case Qt::FontRole: {
            QFont font = QGuiApplication::font();
            font.setBold(true);
            font.setPointSizeF(font.pointSizeF() * 0.85);
            return font;
        }
        case Qt::ForegroundRole:
            return QGuiApplication::palette().color(QPalette::PlaceholderText);
        case Qt::TextAlignmentRole:
            return int(Qt::AlignLeft | Qt::AlignBottom);
        case Qt::SizeHintRole:
            return QSize(0, groupRowHeight);
        default:
            return {};
        }
    }
    const bool isDefault = theme->saveName() == m_defaults.defaultThemeName();
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return theme->name();
    case Qt::DecorationRole:
        return SNThemeSwatch::colorImageWithTheme(*theme);
    case Qt::ToolTipRole:
        return isDefault ? QVariant(tr("New notes use this theme")) : QVariant();
    case Qt::SizeHintRole:
        return QSize(0, rowHeight);
    case defaultMarkerRole:
        return isDefault;
    default:
        return {};
    }
}

Qt::ItemFlags SDThemeListModel::flags(const QModelIndex &index) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return Qt::NoItemFlags;
    const std::shared_ptr<SNTheme> theme = themeAtRow(index.row());
    if (!theme)
        return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (theme->isEditable())
        flags |= Qt::ItemIsEditable;
    return flags;
}

void SDThemeListModel::reloadThemes()
{
    beginResetModel();
    m_themes = m_themeManager.themes();
    endResetModel();
}

void SDThemeListModel::reloadData()
{
    if (!m_themes.isEmpty())
        Q_EMIT dataChanged(index(1), index(numberOfRows() - 1));
}

void SDThemeListModel::themeDidChangeAtRow(int row)
{
    if (themeAtRow(row))
        Q_EMIT dataChanged(index(row), index(row), { Qt::DecorationRole });
}

std::shared_ptr<SNTheme> SDThemeListModel::themeAtRow(int row) const
{
    return row >= 1 && row <= m_themes.size() ? m_themes.at(row - 1) : nullptr;
}

int SDThemeListModel::rowOfTheme(const QString &saveName) const
{
    for (int row = 1; row < numberOfRows(); ++row) {
        if (themeAtRow(row)->saveName() == saveName)
            return row;
    }
    return -1;
}

bool SDThemeListModel::isDefaultMarkerVisibleAtRow(int row) const
{
    return index(row).data(defaultMarkerRole).toBool();
}

bool SDThemeListModel::isNameEditableAtRow(int row) const
{
    return flags(index(row)).testFlag(Qt::ItemIsEditable);
}
