#include "workbench/desktop/list/list_view.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>

#include "workbench/desktop/list/list_cells.h"
#include "workbench/desktop/list/list_header.h"
#include "workbench/desktop/list/list_model.h"

namespace {

bool IsStep(const QKeyEvent& event) {
    return (event.key() == Qt::Key_Down || event.key() == Qt::Key_Up) && (event.modifiers() & ~Qt::KeypadModifier) == 0;
}

} // namespace

ListView::ListView(ListModel& model, QWidget* parent)
    : QTreeView(parent), m_model(model), m_header(new ListHeader([this](int column) { OnHeaderClicked(column); }, this)) {
    setHeader(m_header);
    m_header->setSectionsClickable(true); // a tree takes this from a header that is new to it
    setModel(&m_model);
    setItemDelegate(new ListCells(m_model, this));
    setUniformRowHeights(true); // else each row is measured
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setAllColumnsShowFocus(true);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers); // Enter is then left to the window
    setVerticalScrollMode(ScrollPerPixel);
}

void ListView::RemoveAllRows() {
    const bool has_selection = selectionModel()->hasSelection();
    m_selected.reset();
    m_model.RemoveAllRows();
    if (has_selection) {
        TellSelection();
    }
}

std::optional<int> ListView::SelectedFrom(long long row) {
    m_model.Settle();
    if (!m_selected.has_value()) {
        m_selected.emplace(selectionModel()->selection());
    }
    return m_selected->FirstFrom(row);
}

void ListView::rowsInserted(const QModelIndex& parent, int start, int end) {
    m_selected.reset(); // rows below have other numbers now
    QTreeView::rowsInserted(parent, start, end);
    if (hasFocus() && !currentIndex().isValid()) {
        selectionModel()->setCurrentIndex(m_model.index(0, 0), QItemSelectionModel::NoUpdate); // else nothing shows the focus
    }
}

void ListView::BeginGesture(Gesture gesture) {
    if (m_gesture != Gesture::none) {
        EndGesture(); // one whose end was lost to another window
    }
    m_gesture = gesture;
}

void ListView::EndGesture() {
    m_gesture = Gesture::none;
    if (m_is_selection_changed) {
        TellSelection();
    }
}

void ListView::TellSelection() {
    m_is_selection_changed = false;
    if (m_listener != nullptr) {
        m_listener->SelectionChanged();
    }
}

void ListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    m_selected.reset();
    QTreeView::selectionChanged(selected, deselected);
    m_is_selection_changed = true;
    if (m_gesture == Gesture::none) {
        TellSelection();
    }
}

bool ListView::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::Paint) {
        m_model.Settle(); // what a person points at, wheels through or presses is the list with all its rows
    }
    return QTreeView::viewportEvent(event);
}

void ListView::mousePressEvent(QMouseEvent* event) {
    BeginGesture(Gesture::press);
    m_pressed = indexAt(event->position().toPoint());
    QTreeView::mousePressEvent(event);
}

void ListView::mouseDoubleClickEvent(QMouseEvent* event) {
    BeginGesture(Gesture::double_click);
    m_pressed = indexAt(event->position().toPoint());
    QTreeView::mouseDoubleClickEvent(event); // makes a press of it when the row isn't the one of the first click
}

void ListView::mouseReleaseEvent(QMouseEvent* event) {
    QTreeView::mouseReleaseEvent(event);
    if (event->buttons() != Qt::NoButton || m_gesture == Gesture::none) {
        return;
    }
    const QModelIndex released = indexAt(event->position().toPoint());
    const bool is_click = event->button() == Qt::LeftButton && released.row() == m_pressed.row() &&
                          viewport()->rect().contains(event->position().toPoint());
    const bool is_confirmed = m_gesture == Gesture::double_click && released.isValid();
    const QPointer<ListView> guard = this;
    EndGesture();
    if (is_click && !guard.isNull() && m_listener != nullptr) {
        m_listener->ItemClicked(released.row(), released.column(), is_confirmed);
    }
}

bool ListView::SelectCurrent() {
    if (selectionModel()->hasSelection() || !currentIndex().isValid()) {
        return false;
    }
    setCurrentIndex(currentIndex());
    return true;
}

void ListView::keyPressEvent(QKeyEvent* event) {
    m_model.Settle();
    BeginGesture(Gesture::step);
    const QPointer<ListView> guard = this;
    if (!IsStep(*event) || !SelectCurrent()) {
        QTreeView::keyPressEvent(event);
    }
    if (!guard.isNull() && m_gesture == Gesture::step) {
        EndGesture();
    }
}

void ListView::hideEvent(QHideEvent* event) {
    QTreeView::hideEvent(event);
    EndGesture();
}

void ListView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    m_header->FitTo(viewport()->width());
}

void ListView::OnHeaderClicked(int column) {
    // Rows are known by their numbers: after another order the selected numbers would be other items.
    BeginGesture(Gesture::step);
    clearSelection();
    const QPointer<ListView> guard = this;
    EndGesture();
    if (!guard.isNull() && m_listener != nullptr) {
        m_listener->HeaderClicked(column);
    }
}

void ListView::keyboardSearch(const QString& typed) {
    const int current = currentIndex().row();
    const bool is_selected = selectionModel()->hasSelection();
    if (current != m_row_of_typed || m_since_typed.elapsed() > QApplication::keyboardInputInterval()) {
        m_typed.clear();
    }
    m_since_typed.start();
    m_row_of_typed = current;
    if (m_typed.isEmpty() && typed.trimmed().isEmpty()) {
        return; // a blank by itself is the key that selects
    }
    m_typed += typed;
    // One letter again and again goes from row to row of that letter.
    const bool is_one_letter = m_typed.count(m_typed[0], Qt::CaseInsensitive) == m_typed.size();
    const int found =
        m_model.FindRow(is_one_letter ? m_typed.left(1) : m_typed, is_one_letter && is_selected ? current + 1 : qMax(current, 0));
    if (found >= 0) {
        setCurrentIndex(m_model.index(found, 0));
    }
    m_row_of_typed = currentIndex().row();
}
