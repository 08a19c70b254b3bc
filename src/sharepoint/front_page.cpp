#include "sharepoint/front_page.h"

#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/response_body.h"
#include "sharepoint/rpc_text.h"
#include "url/compare_urls.h"

namespace FrontPage {

namespace {

constexpr const wchar_t* form_headers = L"Content-Type: application/x-www-form-urlencoded\n"
                                        L"X-Vermeer-Content-Type: application/x-www-form-urlencoded";

/// Posts a form to the web's `author.dll` and gives the answer. The web's path goes out as it stands.
std::wstring CallAuthor(Http::Session& http, std::wstring web_path, const std::string& body) {
    if (!web_path.empty() && web_path.back() != L'/') {
        web_path += L'/';
    }
    const Http::Response response = http.SendRequest(L"POST", web_path + L"_vti_bin/_vti_aut/author.dll", Http::accept_any,
                                                     form_headers, body.c_str(), 0, true);
    return SharePoint2013::Utility::ReadString(response);
}

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

bool AskCanEdit(Http::Session& http, const wchar_t* web_path, const std::string& encoded) {
    const std::wstring answer = CallAuthor(http, web_path,
                                           "method=getDocsMetaInfo%3A12%2E0%2E0%2E0&url%5Flist=%5B" + encoded +
                                               "%5D&listHiddenDocs=true&listLinkInfo=false");
    if (answer.empty()) {
        TRACE_FORMAT(LogLevel::error, L"Result of getDocsMetaInfo is empty for web '{}' and object '{}'", Masked(web_path),
                     Masked(Wide(encoded)));
        return false;
    }
    return !RefusesEdit(answer);
}

std::wstring AskCurrentUser(Http::Session& http, const wchar_t* web_path) {
    const std::wstring answer = CallAuthor(http, web_path, "method=open+service%3A12%2E0%2E0%2E0");
    if (answer.empty()) {
        TRACE_FORMAT(LogLevel::error, L"Result of 'open service:12.0.0.0' is empty for web '{}'", Masked(web_path));
        return {};
    }
    std::wstring name;
    if (!FindUserName(answer, name)) {
        TRACE_FORMAT(LogLevel::error, L"Result of 'open service:12.0.0.0' for web '{}' has no 'vti_username' field:\n{}",
                     Masked(web_path), answer);
    } else if (name.empty()) {
        TRACE_FORMAT(LogLevel::error,
                     L"Result of 'open service:12.0.0.0' for web '{}' has 'vti_username' field but it is empty:\n{}",
                     Masked(web_path), answer);
    }
    return name;
}

} // namespace

bool CanEdit(Http::Session& http, const wchar_t* web_path, const wchar_t* object_path) noexcept {
    TRACE_ENTER();
    std::string encoded;
    try {
        std::wstring relative;
        const CompareUrlsResult result = CompareUrlPaths(web_path, object_path, &relative);
        if (result != CompareUrlsResult::equal && result != CompareUrlsResult::url1_is_parent) {
            TRACE_FORMAT(LogLevel::error, L"Unexpected result '{}' of path comparison web '{}' to object '{}'", result,
                         Masked(web_path), Masked(object_path));
            return false;
        }
        encoded = EncodeRpcUrl(relative);
        const bool can_edit = AskCanEdit(http, web_path, encoded);
        TRACE_LEAVE(L"{}", can_edit);
        return can_edit;
    } catch (...) { // whatever keeps the answer away, rights that aren't known are none
        TRACE_FORMAT(LogLevel::error, L"Failed to getDocsMetaInfo for web '{}' and object '{}'", Masked(web_path),
                     Masked(Wide(encoded)));
        return false;
    }
}

std::wstring GetCurrentUser(Http::Session& http, const wchar_t* web_path) noexcept {
    TRACE_ENTER();
    try {
        std::wstring name = AskCurrentUser(http, web_path);
        TRACE_LEAVE(L"{}", name);
        return name;
    } catch (...) { // without a name the caller goes on as for an unknown user
        TRACE_FORMAT(LogLevel::error, L"Failed to 'open service:12.0.0.0' for web '{}'", Masked(web_path));
        return {};
    }
}

} // namespace FrontPage
