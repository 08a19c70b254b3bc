// Whether a location is on a server of the right kind: the first steps of a sign-in, on a connection of its own, in which the
// server's demand for an account counts as the answer "yes".

#include "frame/diagnostics/diagnostics.h"
#include "http/sign_in/session.h"
#include "http/sign_in/sharepoint_checker.h"
#include "sharepoint/web_2013.h"
#include "url/url_kinds.h"
#include "url/webdav_path.h"

namespace {

void CreateWeb(const std::shared_ptr<Http::Session>& http, const std::wstring& url, bool& out_is_sharepoint) {
    http->m_impl->credentials_callback = [&out_is_sharepoint](Http::Session::Credentials&, const wchar_t*, const wchar_t*) {
        out_is_sharepoint = true;
        throw HResultException(E_CANCELED);
    };
    http->m_impl->forms_callback = [&out_is_sharepoint](const wchar_t*, const wchar_t*, const wchar_t*) -> std::wstring {
        out_is_sharepoint = true;
        throw HResultException(E_CANCELED);
    };
    SharePoint2013::Web::Create(http, url.c_str());
    out_is_sharepoint = true;
}

} // namespace

bool Session::IsSharePoint(const std::wstring& url) {
    TRACE_ENTER();
    bool result = false;
    try {
        std::wstring scheme;
        std::wstring host;
        std::wstring path;
        std::uint16_t port = 0;
        Http::Session::CrackUri(url, &scheme, &host, &port, nullptr, &path);
        const auto http = Http::Session::Create(scheme, host, port, {}, {});
        try {
            if (!SharePoint2013::Web::IsCompatible(http, path)) {
                TRACE_FORMAT(LogLevel::warning, L"no SharePoint service");
                TRACE_LEAVE(L"false");
                return false;
            }
            CreateWeb(http, url, result);
            TRACE_FORMAT(LogLevel::information, L"web created");
        } catch (const HttpException& exception) {
            TRACE_FORMAT(LogLevel::error, L"HttpException({})", exception.status);
        } catch (const HResultException& exception) {
            const bool is_demand = exception.hr == E_CANCELED;
            TRACE_FORMAT(is_demand ? LogLevel::information : LogLevel::error, L"HResultException({})", exception.hr);
            if (!is_demand) {
                throw;
            }
            result = true;
        }
    } catch (...) {
        TRACE_FORMAT(LogLevel::error, L"Exception on url {}", Masked(url));
        throw;
    }
    TRACE_LEAVE(L"{}", result);
    return result;
}

bool Utility::SharepointChecker::IsSharePoint(const wchar_t* url) {
    TRACE_ENTER();
    std::wstring tested = url;
    if (IsDirectUrl(url) || IsFileLinkUrl(url)) {
        TRACE_FORMAT(LogLevel::information, L"SharePoint URL '{}'", Masked(url));
    } else {
        tested = WebDavPathToUrl(url);
        if (tested.empty()) {
            TRACE_FORMAT(LogLevel::warning, L"invalid URL/Link/WebDav {}", Masked(url));
            TRACE_LEAVE(L"false");
            return false;
        }
        TRACE_FORMAT(LogLevel::information, L"WebDav URL '{}' -> '{}'", Masked(url), Masked(tested));
    }
    const bool result = Session::IsSharePoint(tested);
    TRACE_LEAVE(L"{}", result);
    return result;
}
