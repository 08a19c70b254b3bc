#include "workbench/desktop/list/list_control.h"

#include "workbench/desktop/list/list_header.h"
#include "workbench/desktop/list/list_model.h"

namespace {

using namespace KOV::UIX_ListColumnStyle;

constexpr DWORD sort_bits = UIX_ListColumnStyle_IconUp | UIX_ListColumnStyle_IconDown;

/// The model belongs to the widget, and is made before it.
ListView* MakeView(QWidget* parent) {
    auto* const model = new ListModel;
    auto* const view = new ListView(*model, parent);
    model->setParent(view);
    return view;
}

} // namespace

ListControl::ListControl(QWidget* parent) : UiObjectT(MakeView(parent)), m_model(static_cast<ListModel*>(View()->model())) {
    View()->SetListener(this);
    ShowSortIndicator();
}

ListControl::~ListControl() { CutOff(); }

void ListControl::Detach() {
    CutOff();
    UiObjectT::Detach();
}

void ListControl::CutOff() {
    if (View() != nullptr) {
        View()->SetListener(nullptr);
        Model().SetCallbacks(nullptr, nullptr);
    }
}

void ListControl::ApplyStyle(DWORD changed) {
    UiObjectT::ApplyStyle(changed);
    if ((changed & list_style_multi_select) != 0) {
        View()->setSelectionMode((Style() & list_style_multi_select) != 0 ? QAbstractItemView::ExtendedSelection
                                                                          : QAbstractItemView::SingleSelection);
    }
}

ListView* ListControl::View() const { return static_cast<ListView*>(Widget()); }

bool ListControl::HasColumn(LONG index) const { return index >= 0 && index < Model().Columns(); }

HRESULT ListControl::get_Obj(KOV::IUIX_Obj** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    ComPtr<KOV::IUIX_Obj>(this).CopyTo(out_object);
    return S_OK;
}

HRESULT ListControl::InsertColumn(LONG index, LONG width, LPCWSTR title, DWORD, LPCWSTR hint, DWORD, DWORD) {
    if (View() == nullptr) {
        return window_is_gone;
    }
    const int place = index == -1 ? Model().Columns() : index;
    if (place < 0 || place > Model().Columns() || width < 0) {
        return E_INVALIDARG;
    }
    Model().InsertColumn(place, {Shown(title), Shown(hint)});
    // Before the first showing the viewport hasn't got its size yet.
    View()->Header().AddColumn(place, width, (View()->isVisible() ? View()->viewport() : View())->contentsRect().width());
    return S_OK;
}

HRESULT ListControl::SetColumn(LONG index, DWORD what, LPCWSTR, LPCWSTR, KOV::IKOV_MultiSizeImage*, LONG, DWORD style,
                               DWORD style_mask, DWORD) {
    if (View() == nullptr) {
        return window_is_gone;
    }
    if (!HasColumn(index)) {
        return E_INVALIDARG;
    }
    if (what != KOV::UIX_ListColumn_Style) {
        return E_NOTIMPL;
    }
    Model().SetColumnStyle(index, (Model().Column(index).style & ~style_mask) | (style & style_mask));
    ShowSortIndicator();
    return S_OK;
}

HRESULT ListControl::GetColumnStyle(LONG index, DWORD* out_style) {
    if (out_style == nullptr) {
        return E_POINTER;
    }
    *out_style = 0;
    if (View() == nullptr) {
        return window_is_gone;
    }
    if (!HasColumn(index)) {
        return E_INVALIDARG;
    }
    *out_style = Model().Column(index).style;
    return S_OK;
}

void ListControl::ShowSortIndicator() {
    int sorted = 0;
    while (sorted < Model().Columns() && (Model().Column(sorted).style & sort_bits) == 0) {
        ++sorted;
    }
    ListHeader& header = View()->Header();
    header.setSortIndicatorShown(sorted < Model().Columns());
    if (header.isSortIndicatorShown()) {
        // The styles name the arrow; Qt draws one that points up for its descending order.
        const bool points_up = (Model().Column(sorted).style & UIX_ListColumnStyle_IconUp) != 0;
        header.setSortIndicator(sorted, points_up ? Qt::DescendingOrder : Qt::AscendingOrder);
    }
}

HRESULT ListControl::InsertItem(LONG index, DWORD, DWORD) {
    if (View() == nullptr) {
        return window_is_gone;
    }
    const int place = index == -1 ? Model().Rows() : index;
    if (place < 0 || place > Model().Rows()) {
        return E_INVALIDARG;
    }
    Model().InsertRow(place);
    return S_OK;
}

HRESULT ListControl::DeleteAllItems() {
    if (View() == nullptr) {
        return window_is_gone;
    }
    View()->RemoveAllRows();
    return S_OK;
}

HRESULT ListControl::RedrawItems(LONG, LONG, DWORD) {
    if (View() == nullptr) {
        return window_is_gone;
    }
    // Nothing of a row is kept, so what doesn't show needs no word; and the views of Qt take a long time over a long range.
    Model().Settle();
    View()->viewport()->update();
    return S_OK;
}

HRESULT ListControl::GetFirstSelItem(LONGLONG* io_position, LONG* out_row) {
    if (io_position == nullptr) {
        return E_POINTER;
    }
    *io_position = 0;
    return SelectedFrom(io_position, out_row);
}

HRESULT ListControl::GetNextSelItem(LONGLONG* io_position, LONG* out_row) { return SelectedFrom(io_position, out_row); }

/// The position of a walk is the row after the one that was given last.
HRESULT ListControl::SelectedFrom(LONGLONG* io_position, LONG* out_row) {
    if (io_position == nullptr || out_row == nullptr) {
        return E_POINTER;
    }
    *out_row = -1;
    if (View() == nullptr) {
        return window_is_gone;
    }
    const std::optional<int> row = View()->SelectedFrom(*io_position);
    if (!row.has_value()) {
        return S_FALSE;
    }
    *out_row = *row;
    *io_position = LONGLONG{*row} + 1;
    return S_OK;
}

HRESULT ListControl::put_Callbacks(KOV::IUIX_ListCallbacks* callbacks) {
    if (View() == nullptr) {
        return window_is_gone;
    }
    Model().SetCallbacks(callbacks == nullptr ? nullptr : this, callbacks);
    View()->viewport()->update();
    return S_OK;
}

void ListControl::SelectionChanged() {
    const ComPtr<KOV::IUIX_List> self = this;
    Notify(KOV::UiNotify_SelectionChanged);
}

void ListControl::ItemClicked(int row, int column, bool is_confirmed) {
    const ComPtr<KOV::IUIX_ListCallbacks> callbacks = Model().Callbacks();
    const ComPtr<KOV::IUIX_List> self = this;
    const KOV::UiListItemId id{row, column};
    if (!callbacks.IsNull()) {
        (void)callbacks->List_OnItemClick(this, &id, 0, 0, is_confirmed ? 1 : 0);
    }
}

void ListControl::HeaderClicked(int column) {
    constexpr LONG left_button = 1;
    const ComPtr<KOV::IUIX_ListCallbacks> callbacks = Model().Callbacks();
    const ComPtr<KOV::IUIX_List> self = this;
    if (!callbacks.IsNull()) {
        (void)callbacks->List_OnHdrItemClicked(this, column, left_button);
    }
    if (View() != nullptr) {
        ShowSortIndicator(); // the header has turned its arrow by itself
    }
}
