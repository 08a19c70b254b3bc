#include "http/sign_in/web_browser_events.h"

#include "frame/diagnostics/diagnostics.h"

namespace {

constexpr VARTYPE variant_by_reference = VT_VARIANT | VT_BYREF;
constexpr VARTYPE bool_by_reference = VT_BOOL | VT_BYREF;

/// What each argument of an event holds, in the order of the event. A reference leads to a value of the type `held`.
struct ArgumentType {
    VARTYPE type;
    VARTYPE held;
};
constexpr ArgumentType before_navigate_types[] = {
    {VT_DISPATCH, VT_EMPTY},                      // the browser
    {variant_by_reference, VT_BSTR},              // URL
    {variant_by_reference, VT_I4},                // flags
    {variant_by_reference, VT_BSTR},              // target frame
    {variant_by_reference, variant_by_reference}, // post data
    {variant_by_reference, VT_BSTR},              // headers
    {bool_by_reference, VT_EMPTY},                // cancel
};
constexpr ArgumentType navigate_complete_types[] = {
    {VT_DISPATCH, VT_EMPTY},         // the browser
    {variant_by_reference, VT_BSTR}, // URL
};

/// An argument by its place in the event: a caller hands the last one over first.
const VARIANT& ArgumentOf(const DISPPARAMS& parameters, UINT place) { return parameters.rgvarg[parameters.cArgs - 1 - place]; }

bool IsOfType(const VARIANT& argument, const ArgumentType& expected) {
    if (argument.vt != expected.type) {
        return false;
    }
    if (expected.type == bool_by_reference) {
        return argument.pboolVal != nullptr;
    }
    if (expected.type != variant_by_reference) {
        return true;
    }
    const VARIANT* const value = argument.pvarVal;
    return value != nullptr && value->vt == expected.held && (expected.held != variant_by_reference || value->pvarVal != nullptr);
}

template <UINT count>
bool HaveTypes(const DISPPARAMS& parameters, const ArgumentType (&types)[count]) {
    if (parameters.cArgs != count || parameters.rgvarg == nullptr) {
        return false;
    }
    for (UINT place = 0; place < count; ++place) {
        if (!IsOfType(ArgumentOf(parameters, place), types[place])) {
            return false;
        }
    }
    return true;
}

struct PostData {
    const BYTE* data = nullptr;
    ULONG size = 0;
};

/// The bytes of a form; none is no failure.
HRESULT ReadPostData(const VARIANT& value, PostData& out_data) {
    if (value.vt == VT_EMPTY || ((value.vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY && value.parray == nullptr)) {
        return S_OK;
    }
    CHECK_OR_RETURN((value.vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY, E_INVALIDARG);
    CHECK_OR_RETURN(SafeArrayGetDim(value.parray) == 1, E_INVALIDARG);
    LONG lower = 0;
    LONG upper = 0;
    void* data = nullptr;
    CHECK_OR_RETURN(SafeArrayGetLBound(value.parray, 1, &lower));
    CHECK_OR_RETURN(SafeArrayGetUBound(value.parray, 1, &upper));
    CHECK_OR_RETURN(SafeArrayAccessData(value.parray, &data));
    out_data.data = static_cast<const BYTE*>(data) + lower;
    out_data.size = static_cast<ULONG>(LONGLONG{upper} - lower + 1);
    // The array lives on in the argument, and its data with it.
    return SafeArrayUnaccessData(value.parray);
}

HRESULT Disconnect(IWebBrowser2* _web_browser, DWORD _cookie) {
    ComPtr<IConnectionPointContainer> connection_point_container;
    CHECK_OR_RETURN(_web_browser->QueryInterface(&connection_point_container));
    ComPtr<IConnectionPoint> connection_point;
    CHECK_OR_RETURN(connection_point_container->FindConnectionPoint(__uuidof(DWebBrowserEvents2), &connection_point));
    CHECK_OR_RETURN(connection_point->Unadvise(_cookie));
    return S_OK;
}

} // namespace

HRESULT WebBrowserEvents2::Init(IWebBrowser2* i_web_browser) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_web_browser != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(_web_browser == nullptr && _cookie == 0, E_UNEXPECTED);
    ComPtr<IConnectionPointContainer> connection_point_container;
    CHECK_OR_RETURN(i_web_browser->QueryInterface(&connection_point_container));
    ComPtr<IConnectionPoint> connection_point;
    CHECK_OR_RETURN(connection_point_container->FindConnectionPoint(__uuidof(DWebBrowserEvents2), &connection_point));
    DWORD cookie = 0;
    CHECK_OR_RETURN(connection_point->Advise(this, &cookie));
    _web_browser = i_web_browser;
    _cookie = cookie;
    TRACE_RETURN(S_OK);
}

HRESULT WebBrowserEvents2::Uninit() {
    TRACE_ENTER();
    if (_web_browser.IsNull() && _cookie == 0) {
        TRACE_RETURN(S_FALSE);
    }
    // Cleared first: what the browser does meanwhile finds no connection.
    const ComPtr<IWebBrowser2> web_browser = std::move(_web_browser);
    if (const HRESULT result = Disconnect(web_browser, std::exchange(_cookie, 0)); FAILED(result)) {
        return result;
    }
    TRACE_RETURN(S_OK);
}

HRESULT WebBrowserEvents2::QueryInterface(REFIID id, void** out_object) {
    if (out_object == nullptr) {
        return E_POINTER;
    }
    const bool is_known = id == __uuidof(IUnknown) || id == __uuidof(IDispatch) || id == __uuidof(DWebBrowserEvents2);
    *out_object = is_known ? static_cast<DWebBrowserEvents2*>(this) : nullptr;
    return is_known ? S_OK : E_NOINTERFACE;
}

HRESULT WebBrowserEvents2::GetTypeInfoCount(UINT* out_count) {
    if (out_count == nullptr) {
        return E_POINTER;
    }
    *out_count = 0;
    return S_OK;
}

HRESULT WebBrowserEvents2::Invoke(LONG id, REFIID, DWORD, WORD, void* parameters, VARIANT*, void*, UINT*) {
    INTERFACE_TRY
    CHECK_OR_RETURN(parameters != nullptr, E_INVALIDARG);
    switch (id) {
    case DISPID_BEFORENAVIGATE2:
        return InvokeBeforeNavigate2(*static_cast<const DISPPARAMS*>(parameters));
    case DISPID_NAVIGATECOMPLETE2:
        return InvokeNavigateComplete2(*static_cast<const DISPPARAMS*>(parameters));
    default:
        return S_OK;
    }
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT WebBrowserEvents2::InvokeBeforeNavigate2(const DISPPARAMS& parameters) {
    CHECK_OR_RETURN(HaveTypes(parameters, before_navigate_types), E_INVALIDARG);
    const auto value_of = [&](UINT place) -> const VARIANT& { return *ArgumentOf(parameters, place).pvarVal; };
    PostData post_data;
    CHECK_OR_RETURN(ReadPostData(*value_of(4).pvarVal, post_data));
    VARIANT_BOOL& cancel = *ArgumentOf(parameters, 6).pboolVal;
    bool is_canceled = cancel == VARIANT_TRUE;
    const HRESULT result = BeforeNavigate2(value_of(1).bstrVal, value_of(2).lVal, value_of(3).bstrVal, post_data.data,
                                           post_data.size, value_of(5).bstrVal, &is_canceled);
    cancel = is_canceled ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
}

HRESULT WebBrowserEvents2::InvokeNavigateComplete2(const DISPPARAMS& parameters) {
    CHECK_OR_RETURN(HaveTypes(parameters, navigate_complete_types), E_INVALIDARG);
    return NavigateComplete2(ArgumentOf(parameters, 1).pvarVal->bstrVal);
}

HRESULT WebBrowserEvents2::BeforeNavigate2(LPCWSTR, LONG, LPCWSTR, const void*, ULONG, LPCWSTR, bool*) { return S_OK; }

HRESULT WebBrowserEvents2::NavigateComplete2(LPCWSTR) { return S_OK; }
