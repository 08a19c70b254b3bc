#pragma once

/// The list control, which holds no rows: it knows their number and asks for each cell that it shows. Main thread.

#include "host/ui_object.h"

namespace KOV {

struct IKOV_MultiSizeImage;
struct IUIX_List;

struct UiListItemId {
    LONG nItem;
    LONG nColumn;
};

namespace UIX_ListColumnStyle {
constexpr DWORD UIX_ListColumnStyle_IconDown = 1;
constexpr DWORD UIX_ListColumnStyle_IconUp = 2;
} // namespace UIX_ListColumnStyle

/// `SetColumn` changes the style bits.
constexpr DWORD UIX_ListColumn_Style = 16;
/// Draw-text flags of a cell: an ellipsis where the text is too long; to the right.
constexpr DWORD UIX_DrawText_Right = 4;
constexpr DWORD UIX_DrawText_Ellipsis = 1024;

/// Slots that a module can leave as they are; `S_FALSE` means that the host does what it does without them.
#define KOV_LIST_RESERVED_SLOTS(SLOT)                                                                                            \
    SLOT(6)                                                                                                                      \
    SLOT(7) SLOT(9) SLOT(10) SLOT(12) SLOT(13) SLOT(14) SLOT(15) SLOT(16) SLOT(17) SLOT(18) SLOT(19) SLOT(20) SLOT(21) SLOT(22)  \
        SLOT(23) SLOT(24) SLOT(25) SLOT(26) SLOT(27) SLOT(28) SLOT(29) SLOT(30) SLOT(31) SLOT(32) SLOT(33) SLOT(34) SLOT(35)     \
            SLOT(36) SLOT(37) SLOT(38) SLOT(39) SLOT(40) SLOT(41) SLOT(42) SLOT(43) SLOT(44) SLOT(45) SLOT(46) SLOT(47) SLOT(48) \
                SLOT(49) SLOT(50) SLOT(51) SLOT(52) SLOT(53) SLOT(54) SLOT(55)

/// What the list asks of its owner: 56 slots, three of them `IUnknown`'s. The list holds the callbacks during a call.
struct IUIX_ListCallbacks : IUnknown {
    /// The text stays the owner's and valid as long as the row.
    virtual HRESULT List_OnGetItemText(IUIX_List* list, const UiListItemId* item_id, LPCWSTR* out_text, ULONG* out_text_length,
                                       DWORD* out_draw_text_flags) = 0;
    virtual HRESULT List_OnGetItemImageSize(IUIX_List* list, const UiListItemId* item_id, SIZE* out_size) = 0;
    /// A counted reference; `out_opacity` from 0 to 1.
    virtual HRESULT List_OnGetItemImage(IUIX_List* list, const UiListItemId* item_id, IKOV_MultiSizeImage** out_image,
                                        double* out_opacity) = 0;
#define KOV_SLOT(number) virtual HRESULT List_Reserved##number() = 0;
    /// A row was clicked: `confirmed` 0 for one click, 1 for a double click. `nItem` -1 is the empty part.
    virtual HRESULT List_OnItemClick(IUIX_List* list, const UiListItemId* item_id, DWORD reserved1, DWORD reserved2,
                                     LONG confirmed) = 0;
    /// The head of a column was clicked; `button` 1 is the left one.
    virtual HRESULT List_OnHdrItemClicked(IUIX_List* list, LONG column, LONG button) = 0;
    KOV_LIST_RESERVED_SLOTS(KOV_SLOT)
#undef KOV_SLOT

protected:
    ~IUIX_ListCallbacks() = default;
};

struct IUIX_List : IUnknown {
    virtual HRESULT get_Obj(IUIX_Obj** out_object) = 0;
    /// `index` -1 is the end; `width` in pixels.
    virtual HRESULT InsertColumn(LONG index, LONG width, LPCWSTR title, DWORD reserved1, LPCWSTR hint, DWORD reserved2,
                                 DWORD reserved3) = 0;
    /// `what` says which of the rest counts: 16 the bits of `style` under `style_mask`.
    virtual HRESULT SetColumn(LONG index, DWORD what, LPCWSTR title, LPCWSTR hint, IKOV_MultiSizeImage* image, LONG width,
                              DWORD style, DWORD style_mask, DWORD reserved) = 0;
    virtual HRESULT GetColumnStyle(LONG index, DWORD* out_style) = 0;
    /// Adds an empty row; `index` -1 is the end.
    virtual HRESULT InsertItem(LONG index, DWORD reserved1, DWORD reserved2) = 0;
    /// The selection goes with the rows and its change is notified.
    virtual HRESULT DeleteAllItems() = 0;
    virtual HRESULT RedrawItems(LONG first, LONG count, DWORD reserved) = 0;
    /// The selected rows in ascending order: `S_OK` and a row, or `S_FALSE`. `io_position` is the list's.
    virtual HRESULT GetFirstSelItem(LONGLONG* io_position, LONG* out_row) = 0;
    virtual HRESULT GetNextSelItem(LONGLONG* io_position, LONG* out_row) = 0;
    /// Held until others are set; null ends it.
    virtual HRESULT put_Callbacks(IUIX_ListCallbacks* callbacks) = 0;

protected:
    ~IUIX_List() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IUIX_ListCallbacks, "{F43400DE-2459-4CA4-980B-701F238D65D7}");
KOV_INTERFACE_ID(KOV::IUIX_List, "{075A8648-5BA2-4FEF-8C89-0F9D72E617F1}");
