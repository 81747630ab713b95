#include "preferences/SDThemeNameDelegate.h"

#include "preferences/SDThemeListModel.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

SDThemeNameDelegate::SDThemeNameDelegate(QObject *parent) : QStyledItemDelegate(parent) { }

SDThemeNameDelegate::~SDThemeNameDelegate() = default;

void SDThemeNameDelegate::paint(
    QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const bool marked = index.data(SDThemeListModel::defaultMarkerRole).toBool();
    constexpr int marker = 16;
    QStyledItemDelegate::paint(painter, option, index);
    if (!marked)
        return;
    // A check mark in a disc; white on the selection, the selection's colour elsewhere.
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QPalette &palette = option.palette;
    const QRectF disc(option.rect.right() - marker - 5.5,
        option.rect.center().y() - marker / 2.0 + 1.0, marker - 1.0, marker - 1.0);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(
        selected ? palette.color(QPalette::HighlightedText) : palette.color(QPalette::Highlight));
    painter->drawEllipse(disc);
    QPen tick(
        selected ? palette.color(QPalette::Highlight) : palette.color(QPalette::HighlightedText),
        1.8);
    tick.setCapStyle(Qt::RoundCap);
    tick.setJoinStyle(Qt::RoundJoin);
    painter->setPen(tick);
    const QPointF origin = disc.topLeft();
    const QPointF points[]
        = { origin + QPointF(3.8, 7.6), origin + QPointF(6.3, 10.0), origin + QPointF(10.8, 5.0) };
    painter->drawPolyline(points, 3);
    painter->restore();
}

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
    // An alert over the window (the one asking for a name) takes the focus from the field
    // without ending the naming: the base class would take the name as it stands, empty too.
    if (event->type() == QEvent::FocusOut && QApplication::activeWindow()
        && QApplication::activeWindow()->isModal())
        return false;
    if (event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        if (auto *field = qobject_cast<QLineEdit *>(object))
            Q_EMIT editingDidEnd(field, true);
    }
    return QStyledItemDelegate::eventFilter(object, event);
}
