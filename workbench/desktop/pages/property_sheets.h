#pragma once

#include <string>
#include <vector>

#include "host/object_bases.h"
#include "host/property_sheets.h"

/// Takes the pages of modules for the window of preferences, as long as it is being built. Main thread.
class PropertySheets final : public cCoClassDispatchT<KOV::IUIX_PropSheets> {
public:
    struct Page {
        ComPtr<KOV::IUIX_PropSheetPage> page;
        std::wstring name;
    };

    HRESULT get_ID(BSTR* out_id) override;
    /// `E_POINTER` for a null page, `E_UNEXPECTED` when the window is built.
    HRESULT InsertPage(KOV::IUIX_PropSheetPage* page, LPCWSTR name, IUnknown* reserved1, IUnknown* reserved2) override;

    /// The pages in their order. None comes after that.
    std::vector<Page> Finish();

private:
    std::vector<Page> m_pages;
    bool m_is_finished = false;
};
