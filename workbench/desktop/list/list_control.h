#pragma once

/// The list control: a number of rows over callbacks that are asked for each cell that is shown. Main thread.
///
///     const auto list = MakeObject<ListControl>(parent_widget);
///     list->Adopt(owner, parent_object, id);
///     list->SetStyle(style_of_the_layout, ~0u);
///
/// Its notification is `UiNotify_SelectionChanged`, at once for what the program changes and once a gesture for what a person
/// does: the press and release of a button, or a key. A click then goes to `List_OnItemClick`. Any callback may replace the
/// callbacks, empty the list or destroy its window.

#include "host/list.h"
#include "workbench/desktop/list/list_view.h"
#include "workbench/desktop/objects/ui_object.h"

/// Several rows can be selected.
constexpr DWORD list_style_multi_select = 0x400;

class ListModel;

class ListControl final : public UiObjectT<KOV::IUIX_List>, private ListViewListener {
public:
    explicit ListControl(QWidget* parent);

    HRESULT get_Obj(KOV::IUIX_Obj** out_object) override;
    HRESULT InsertColumn(LONG index, LONG width, LPCWSTR title, DWORD reserved1, LPCWSTR hint, DWORD reserved2,
                         DWORD reserved3) override;
    /// E_NOTIMPL for anything but `UIX_ListColumn_Style`.
    HRESULT SetColumn(LONG index, DWORD what, LPCWSTR title, LPCWSTR hint, KOV::IKOV_MultiSizeImage* image, LONG width,
                      DWORD style, DWORD style_mask, DWORD reserved) override;
    HRESULT GetColumnStyle(LONG index, DWORD* out_style) override;
    HRESULT InsertItem(LONG index, DWORD reserved1, DWORD reserved2) override;
    HRESULT DeleteAllItems() override;
    HRESULT RedrawItems(LONG first, LONG count, DWORD reserved) override;
    HRESULT GetFirstSelItem(LONGLONG* io_position, LONG* out_row) override;
    HRESULT GetNextSelItem(LONGLONG* io_position, LONG* out_row) override;
    HRESULT put_Callbacks(KOV::IUIX_ListCallbacks* callbacks) override;

    void Detach() override;
    void ApplyStyle(DWORD changed) override;

private:
    ~ListControl() override;

    void SelectionChanged() override;
    void ItemClicked(int row, int column, bool is_confirmed) override;
    void HeaderClicked(int column) override;

    /// Null once it is gone.
    ListView* View() const;
    ListModel& Model() const { return *m_model; }
    bool HasColumn(LONG index) const;
    void ShowSortIndicator();
    void CutOff();
    HRESULT SelectedFrom(LONGLONG* io_position, LONG* out_row);

    /// A child of the widget.
    ListModel* m_model;
};
