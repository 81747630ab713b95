#pragma once

#include <QAbstractListModel>
#include <QList>

#include <memory>

class SNTheme;
class SNThemeManager;
class SNUserDefaults;

// The theme editor's list: a group row titled "Themes", then every theme of the registry with
// its swatch. Only the user's own themes can be renamed, and the theme new notes get carries a
// marker. Names are not written through the model: the editor names the theme and reloads.
class SDThemeListModel final : public QAbstractListModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SDThemeListModel)

public:
    // True on the row of the theme new notes get.
    static constexpr int defaultMarkerRole = Qt::UserRole + 1;
    static constexpr int groupRowHeight = 35;
    static constexpr int rowHeight = 28;

    static QString groupRowTitle(); // "Themes"

    SDThemeListModel(
        SNThemeManager &themeManager, SNUserDefaults &defaults, QObject *parent = nullptr);
    ~SDThemeListModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Takes the registry's themes again.
    void reloadThemes();
    // The rows stay, what they show (names, swatches, the marker) is read again.
    void reloadData();
    // The row's swatch follows its theme's colours.
    void themeDidChangeAtRow(int row);

    std::shared_ptr<SNTheme> themeAtRow(int row) const;
    int numberOfRows() const { return rowCount(); }
    int rowOfTheme(const QString &saveName) const;
    bool isDefaultMarkerVisibleAtRow(int row) const;
    bool isNameEditableAtRow(int row) const;

private:
    SNThemeManager &m_themeManager;
    SNUserDefaults &m_defaults;
    QList<std::shared_ptr<SNTheme>> m_themes;
};
