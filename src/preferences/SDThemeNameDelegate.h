#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

class QLineEdit;

// Edits a theme's name in the theme list. The list's model is not written to: the editor's
// controller names the theme and reloads the list itself, so it hears of every end of editing
// here, and of Escape apart, since Escape gives the name up. It also draws the marker of the
// theme new notes get, on the rows the model marks with SDThemeListModel::defaultMarkerRole.
class SDThemeNameDelegate final : public QStyledItemDelegate
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SDThemeNameDelegate)

public:
    explicit SDThemeNameDelegate(QObject *parent = nullptr);
    ~SDThemeNameDelegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override;
    void setModelData(
        QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override;

Q_SIGNALS:
    void editingDidBegin(QLineEdit *field, int row) const;
    // cancelled: Escape was pressed.
    void editingDidEnd(QLineEdit *field, bool cancelled) const;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
};
