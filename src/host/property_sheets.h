#pragma once

/// Windows of pages, such as the host's preferences. Main thread.

#include "host/ui_object.h"

namespace KOV {

struct IKOV_MultiSizeImage;

/// One page. The module offers it; the host shows it.
struct IUIX_PropSheetPage : IUnknown {
    virtual HRESULT get_Icon(IKOV_MultiSizeImage** o_icon) = 0;
    virtual HRESULT get_Name(BSTR* o_name) = 0;
    virtual HRESULT get_Title(BSTR* o_title) = 0;
    virtual HRESULT get_Tip(BSTR* o_tip) = 0;
    virtual HRESULT get_HasChanges(VARIANT_BOOL* o_has_changes) = 0;
    /// Makes the page's object inside `parent`, at the page's first showing. `rect` may be null.
    virtual HRESULT OnCreateNewUI(IUnknown* reserved, HWND parent, const RECT* rect, IUIX_Obj** o_ui) = 0;
    virtual HRESULT PropSheetPage_Reserved9() = 0;
    virtual HRESULT PropSheetPage_Reserved10() = 0;
    /// `flag` isn't 0 for OK and Apply. Cancel doesn't call it.
    virtual HRESULT OnApply(IUnknown* reserved, WORD flag) = 0;
    virtual HRESULT PropSheetPage_Reserved12() = 0;
    virtual HRESULT PropSheetPage_Reserved13() = 0;

protected:
    ~IUIX_PropSheetPage() = default;
};

/// A window of pages that is being built.
struct IUIX_PropSheets : IDispatch {
    /// Which window it is: "DlgAppPrefs" for the preferences.
    virtual HRESULT get_ID(BSTR* out_id) = 0;
    /// The page is held until the window is gone.
    virtual HRESULT InsertPage(IUIX_PropSheetPage* page, LPCWSTR name, IUnknown* reserved1, IUnknown* reserved2) = 0;

protected:
    ~IUIX_PropSheets() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IUIX_PropSheetPage, "{2321F77D-885A-47B2-8F6F-48D8A59841AC}");
KOV_INTERFACE_ID(KOV::IUIX_PropSheets, "{A171565A-BF5B-4740-85F9-14147CDA399E}");
