#include "preferences/SDThemeNameDelegate.h"

#include <QKeyEvent>
#include <QLineEdit>

SDThemeNameDelegate::SDThemeNameDelegate(QObject *parent) : QStyledItemDelegate(parent) { }

SDThemeNameDelegate::~SDThemeNameDelegate() = default;

QWidget *SDThemeNameDelegate::createEditor(
    QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    auto *field
        = qobject_cast<QLineEdit *>(QStyledItemDelegate::createEditor(parent, option, index));
    if (!field)
        return nullptr;
    // The tag of the field: the row of its theme.
    field->setProperty("row", index.row());
    Q_EMIT editingDidBegin(field, index.row());
    return field;
}

void SDThemeNameDelegate::setModelData(
    QWidget *editor, QAbstractItemModel *, const QModelIndex &) const
{
    if (auto *field = qobject_cast<QLineEdit *>(editor))
        Q_EMIT editingDidEnd(field, false);
}

bool SDThemeNameDelegate::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        if (auto *field = qobject_cast<QLineEdit *>(object))
            Q_EMIT editingDidEnd(field, true);
    }
    return QStyledItemDelegate::eventFilter(object, event);
}
