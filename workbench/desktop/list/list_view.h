#pragma once

/// The widget of a list. It turns what a person does into what a list tells: one change of the selection a gesture, clicks,
/// double clicks, clicks on the heads of columns.

#include <optional>

#include <QElapsedTimer>
#include <QPersistentModelIndex>
#include <QTreeView>

#include "workbench/desktop/list/row_ranges.h"

class ListHeader;
class ListModel;

/// Hears of a list's widget. Each call may end the widget.
class ListViewListener {
public:
    virtual void SelectionChanged() = 0;
    /// `row` and `column` are -1 for the empty part; `is_confirmed` for a double click.
    virtual void ItemClicked(int row, int column, bool is_confirmed) = 0;
    virtual void HeaderClicked(int column) = 0;

protected:
    ~ListViewListener() = default;
};

class ListView final : public QTreeView {
public:
    /// `model` outlives it.
    ListView(ListModel& model, QWidget* parent);

    /// Null ends it.
    void SetListener(ListViewListener* listener) noexcept { m_listener = listener; }
    ListHeader& Header() const noexcept { return *m_header; }

    /// Removes all rows, which may change the selection.
    void RemoveAllRows();

    /// The first selected row that isn't before `row`. A walk over all of them costs nothing a row.
    std::optional<int> SelectedFrom(long long row);

    void keyboardSearch(const QString& typed) override;

protected:
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    /// `step` is a key, or a click on the head of a column.
    enum class Gesture { none, step, press, double_click };

    void BeginGesture(Gesture gesture);
    /// Tells of what the gesture changed.
    void EndGesture();
    void TellSelection();
    void OnHeaderClicked(int column);
    /// The first step into a list selects the row that has the focus, which would never be reached else when it is the only one.
    bool SelectCurrent();

    ListModel& m_model;
    ListHeader* m_header;
    ListViewListener* m_listener = nullptr;
    Gesture m_gesture = Gesture::none;
    bool m_is_selection_changed = false;
    /// Nothing when it was changed since the last question.
    std::optional<RowRanges> m_selected;
    QPersistentModelIndex m_pressed;
    /// The start of a name that is being typed, and the current row since its last letter.
    QString m_typed;
    int m_row_of_typed = -1;
    QElapsedTimer m_since_typed;
};
