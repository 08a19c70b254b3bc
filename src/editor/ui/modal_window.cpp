#include "editor/ui/modal_window.h"

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/resources.h"

namespace {

using KOV::UIX_ObjModal_AppModal;

constexpr WORD layouts_resource = 101;

HRESULT RunLoop(KOV::IUIX_Obj* m_pObj, LONGLONG& result) {
    CHECK_OR_RETURN(m_pObj->DoModal(UIX_ObjModal_AppModal, &result));
    return S_OK;
}

HRESULT DestroyObject(KOV::IUIX_Obj* m_pObj) {
    CHECK_OR_RETURN(m_pObj->Destroy());
    return S_OK;
}

} // namespace

namespace Ui {

KOV::CreateUiObjectParameters LayoutParameters(LPCWSTR layout_id, KOV::IUIX_ObjImpl* implementation, HWND parent_window) {
    const ResourceBytes layouts = FindResourceBytes(layouts_resource, L"XML");
    KOV::CreateUiObjectParameters parameters{};
    parameters.parent_window = parent_window;
    parameters.implementation = implementation;
    parameters.kind = KOV::UIX_ObjKind_Window;
    parameters.layout = layouts.data;
    parameters.layout_size = layouts.size;
    parameters.layout_id = layout_id;
    return parameters;
}

HRESULT RunModalWindow(KOV::IUIX_Inst* uix_instance, KOV::IUIX_ObjImpl* implementation, const ComPtr<KOV::IUIX_Obj>& m_pObj,
                       const ModalWindow& window, HWND parent_window, LONGLONG* io_result) {
    TRACE_ENTER();
    CHECK_OR_RETURN(uix_instance != nullptr, E_INVALIDARG);
    KOV::CreateUiObjectParameters createUiObjectParameters = LayoutParameters(window.layout_id, implementation, parent_window);
    createUiObjectParameters.flags = window.flags;
    createUiObjectParameters.window_style = window.window_style;
    createUiObjectParameters.reserved112 = 1;
    CHECK_OR_RETURN(uix_instance->CreateObj(&createUiObjectParameters, nullptr));
    CHECK_OR_RETURN(m_pObj != nullptr, S_FALSE);
    // Destroyed whatever the loop ended with: nothing of the window may outlive this call.
    const ComPtr<KOV::IUIX_Obj> object = m_pObj;
    const HRESULT modal_result = RunLoop(object, *io_result);
    const HRESULT destroy_result = DestroyObject(object);
    if (FAILED(modal_result) || FAILED(destroy_result)) {
        return FAILED(modal_result) ? modal_result : destroy_result;
    }
    TRACE_RETURN(S_OK);
}

} // namespace Ui
