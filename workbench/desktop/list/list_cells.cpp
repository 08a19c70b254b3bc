#include "workbench/desktop/list/list_cells.h"

#include <algorithm>

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include "workbench/desktop/objects/text.h"

namespace {

constexpr int least_image = 16;
constexpr int row_margin = 5;

QIcon Faded(const QIcon& icon, const QSize& size, double opacity, const QWidget* widget) {
    const qreal scale = widget == nullptr ? 1 : widget->devicePixelRatioF();
    QPixmap picture(size * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(opacity);
    icon.paint(&painter, QRect(QPoint(0, 0), size));
    return QIcon(picture);
}

} // namespace

void ListCells::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
    option->index = index;
    ListModel::Text text = m_model.TextOf(index);
    option->displayAlignment = Qt::AlignVCenter | ((text.flags & KOV::UIX_DrawText_Right) != 0 ? Qt::AlignRight : Qt::AlignLeft);
    option->textElideMode = (text.flags & KOV::UIX_DrawText_Ellipsis) != 0 ? Qt::ElideRight : Qt::ElideNone;
    if (!text.text.isEmpty()) {
        option->text = std::move(text.text);
        option->features |= QStyleOptionViewItem::HasDisplay;
    }
    const ListModel::Image image = m_model.ImageOf(index);
    if (!image.icon.isNull()) {
        option->icon = image.opacity < 1 ? Faded(image.icon, image.size, image.opacity, option->widget) : image.icon;
        option->decorationSize = image.size;
        option->features |= QStyleOptionViewItem::HasDecoration;
    }
}

QSize ListCells::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const QSize hint = QStyledItemDelegate::sizeHint(option, index);
    // All rows have the height of the first one, which may be the only one without an image.
    return {hint.width(), std::max({hint.height(), least_image + row_margin, option.fontMetrics.height() + row_margin})};
}

bool ListCells::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                          const QModelIndex& index) {
    if (event->type() != QEvent::ToolTip || !index.isValid()) {
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    }
    const bool fits = sizeHint(option, index).width() <= view->visualRect(index).width();
    QToolTip::showText(event->globalPos(), fits ? QString() : PlainTip(m_model.TextOf(index).text), view);
    return true;
}
