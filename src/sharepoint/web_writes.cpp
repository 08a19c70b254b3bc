// What changes the tree of a server: new files and folders, and moves.

#include "sharepoint/web_2013.h"

#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/multi_status_check.h"
#include "sharepoint/path_text.h"
#include "url/compare_urls.h"
#include "url/percent.h"
#include "url/url_parent.h"

namespace SharePoint2013 {

namespace {

/// The destination is one on this server, and says plainly where: the server, not we, would resolve dot segments.
bool IsPlainDestination(const std::wstring& server, const std::wstring& url) {
    const CompareUrlsResult result = CompareUrls(server.c_str(), url.c_str());
    return (result == CompareUrlsResult::equal || result == CompareUrlsResult::url1_is_parent) && Utility::IsPlainPath(url);
}

bool MakeFolder(Http::Session& http, const std::wstring& path, const std::wstring& web_path) {
    TRACE_FORMAT(LogLevel::verbose, L"Sending MKCOL request to '{}'", Masked(path));
    const Http::Response response = http.SendRequest(L"MKCOL", EncodeUrlPath(path), Http::accept_xml, nullptr, nullptr, 0, true);
    return response.GetStatus() < 400 && Utility::IsMultiStatusGood(response, web_path, L"MKCOL");
}

} // namespace

bool Web::PathOfNewObject(const std::wstring& url, std::wstring& out_path) {
    const std::wstring server = m_http->GetUri();
    const CompareUrlsResult result = CompareUrls(server.c_str(), url.c_str(), &out_path);
    if (result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison server URL '{}' to given URL '{}'", result,
                     Masked(server), Masked(url));
        return false;
    }
    const CompareUrlsResult path_result = CompareUrlPaths(m_information.m_path.c_str(), out_path.c_str(), nullptr);
    if (path_result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison web path '{}' to the given path '{}'", path_result,
                     Masked(m_information.m_path), Masked(out_path));
        return false;
    }
    return true;
}

std::shared_ptr<SharePoint::Object> Web::CreateFile(const std::wstring& url) {
    TRACE_ENTER(L"{}", Masked(url));
    std::wstring relative;
    if (!PathOfNewObject(url, relative)) {
        return nullptr;
    }
    TRACE_FORMAT(LogLevel::information, L"Sending PUT request to '{}'", Masked(relative));
    const std::wstring parent = GetUrlParent(url);
    if (!parent.empty() && !CreateFolderNoBind(parent)) {
        TRACE_FORMAT(LogLevel::error, L"Failed to create parent folder for file '{}'", Masked(url));
        return nullptr;
    }
    m_http->SendRequest(L"PUT", EncodeUrlPath(relative), Http::accept_any, nullptr, nullptr, 0, true);
    auto object = BindObject(url, BindObjectType::file);
    TRACE_LEAVE();
    return object;
}

std::shared_ptr<SharePoint::Object> Web::CreateFolder(const std::wstring& url) {
    TRACE_ENTER(L"{}", Masked(url));
    std::wstring relative;
    if (!PathOfNewObject(url, relative)) {
        return nullptr;
    }
    if (!CreateFolderNoBind(url)) {
        TRACE_FORMAT(LogLevel::error, L"Failed to create parent folder for folder '{}'", Masked(url));
        return nullptr;
    }
    auto object = BindObject(url, BindObjectType::folder);
    TRACE_LEAVE();
    return object;
}

bool Web::FindMissingFolders(const std::wstring& url, std::wstring path, std::vector<std::wstring>& out_missing) {
    const std::wstring server = m_http->GetUri();
    for (;;) {
        std::shared_ptr<SharePoint::Object> existing;
        try {
            existing = BindObject(server + L"/" + path, BindObjectType::folder);
        } catch (...) { // what can't be looked at isn't there yet; the server's word on the next step counts
        }
        if (existing != nullptr) {
            return true;
        }
        const std::size_t slash = path.rfind(L'/');
        if (slash == std::wstring::npos || slash == 0) {
            TRACE_FORMAT(LogLevel::error, L"Failed to get parent path for '{}' during creation of folder '{}'", Masked(path),
                         Masked(url));
            return false;
        }
        out_missing.push_back(path);
        path.resize(slash);
    }
}

bool Web::CreateFolderNoBind(const std::wstring& url) {
    TRACE_ENTER(L"{}", Masked(url));
    const std::wstring server = m_http->GetUri();
    std::wstring path;
    const CompareUrlsResult result = CompareUrls(server.c_str(), url.c_str(), &path);
    if (result == CompareUrlsResult::equal) {
        TRACE_FORMAT(LogLevel::information, L"Folder is web - already exists '{}'", Masked(url));
        TRACE_RETURN(true);
    }
    if (result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison server URL '{}' to given URL '{}'", result,
                     Masked(server), Masked(url));
        return false;
    }
    if (!path.empty() && path.back() == L'/') {
        path.pop_back();
    }
    TRACE_FORMAT(LogLevel::verbose, L"Searhing lower existing folder for path '{}'", Masked(path));
    std::vector<std::wstring> missing;
    if (!FindMissingFolders(url, path, missing)) {
        return false;
    }
    if (missing.empty()) {
        TRACE_FORMAT(LogLevel::information, L"Folder already exists '{}'", Masked(path));
        TRACE_RETURN(true);
    }
    TRACE_FORMAT(LogLevel::information, L"Creating folders starting from existing path '{}'",
                 Masked(std::wstring_view(missing.back()).substr(0, missing.back().rfind(L'/'))));
    for (auto next = missing.rbegin(); next != missing.rend(); ++next) {
        if (!MakeFolder(*m_http, *next, m_information.m_path)) {
            TRACE_FORMAT(LogLevel::error, L"Failed to create folder path '{}' during creation of folder '{}'", Masked(*next),
                         Masked(url));
            return false;
        }
        TRACE_FORMAT(LogLevel::information, L"Created folder '{}'", Masked(*next));
    }
    TRACE_RETURN(true);
}

void Web::SendWebDavTransfer(const wchar_t* verb, const std::wstring& source_path, const std::wstring& destination_url) {
    TRACE_ENTER(L"{} '{}' '{}'", verb, Masked(source_path), Masked(destination_url));
    CHECK_OR_THROW(IsPlainDestination(m_http->GetUri(), destination_url), HResultException(E_INVALIDARG, L""));
    const std::wstring headers = L"Destination:" + EncodeUrlPath(destination_url) + L"\nOverwrite:T\n\n";
    const Http::Response response =
        m_http->SendRequest(verb, EncodeUrlPath(source_path), Http::accept_xml, headers.c_str(), nullptr, 0, true);
    Utility::ThrowOnFailedEntry(response, source_path, verb);
    TRACE_LEAVE();
}

} // namespace SharePoint2013
