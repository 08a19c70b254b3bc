#include "http/sign_in/microsoft_forms.h"

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/thread_safe_call.h"
#include "http/sign_in/web_browser_dialog.h"
#include "platform/errors.h"
#include "platform/wininet.h"
#include "url/compare_urls.h"

namespace {

struct SignIn {
    std::wstring return_url;
    LPCWSTR resource_url;
};

/// Makes the header of the two cookies, each a text `name=value` as long as the store says.
HRESULT ReadCookies(LPCWSTR i_resource_url, DWORD fed_length, std::wstring& out_header) {
    std::wstring fed_text(fed_length + size_t{1}, L'\0');
    wchar_t* const fed = fed_text.data();
    CHECK_OR_RETURN(InternetGetCookieExW(i_resource_url, L"FedAuth", fed, &fed_length, INTERNET_COOKIE_HTTPONLY, 0),
                    HRESULT_FROM_WIN32(GetLastError()));
    DWORD rtfa_length = 0;
    CHECK_OR_RETURN(InternetGetCookieExW(i_resource_url, L"rtFa", nullptr, &rtfa_length, INTERNET_COOKIE_HTTPONLY, 0),
                    HRESULT_FROM_WIN32(GetLastError()));
    std::wstring rtfa_text(rtfa_length + size_t{1}, L'\0');
    wchar_t* const rtfa = rtfa_text.data();
    CHECK_OR_RETURN(InternetGetCookieExW(i_resource_url, L"rtFa", rtfa, &rtfa_length, INTERNET_COOKIE_HTTPONLY, 0),
                    HRESULT_FROM_WIN32(GetLastError()));
    out_header = std::wstring(L"Cookie:") + fed + L"; " + rtfa + L"\n";
    return S_OK;
}

/// Ends the dialog with the header when the navigation ended at the place where the cookies have to be; else the user is still on
/// the way.
HRESULT TakeHeader(const SignIn& sign_in, LPCWSTR i_url, KOV::WebBrowserDialog& dialog, std::wstring& out_header) {
    INTERFACE_TRY
    CHECK_OR_RETURN(i_url != nullptr, E_FAIL);
    const bool has_return_url = !sign_in.return_url.empty();
    if (has_return_url && CompareUrls(i_url, sign_in.return_url.c_str()) != CompareUrlsResult::equal) {
        TRACE_FORMAT(LogLevel::verbose, L"Navigating to non-return URL '{}'", Masked(i_url));
        return S_OK;
    }
    DWORD fed_length = 0;
    if (!InternetGetCookieExW(sign_in.resource_url, L"FedAuth", nullptr, &fed_length, INTERNET_COOKIE_HTTPONLY, 0)) {
        const DWORD error = GetLastError();
        TRACE_FORMAT(LogLevel::information, L"FedAuth cookie not found on navigating to '{}', GetLastError()='{}'.",
                     Masked(i_url), GetErrorString(error));
        return has_return_url ? E_UNEXPECTED : S_OK;
    }
    TRACE_FORMAT(LogLevel::verbose, L"FedAuth cookie is found on navigating to '{}', length is {}", Masked(i_url), fed_length);
    CHECK_OR_RETURN(ReadCookies(sign_in.resource_url, fed_length, out_header));
    CHECK_OR_RETURN(dialog.EndModal(1));
    return S_OK;
    INTERFACE_CATCH_SHORT(nullptr)
}

/// Ends the dialog when the sign-in is done, and when it can't be.
HRESULT OnNavigateComplete(const SignIn& sign_in, LPCWSTR i_url, KOV::WebBrowserDialog& dialog, std::wstring& out_header) {
    TRACE_ENTER();
    if (const HRESULT result = TakeHeader(sign_in, i_url, dialog, out_header); FAILED(result)) {
        (void)dialog.EndModal(result);
        return result;
    }
    TRACE_RETURN(S_OK);
}

/// Main thread.
HRESULT ShowSignIn(const SignIn& sign_in, LPCWSTR sign_in_url, KOV::IKOV_Inst* kov_inst, std::wstring& out_header) {
    TRACE_ENTER();
    INTERFACE_TRY
    const ComPtr<KOV::WebBrowserDialog> dialog = MakeObject<KOV::WebBrowserDialog>(kov_inst);
    CHECK_OR_RETURN(dialog != nullptr, E_OUTOFMEMORY);
    const HRESULT result =
        dialog->DoModal(sign_in_url, {}, [&](LPCWSTR i_url) { return OnNavigateComplete(sign_in, i_url, *dialog, out_header); });
    CHECK_OR_RETURN(result);
    TRACE_LEAVE(L"{}", result);
    return result;
    INTERFACE_CATCH_SHORT(nullptr)
}

} // namespace

HRESULT AuthenticateWithMicrosoftForms(std::wstring& out_header, LPCWSTR sign_in_url, LPCWSTR return_url, LPCWSTR i_resource_url,
                                       KOV::IKOV_Inst* kov_inst) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::verbose, L"Authenticating to '{}', return URL is '{}'", Masked(sign_in_url), Masked(return_url));
    const SignIn sign_in = {return_url == nullptr ? L"" : return_url, i_resource_url};
    std::wstring header;
    const HRESULT call_result =
        ThreadSafeCall::Call(kov_inst, [&] { return ShowSignIn(sign_in, sign_in_url, kov_inst, header); });
    CHECK_OR_RETURN(call_result);
    out_header = header;
    TRACE_RETURN(S_OK);
}
