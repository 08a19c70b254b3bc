#include "workbench/desktop/frame_objects.h"

HRESULT TabObject::get_Doc(KOV::IKOV_Document** out_document) {
    if (out_document == nullptr) {
        return E_POINTER;
    }
    *out_document = ComPtr<Document>(m_document).Detach();
    return S_OK;
}

HRESULT TabObject::get_WndHandle(HWND* out_window) {
    if (out_window == nullptr) {
        return E_POINTER;
    }
    *out_window = m_window;
    return S_OK;
}

void FrameObject::SetActive(ComPtr<TabObject> tab) {
    const std::scoped_lock hold(m_lock);
    std::swap(m_active, tab);
}

HRESULT FrameObject::_QueryImpl(REFIID id, void** out_interface) {
    if (id != __uuidof(KOV::IKOV_DocumentView)) {
        return QueryInterface(id, out_interface);
    }
    ComPtr<TabObject> active;
    {
        const std::scoped_lock hold(m_lock);
        active = m_active;
    }
    if (active.IsNull()) {
        return E_NOINTERFACE;
    }
    return active->QueryInterface(id, out_interface);
}
