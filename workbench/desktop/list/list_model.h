#pragma once

/// The rows of a list as Qt's views see them: a number of rows, and cells that are asked of the owner's callbacks whenever one is
/// needed. Nothing of a row is kept. Main thread.

#include <QAbstractTableModel>
#include <QIcon>

#include "host/list.h"

struct ListColumn {
    QString title;
    QString hint;
    /// Bits of `UIX_ListColumnStyle`.
    DWORD style = 0;
};

class ListModel final : public QAbstractTableModel {
public:
    struct Text {
        /// On one line.
        QString text;
        /// `UIX_DrawText_…`
        DWORD flags = 0;
    };
    struct Image {
        /// Null when the cell has none.
        QIcon icon;
        QSize size;
        double opacity = 1;
    };

    using QAbstractTableModel::QAbstractTableModel;

    /// From now on cells are asked of `callbacks`, in the name of `list`. Both may be null; the callbacks are held, the list
    /// isn't.
    void SetCallbacks(KOV::IUIX_List* list, KOV::IUIX_ListCallbacks* callbacks);
    ComPtr<KOV::IUIX_ListCallbacks> Callbacks() const { return m_callbacks; }

    int Columns() const noexcept { return static_cast<int>(m_columns.size()); }
    void InsertColumn(int index, ListColumn column);
    const ListColumn& Column(int index) const { return m_columns[static_cast<std::size_t>(index)]; }
    void SetColumnStyle(int index, DWORD style) { m_columns[static_cast<std::size_t>(index)].style = style; }

    /// With those that wait.
    int Rows() const noexcept { return m_rows + m_waiting; }
    /// Adds a row, 0 <= `index` <= `Rows()`. Views hear of rows that are added one after another at once: at the next turn of the
    /// loop, or at `Settle`.
    void InsertRow(int index);
    /// Tells views of rows that wait.
    void Settle();
    void RemoveAllRows();

    Text TextOf(const QModelIndex& index) const;
    Image ImageOf(const QModelIndex& index) const;
    /// The first row from `from` on, and round to it again, whose first cell begins with `start` in any case; -1 without one. The
    /// one pass over all rows there is: it makes nothing of a row.
    int FindRow(const QString& start, int from) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<ListColumn> m_columns;
    int m_rows = 0;
    /// Rows of which views haven't heard: so many, from this one on.
    int m_waiting = 0;
    int m_first_waiting = 0;
    KOV::IUIX_List* m_list = nullptr;
    ComPtr<KOV::IUIX_ListCallbacks> m_callbacks;
};
