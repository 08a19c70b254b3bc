#pragma once

/// Draws the cells of a list: an image, and one line of plain text. A text that doesn't fit shows whole in a tip.

#include <QStyledItemDelegate>

#include "workbench/desktop/list/list_model.h"

class ListCells final : public QStyledItemDelegate {
public:
    /// `model` outlives it.
    ListCells(const ListModel& model, QObject* parent) : QStyledItemDelegate(parent), m_model(model) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

private:
    const ListModel& m_model;
};
