#include "workbench/desktop/pages/property_sheets.h"

#include <utility>

#include "platform/bstr.h"

HRESULT PropertySheets::get_ID(BSTR* out_id) {
    if (out_id == nullptr) {
        return E_POINTER;
    }
    *out_id = SysAllocString(L"DlgAppPrefs");
    return *out_id != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT PropertySheets::InsertPage(KOV::IUIX_PropSheetPage* page, LPCWSTR name, IUnknown*, IUnknown*) {
    if (page == nullptr) {
        return E_POINTER;
    }
    if (m_is_finished) {
        return E_UNEXPECTED;
    }
    m_pages.push_back({page, name == nullptr ? L"" : name});
    return S_OK;
}

std::vector<PropertySheets::Page> PropertySheets::Finish() {
    m_is_finished = true;
    return std::exchange(m_pages, {});
}
