#include "dialog/folder_items_list.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "dialog/files_extension_filter.h"
#include "dialog/files_icon_provider.h"
#include "dialog/folder_columns.h"
#include "dialog/folders_navigator.h"
#include "dialog/leftovers.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/tools/window_bases.h"
#include "platform/bstr.h"

namespace {

constexpr LONG icon_size = 16;
constexpr LONG left_button = 1;

constexpr DWORD ascending_style = KOV::UIX_ListColumnStyle::UIX_ListColumnStyle_IconUp;
constexpr DWORD sorted_styles = ascending_style | KOV::UIX_ListColumnStyle::UIX_ListColumnStyle_IconDown;

Bstr LocalText(KOV::IKOV_Inst* kov_instance, LPCWSTR key) {
    Bstr text;
    (void)kov_instance->GetLocalStr(key, &text); // no title is better than no list
    return text;
}

struct FolderSorting {
    std::size_t column = 0;
    bool is_ascending = true;
};

} // namespace

class FolderItemsList::Impl final : public KOV::uiListCallbacksBase {
public:
    Impl(KOV::IKOV_Inst* kov_instance, KOV::IUIX_Inst* ui, KOV::IAFS_FileSys* file_system, Ui::FilesIconProvider* icons_provider,
         Leftovers* leftovers, KOV::IUIX_List* list, std::shared_ptr<FoldersNavigator> navigator, OnConfirmed on_confirmed);

    /// Takes itself from behind the control, which holds it, and empties it.
    void Detach();
    HRESULT Clear();
    HRESULT Refresh();
    HRESULT GetSelection(std::vector<FolderItem>& out_items) const;
    bool HasSelection() const;

    HRESULT List_OnGetItemText(KOV::IUIX_List* list, const KOV::UiListItemId* item_id, LPCWSTR* out_text, ULONG* out_text_length,
                               DWORD* out_draw_text_flags) override;
    HRESULT List_OnGetItemImageSize(KOV::IUIX_List* list, const KOV::UiListItemId* item_id, SIZE* out_size) override;
    HRESULT List_OnGetItemImage(KOV::IUIX_List* list, const KOV::UiListItemId* item_id, KOV::IKOV_MultiSizeImage** out_image,
                                double* out_opacity) override;
    HRESULT List_OnItemClick(KOV::IUIX_List* list, const KOV::UiListItemId* item_id, DWORD reserved1, DWORD reserved2,
                             LONG confirmed) override;
    HRESULT List_OnHdrItemClicked(KOV::IUIX_List* list, LONG column, LONG button) override;

    std::shared_ptr<const NamesFilter> m_names_filter;

private:
    ~Impl() override = default;

    HRESULT InsertColumns();
    FolderSorting GetSorting() const;
    HRESULT SetColumnSorting(std::size_t column_index, bool ascending);
    HRESULT MakeParent(const ComPtr<KOV::IAFS_Name>& parent);
    void LeaveRows();
    void ChooseKinds();
    const ComPtr<KOV::IKOV_MultiSizeImage>& IconOf(FileKind& kind);
    void Arrange(FolderSorting sorting);
    /// Null for what is no cell.
    const FolderColumn* ColumnOf(const KOV::UiListItemId* item_id) const;
    FolderRow* RowOf(const KOV::UiListItemId* item_id) const;

    const ComPtr<KOV::IKOV_Inst> m_kov_instance;
    const ComPtr<KOV::IUIX_Inst> m_ui;
    const ComPtr<KOV::IAFS_FileSys> m_file_system;
    Ui::FilesIconProvider* const m_icons_provider;
    Leftovers* const m_leftovers;
    const ComPtr<KOV::IUIX_List> m_list;
    const std::shared_ptr<FoldersNavigator> m_navigator;
    const OnConfirmed m_on_confirmed;

    ComPtr<KOV::IKOV_MultiSizeImage> m_folder_icon;
    ComPtr<KOV::IKOV_MultiSizeImage> m_parent_icon;
    std::optional<FolderRow> m_parent;
    /// What `m_items` points into, beside `m_parent`.
    std::shared_ptr<FolderRows> m_rows;
    /// The rows that are shown, in their order.
    std::vector<FolderRow*> m_items;
};

FolderItemsList::Impl::Impl(KOV::IKOV_Inst* kov_instance, KOV::IUIX_Inst* ui, KOV::IAFS_FileSys* file_system,
                            Ui::FilesIconProvider* icons_provider, Leftovers* leftovers, KOV::IUIX_List* list,
                            std::shared_ptr<FoldersNavigator> navigator, OnConfirmed on_confirmed)
    : m_kov_instance(kov_instance), m_ui(ui), m_file_system(file_system), m_icons_provider(icons_provider),
      m_leftovers(leftovers), m_list(list), m_navigator(std::move(navigator)), m_on_confirmed(std::move(on_confirmed)) {
    TRACE_ENTER();
    const HRESULT result = InsertColumns();
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    TRACE_LEAVE();
}

HRESULT FolderItemsList::Impl::InsertColumns() {
    ComPtr<KOV::IUIX_Obj> list_object;
    RECT list_rect{};
    LONG scroll_bar_width = 0;
    CHECK_OR_RETURN(m_list->get_Obj(&list_object));
    CHECK_OR_RETURN(list_object != nullptr, E_FAIL);
    CHECK_OR_RETURN(list_object->get_ClientRect(&list_rect));
    CHECK_OR_RETURN(m_ui->get_Metric(KOV::UIX_Metric_ScrollBarWidth, &scroll_bar_width));
    const LONG width = std::max<LONG>(list_rect.right - list_rect.left - scroll_bar_width, 0);
    for (const FolderColumn& column : folder_columns) {
        const auto column_width = static_cast<LONG>(column.width * static_cast<float>(width));
        CHECK_OR_RETURN(m_list->InsertColumn(-1, column_width, LocalText(m_kov_instance, column.title_key), 0,
                                             LocalText(m_kov_instance, column.hint_key), 0, 0));
    }
    return SetColumnSorting(0, true);
}

HRESULT FolderItemsList::Impl::SetColumnSorting(std::size_t column_index, bool ascending) {
    CHECK_OR_RETURN(m_list->SetColumn(static_cast<LONG>(column_index), KOV::UIX_ListColumn_Style, nullptr, nullptr, nullptr, 0,
                                      ascending ? KOV::UIX_ListColumnStyle::UIX_ListColumnStyle_IconUp
                                                : KOV::UIX_ListColumnStyle::UIX_ListColumnStyle_IconDown,
                                      sorted_styles, 0));
    return S_OK;
}

/// The control alone keeps it.
FolderSorting FolderItemsList::Impl::GetSorting() const {
    for (std::size_t column = 0; column < folder_columns.size(); ++column) {
        DWORD style = 0;
        if (SUCCEEDED(m_list->GetColumnStyle(static_cast<LONG>(column), &style)) && (style & sorted_styles) != 0) {
            return {column, Bits::Has(style, ascending_style)};
        }
    }
    return {};
}

void FolderItemsList::Impl::Detach() {
    (void)m_list->put_Callbacks(nullptr);
    (void)Clear(); // a failure is logged there
}

HRESULT FolderItemsList::Impl::Clear() {
    TRACE_ENTER();
    // The control asks for cells while it has rows.
    const HRESULT result = m_list->DeleteAllItems();
    m_items.clear();
    m_parent.reset();
    LeaveRows();
    CHECK_OR_RETURN(result);
    TRACE_RETURN(S_OK);
}

// To let 100,000 rows go takes long enough to be felt, and icons belong to this thread.
void FolderItemsList::Impl::LeaveRows() {
    if (m_rows == nullptr) {
        return;
    }
    for (FileKind& kind : m_rows->kinds) {
        kind.icon.Release();
        kind.has_asked_for_icon = false;
    }
    if (m_rows.use_count() == 1) {
        m_leftovers->Take(std::move(m_rows));
    }
    m_rows.reset();
}

HRESULT FolderItemsList::Impl::Refresh() {
    TRACE_ENTER();
    CHECK_OR_RETURN(Clear());
    const std::shared_ptr<const FolderContents> contents = m_navigator->GetContents();
    CHECK_OR_RETURN(MakeParent(contents->parent));
    CHECK_OR_RETURN(contents->rows_result);
    m_rows = contents->rows;
    CHECK_OR_RETURN(m_icons_provider->GetIcon(&m_folder_icon, Ui::FilesIconProvider::folder_key));
    ChooseKinds();
    Arrange(GetSorting());
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        CHECK_OR_RETURN(m_list->InsertItem(-1, 0, 0));
    }
    TRACE_RETURN(S_OK);
}

HRESULT FolderItemsList::Impl::MakeParent(const ComPtr<KOV::IAFS_Name>& parent) {
    if (parent.IsNull()) {
        return S_OK;
    }
    FolderRow row;
    row.item.name = parent;
    CHECK_OR_RETURN(m_file_system->GetFileInfo(row.item.name, nullptr, nullptr, &row.item.info));
    CHECK_OR_RETURN(m_icons_provider->GetIcon(&m_parent_icon, Ui::FilesIconProvider::parent_key));
    row.title = L"..";
    row.is_folder = true;
    row.is_regular = false;
    m_parent = std::move(row);
    return S_OK;
}

/// The filter is asked once for all files of a kind.
void FolderItemsList::Impl::ChooseKinds() {
    if (m_rows == nullptr) {
        return;
    }
    for (FileKind& kind : m_rows->kinds) {
        kind.is_shown = m_names_filter == nullptr || m_names_filter->IsValidExtension(kind.address_extension);
    }
}

/// A folder may hold thousands of kinds, of which a screen shows a few.
const ComPtr<KOV::IKOV_MultiSizeImage>& FolderItemsList::Impl::IconOf(FileKind& kind) {
    if (!std::exchange(kind.has_asked_for_icon, true)) {
        (void)m_icons_provider->GetIcon(&kind.icon, kind.dotted_extension.c_str()); // logged there; the row does without
    }
    return kind.icon;
}

/// The parent before folders before files in any sorting.
void FolderItemsList::Impl::Arrange(FolderSorting sorting) {
    m_items.clear();
    if (m_parent) {
        m_items.push_back(&*m_parent);
    }
    if (m_rows == nullptr) {
        return;
    }
    const std::vector<FolderRow*>& order = m_rows->orders[sorting.column];
    m_items.reserve(m_items.size() + order.size());
    const auto show = [this](FolderRow* row) {
        if (row->kind == nullptr || row->kind->is_shown) {
            m_items.push_back(row);
        }
    };
    if (sorting.is_ascending) {
        std::for_each(order.begin(), order.end(), show);
    } else {
        const auto last_folder = order.rend() - static_cast<std::ptrdiff_t>(m_rows->folder_count);
        std::for_each(last_folder, order.rend(), show);
        std::for_each(order.rbegin(), last_folder, show);
    }
}

HRESULT FolderItemsList::Impl::GetSelection(std::vector<FolderItem>& out_items) const {
    TRACE_ENTER();
    out_items.clear();
    LONGLONG position = 0;
    LONG index = 0;
    for (HRESULT found = m_list->GetFirstSelItem(&position, &index); found == S_OK;
         found = m_list->GetNextSelItem(&position, &index)) {
        CHECK_OR_RETURN(index >= 0 && static_cast<std::size_t>(index) < m_items.size(), E_UNEXPECTED);
        out_items.push_back(m_items[static_cast<std::size_t>(index)]->item);
    }
    TRACE_RETURN(S_OK);
}

bool FolderItemsList::Impl::HasSelection() const {
    LONGLONG position = 0;
    LONG index = 0;
    return m_list->GetFirstSelItem(&position, &index) == S_OK;
}

const FolderColumn* FolderItemsList::Impl::ColumnOf(const KOV::UiListItemId* item_id) const {
    const bool is_column =
        RowOf(item_id) != nullptr && item_id->nColumn >= 0 && static_cast<std::size_t>(item_id->nColumn) < folder_columns.size();
    return is_column ? &folder_columns[static_cast<std::size_t>(item_id->nColumn)] : nullptr;
}

FolderRow* FolderItemsList::Impl::RowOf(const KOV::UiListItemId* item_id) const {
    const bool is_row = item_id != nullptr && item_id->nItem >= 0 && static_cast<std::size_t>(item_id->nItem) < m_items.size();
    return is_row ? m_items[static_cast<std::size_t>(item_id->nItem)] : nullptr;
}

HRESULT FolderItemsList::Impl::List_OnGetItemText(KOV::IUIX_List*, const KOV::UiListItemId* item_id, LPCWSTR* out_text,
                                                  ULONG* out_text_length, DWORD* out_draw_text_flags) {
    INTERFACE_TRY
    CHECK_OR_RETURN(out_text != nullptr && out_text_length != nullptr && out_draw_text_flags != nullptr, E_POINTER);
    const FolderColumn* const column = ColumnOf(item_id);
    CHECK_OR_RETURN(column != nullptr, E_INVALIDARG);
    const std::wstring_view text = column->text(*RowOf(item_id), m_kov_instance);
    *out_text = text.data();
    *out_text_length = static_cast<ULONG>(text.size());
    *out_draw_text_flags = column->draw_text_flags;
    return S_OK;
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FolderItemsList::Impl::List_OnGetItemImageSize(KOV::IUIX_List*, const KOV::UiListItemId* item_id, SIZE* out_size) {
    CHECK_OR_RETURN(out_size != nullptr, E_POINTER);
    const FolderColumn* const column = ColumnOf(item_id);
    CHECK_OR_RETURN(column != nullptr, E_INVALIDARG);
    *out_size = column->has_icon ? SIZE{icon_size, icon_size} : SIZE{};
    return S_OK;
}

HRESULT FolderItemsList::Impl::List_OnGetItemImage(KOV::IUIX_List*, const KOV::UiListItemId* item_id,
                                                   KOV::IKOV_MultiSizeImage** out_image, double* out_opacity) {
    INTERFACE_TRY
    CHECK_OR_RETURN(out_image != nullptr && out_opacity != nullptr, E_POINTER);
    *out_image = nullptr;
    *out_opacity = 0;
    const FolderColumn* const column = ColumnOf(item_id);
    CHECK_OR_RETURN(column != nullptr, E_INVALIDARG);
    if (!column->has_icon) {
        return S_FALSE;
    }
    const FolderRow& row = *RowOf(item_id);
    (row.kind != nullptr ? IconOf(*row.kind) : row.is_regular ? m_folder_icon : m_parent_icon).CopyTo(out_image);
    *out_opacity = 1.0;
    return S_OK;
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FolderItemsList::Impl::List_OnItemClick(KOV::IUIX_List*, const KOV::UiListItemId* item_id, DWORD, DWORD, LONG confirmed) {
    TRACE_ENTER(L"{}", confirmed);
    INTERFACE_TRY
    const FolderRow* const row = RowOf(item_id);
    CHECK_OR_RETURN(row != nullptr && !row->item.name.IsNull(), E_INVALIDARG);
    if (confirmed != 0) {
        // The rows may be others before this call comes back.
        const ComPtr<KOV::IAFS_Name> name = row->item.name;
        CHECK_OR_RETURN(m_on_confirmed(name));
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FolderItemsList::Impl::List_OnHdrItemClicked(KOV::IUIX_List*, LONG column, LONG button) {
    TRACE_ENTER(L"{}, {}", column, button);
    INTERFACE_TRY
    if (button > left_button) {
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(column >= 0 && static_cast<std::size_t>(column) < folder_columns.size(), E_INVALIDARG);
    const FolderSorting old = GetSorting();
    const auto sorted_column = static_cast<LONG>(old.column);
    CHECK_OR_RETURN(
        m_list->SetColumn(sorted_column, KOV::UIX_ListColumn_Style, nullptr, nullptr, nullptr, 0, 0, sorted_styles, 0));
    const FolderSorting sorting{static_cast<std::size_t>(column), sorted_column != column || !old.is_ascending};
    CHECK_OR_RETURN(SetColumnSorting(sorting.column, sorting.is_ascending));
    Arrange(sorting);
    CHECK_OR_RETURN(m_list->RedrawItems(0, static_cast<LONG>(m_items.size()), 0));
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

FolderItemsList::FolderItemsList(KOV::IKOV_Inst* kov_instance, KOV::IUIX_Inst* ui, KOV::IAFS_FileSys* file_system,
                                 Ui::FilesIconProvider* icons_provider, Leftovers* leftovers, KOV::IUIX_List* list,
                                 std::shared_ptr<FoldersNavigator> navigator, OnConfirmed on_confirmed)
    : m_impl(MakeObject<Impl>(kov_instance, ui, file_system, icons_provider, leftovers, list, std::move(navigator),
                              std::move(on_confirmed))) {
    TRACE_ENTER();
    CHECK_OR_THROW(!m_impl.IsNull(), HResultException(E_OUTOFMEMORY));
    const HRESULT result = list->put_Callbacks(m_impl);
    CHECK_OR_THROW(SUCCEEDED(result), HResultException(result));
    TRACE_LEAVE();
}

FolderItemsList::~FolderItemsList() {
    TRACE_ENTER();
    m_impl->Detach();
    TRACE_LEAVE();
}

void FolderItemsList::SetNamesFilter(std::shared_ptr<const NamesFilter> filter) { m_impl->m_names_filter = std::move(filter); }

HRESULT FolderItemsList::Clear() { return m_impl->Clear(); }

HRESULT FolderItemsList::Refresh() { return m_impl->Refresh(); }

HRESULT FolderItemsList::GetSelection(std::vector<FolderItem>& out_items) const { return m_impl->GetSelection(out_items); }

bool FolderItemsList::HasSelection() const { return m_impl->HasSelection(); }
