#pragma once

/// The controls of a window, each the implementation behind an `IUIX_Obj` (`_QueryImpl`). Main thread.

#include "host/ui_object.h"

namespace KOV {

struct IKOV_MultiSizeImage;

/// A window out of a layout. Controls are found by the names of the layout; a failure when there is no such control.
struct IUIX_Dialog : IUnknown {
    virtual HRESULT GetItem(LPCWSTR id, LONG reserved, IUIX_Obj** out_object) = 0;
    virtual HRESULT ShowItem(LPCWSTR id, VARIANT_BOOL show) = 0;
    virtual HRESULT EnableItem(LPCWSTR id, VARIANT_BOOL enable) = 0;
    /// An equal text changes nothing. A text that begins with "$$$." is looked up, but not where a person types: there it may be
    /// anybody's, such as the name of a file.
    virtual HRESULT SetItemText(LPCWSTR id, LPCWSTR text) = 0;
    virtual HRESULT GetItemText(LPCWSTR id, BSTR* out_text) = 0;
    /// 0 or 1. Notifies nobody.
    virtual HRESULT SetItemCheck(LPCWSTR id, LONG value, LONG reserved) = 0;
    virtual HRESULT GetItemCheck(LPCWSTR id, LONG* out_value) = 0;
    /// Notifies nobody.
    virtual HRESULT SelectComboItem(LPCWSTR id, LONG index) = 0;

protected:
    ~IUIX_Dialog() = default;
};

/// A drop-down list. The parameters of its items are plain numbers to the host.
struct IUIX_Combo : IUnknown {
    virtual HRESULT get_Count(LONG* out_count) = 0;
    virtual HRESULT Clear() = 0;
    /// `index` -1 is the end. A text that begins with "$$$." is looked up. `tip` may be null.
    virtual HRESULT InsertItem(LONG index, LPCWSTR text, LPCWSTR tip, IKOV_MultiSizeImage* image, LONGLONG parameter,
                               DWORD reserved) = 0;
    virtual HRESULT GetItemParam(LONG index, LONGLONG* out_parameter) = 0;
    /// -1 with success when nothing is selected.
    virtual HRESULT get_SelItem(LONG* out_index) = 0;
    /// Notifies nobody.
    virtual HRESULT put_SelItem(LONG index) = 0;
    /// Selects the item with this parameter and gives its index; without one, a failure, and the selection stays. `out_index` may
    /// be null. Notifies nobody.
    virtual HRESULT SelectItemByParam(LONGLONG parameter, LONG* out_index) = 0;

protected:
    ~IUIX_Combo() = default;
};

/// A number that an edit shows.
struct IUIX_NumberValue : IUnknown {
    virtual HRESULT put_AllowedChars(LPCWSTR characters) = 0;
    virtual HRESULT SetRange(LONG decimals, LONG reserved, LPCWSTR unit, double least, double most, double step,
                             double large_step) = 0;
    virtual HRESULT put_Value(double value) = 0;
    virtual HRESULT get_Value(double* out_value) = 0;

protected:
    ~IUIX_NumberValue() = default;
};

/// A line or a field of text.
struct IUIX_Edit : IUnknown {
    /// The edit shows this number from now on and takes only what it allows.
    virtual HRESULT put_NumberValue(IUIX_NumberValue* value) = 0;
    /// 3: digits within the number's range.
    virtual HRESULT put_NumberMode(LONG mode) = 0;

protected:
    ~IUIX_Edit() = default;
};

struct IUIX_Picture : IUnknown {
    virtual HRESULT put_Image(IKOV_MultiSizeImage* image) = 0;

protected:
    ~IUIX_Picture() = default;
};

/// Shows that something is under way.
struct IUIX_WaitProgress : IUnknown {
    virtual HRESULT get_Obj(IUIX_Obj** out_object) = 0;
    virtual HRESULT Start() = 0;
    virtual HRESULT Stop() = 0;

protected:
    ~IUIX_WaitProgress() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IUIX_Dialog, "{64D07B28-4A58-4FE2-B465-BF5B6BD8D1A2}");
KOV_INTERFACE_ID(KOV::IUIX_Combo, "{8C5C14AD-93FA-4384-B922-7B455AD9AE6F}");
KOV_INTERFACE_ID(KOV::IUIX_NumberValue, "{E1C28436-6840-4F50-9BCE-38C806953649}");
KOV_INTERFACE_ID(KOV::IUIX_Edit, "{6E946565-AD29-4F49-91D1-608F55CB2988}");
KOV_INTERFACE_ID(KOV::IUIX_Picture, "{9523DDA3-A797-4910-9322-14F2FC28CFF4}");
KOV_INTERFACE_ID(KOV::IUIX_WaitProgress, "{05D850F7-165F-471C-80F9-8575310FE368}");
