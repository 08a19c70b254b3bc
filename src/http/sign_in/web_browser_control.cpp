#include "http/sign_in/web_browser_control.h"

#include "frame/diagnostics/diagnostics.h"

namespace {

/// The answer to a question for something that the container doesn't have.
template <class Object>
HRESULT Without(Object** out_object, HRESULT result) {
    CHECK_OR_RETURN(out_object != nullptr, E_INVALIDARG);
    *out_object = nullptr;
    return result;
}

} // namespace

WebBrowserControl::~WebBrowserControl() {
    Uninit();
    OleUninitialize();
}

HRESULT WebBrowserControl::Init(HWND i_parent_window, const RECT& rect) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_parent_window != nullptr, E_INVALIDARG);
    _parent_window = i_parent_window;
    const HRESULT result = MakeBrowser(rect);
    if (FAILED(result)) {
        Uninit();
        return result;
    }
    TRACE_RETURN(S_OK);
}

HRESULT WebBrowserControl::MakeBrowser(const RECT& rect) {
    CHECK_OR_RETURN(
        OleCreate(CLSID_WebBrowser, IID_IOleObject, OLERENDER_DRAW, nullptr, this, this, reinterpret_cast<void**>(&_ole_object)));
    CHECK_OR_RETURN(_ole_object->SetClientSite(this));
    CHECK_OR_RETURN(OleSetContainedObject(_ole_object, TRUE));
    CHECK_OR_RETURN(_ole_object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, this, -1, _parent_window, &rect));
    CHECK_OR_RETURN(_ole_object->QueryInterface(&_web_browser2));
    HWND control = nullptr;
    CHECK_OR_RETURN(GetControl(&control));
    ShowWindow(control, SW_SHOW);
    return S_OK;
}

void WebBrowserControl::Uninit() {
    _ole_in_place_object.Release();
    _web_browser2.Release();
    _ole_object.Release();
    _parent_window = nullptr;
}

HRESULT WebBrowserControl::SetRect(const RECT& rect) {
    _rect = rect;
    CHECK_OR_RETURN(_ole_object != nullptr, E_UNEXPECTED);
    SIZE size{rect.right - rect.left, rect.bottom - rect.top};
    CHECK_OR_RETURN(_ole_object->SetExtent(DVASPECT_CONTENT, &size));
    if (!_ole_in_place_object.IsNull()) {
        CHECK_OR_RETURN(_ole_in_place_object->SetObjectRects(&_rect, &_rect));
    }
    return S_OK;
}

HRESULT WebBrowserControl::GetControl(HWND* out_window) {
    CHECK_OR_RETURN(out_window != nullptr, E_INVALIDARG);
    *out_window = nullptr;
    CHECK_OR_RETURN(_ole_in_place_object != nullptr, E_UNEXPECTED);
    return _ole_in_place_object->GetWindow(out_window);
}

HRESULT WebBrowserControl::QueryInterface(REFIID id, void** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    if (id == __uuidof(IUnknown) || id == __uuidof(IOleClientSite)) {
        *out_object = static_cast<IOleClientSite*>(this);
    } else if (id == __uuidof(IOleInPlaceSite)) {
        *out_object = static_cast<IOleInPlaceSite*>(this);
    } else if (id == __uuidof(IStorage)) {
        *out_object = static_cast<IStorage*>(this);
    } else {
        *out_object = nullptr;
        return E_NOINTERFACE;
    }
    return S_OK;
}

HRESULT WebBrowserControl::GetWindow(HWND* out_window) {
    CHECK_OR_RETURN(out_window != nullptr, E_INVALIDARG);
    *out_window = _parent_window;
    return S_OK;
}

HRESULT WebBrowserControl::OnInPlaceActivate() {
    TRACE_ENTER();
    HRESULT result = OleLockRunning(_ole_object, TRUE, FALSE);
    CHECK_OR_RETURN(SUCCEEDED(result), result);
    result = _ole_object->QueryInterface(&_ole_in_place_object);
    CHECK_OR_RETURN(SUCCEEDED(result), result);
    result = _ole_in_place_object->SetObjectRects(&_rect, &_rect);
    CHECK_OR_RETURN(SUCCEEDED(result), result);
    TRACE_RETURN(S_OK);
}

HRESULT WebBrowserControl::GetWindowContext(IOleInPlaceFrame** o_frame, IOleInPlaceUIWindow** o_document_window, RECT* o_rect,
                                            RECT* o_clip_rect, OLEINPLACEFRAMEINFO* io_frame_info) {
    CHECK_OR_RETURN(o_frame != nullptr && o_document_window != nullptr && o_rect != nullptr && o_clip_rect != nullptr &&
                        io_frame_info != nullptr,
                    E_INVALIDARG);
    *o_frame = nullptr;
    *o_document_window = nullptr;
    *o_rect = _rect;
    *o_clip_rect = _rect;
    io_frame_info->hwndFrame = _parent_window;
    return S_OK;
}

HRESULT WebBrowserControl::OnInPlaceDeactivate() {
    _ole_in_place_object.Release();
    return S_OK;
}

HRESULT WebBrowserControl::GetMoniker(DWORD, DWORD, IMoniker** out_moniker) { return Without(out_moniker, E_NOTIMPL); }

HRESULT WebBrowserControl::GetContainer(IOleContainer** out_container) { return Without(out_container, E_NOINTERFACE); }

HRESULT WebBrowserControl::CreateStream(const OLECHAR*, DWORD, DWORD, DWORD, IStream** out_stream) {
    return Without(out_stream, E_NOTIMPL);
}

HRESULT WebBrowserControl::OpenStream(const OLECHAR*, void*, DWORD, DWORD, IStream** out_stream) {
    return Without(out_stream, E_NOTIMPL);
}

HRESULT WebBrowserControl::CreateStorage(const OLECHAR*, DWORD, DWORD, DWORD, IStorage** out_storage) {
    return Without(out_storage, E_NOTIMPL);
}

HRESULT WebBrowserControl::OpenStorage(const OLECHAR*, IStorage*, DWORD, SNB, DWORD, IStorage** out_storage) {
    return Without(out_storage, E_NOTIMPL);
}

HRESULT WebBrowserControl::EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** out_enum) { return Without(out_enum, E_NOTIMPL); }

HRESULT WebBrowserControl::Stat(STATSTG* out_stat, DWORD) {
    CHECK_OR_RETURN(out_stat != nullptr, E_INVALIDARG);
    return E_NOTIMPL;
}
