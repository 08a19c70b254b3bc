// What is at a URL, and what is in a folder.

#include "sharepoint/web_2013.h"

#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/multi_status.h"
#include "sharepoint/object_2013.h"
#include "sharepoint/path_text.h"
#include "sharepoint/response_body.h"
#include "sharepoint/rest_record.h"
#include "url/compare_urls.h"
#include "url/percent.h"
#include "url/url_kinds.h"

namespace SharePoint2013 {

namespace {

constexpr char propfind_body[] = "<?xml version=\"1.0\" ?><D:propfind xmlns:D=\"DAV:\"><D:allprop/></D:propfind>";
static_assert(sizeof(propfind_body) - 1 == 74);

/// Asks for the properties of one object, or with `with_children` of what is in it, too. Throws Exception when the answer
/// isn't a whole multi-status: what is missing from it must not look as if it weren't on the server.
void Propfind(Http::Session& http, pugi::xml_document& document, const std::wstring& path, bool with_children) {
    const Http::Response response =
        http.SendRequest(L"PROPFIND", EncodeUrlPath(path), Http::accept_xml, with_children ? L"Depth: 1" : L"Depth: 0",
                         propfind_body, sizeof(propfind_body) - 1, true);
    Utility::ReadMultiStatus(document, response);
}

/// A record for the log, with a word in front that tells whose it is.
void LogObject(const wchar_t* kind, const SharePoint::Information& information, bool is_folder) {
    TRACE_FORMAT(LogLevel::information,
                 L"{} {{is_folder={:d}, path='{}', name='{}', checkout_user='{}', created_time={}, modified_time={}, size={}}}",
                 kind, is_folder, Masked(information.m_path), information.m_name, information.m_checkout_user,
                 information.m_created_time, information.m_modified_time, information.m_size);
}

} // namespace

std::shared_ptr<SharePoint::Object> Web::MakeObject(SharePoint::Information&& information, bool is_folder) {
    if (is_folder) {
        return std::make_shared<SharePoint2013::Folder>(shared_from_this(), std::move(information));
    }
    return std::make_shared<SharePoint2013::File>(shared_from_this(), std::move(information));
}

std::shared_ptr<SharePoint::Object> Web::BindObject(const std::wstring& url, BindObjectType type) {
    TRACE_ENTER(L"{}", Masked(url));
    const std::wstring server = m_http->GetUri();
    std::wstring relative;
    const CompareUrlsResult result = CompareUrls(server.c_str(), url.c_str(), &relative, true);
    if (result != CompareUrlsResult::equal && result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison server URL '{}' to the given URL '{}'", result,
                     Masked(server), Masked(url));
        return nullptr;
    }
    const CompareUrlsResult path_result = CompareUrlPaths(m_information.m_path.c_str(), relative.c_str(), nullptr);
    if (path_result == CompareUrlsResult::equal) {
        if (type == BindObjectType::file) {
            TRACE_FORMAT(LogLevel::warning, L"given URL is web, cannot bind as file");
            return nullptr;
        }
        TRACE_FORMAT(LogLevel::information, L"given URL is web, binded as folder");
        TRACE_LEAVE(L"web");
        return shared_from_this();
    }
    if (IsFileLinkUrl(url.c_str())) {
        return BindFileLink(url, type);
    }
    if (path_result != CompareUrlsResult::url1_is_parent) {
        TRACE_FORMAT(LogLevel::error, L"Unexpected result {} of comparison web path '{}' to the given path '{}'", path_result,
                     Masked(m_information.m_path), Masked(relative));
        return nullptr;
    }
    auto object = BindPath(relative, type);
    TRACE_LEAVE();
    return object;
}

std::shared_ptr<SharePoint::Object> Web::BindFileLink(const std::wstring& url, BindObjectType type) {
    if (type == BindObjectType::folder) {
        TRACE_FORMAT(LogLevel::information, L"File link URL '{}' cannot be binded as folder", Masked(url));
        return nullptr;
    }
    TRACE_FORMAT(LogLevel::information, L"Getting information from file link URL '{}'", Masked(url));
    const std::wstring path = L"_api/SP.RemoteWeb(@url)/web/GetFileByUrl(@url)"
                              L"?$select=ServerRelativeUrl,Name,Length,TimeCreated,TimeLastModified,CheckedOutByUser/LoginName"
                              L"&$expand=CheckedOutByUser"
                              L"&@url='" +
                              EncodeUrlPath(url) + L"'";
    const Http::Response response = m_http->SendRequest(L"GET", path, Http::accept_json, nullptr, nullptr, 0, true);
    Utility::JsonDocument document;
    SharePoint::Information information;
    if (!Utility::ReadJson(document, response) || !Utility::ParseRestFileInfo(document, information)) {
        return nullptr;
    }
    LogObject(L"Binded object", information, false);
    return MakeObject(std::move(information), false);
}

std::shared_ptr<SharePoint::Object> Web::BindPath(const std::wstring& path, BindObjectType type) {
    SharePoint::Information information;
    bool is_folder = false;
    try {
        pugi::xml_document document;
        Propfind(*m_http, document, path, false);
        const pugi::xml_node response = document.child(L"D:multistatus").child(L"D:response");
        if (!Utility::ParseWebDavPropfind(response, m_http->GetUri().c_str(), information, is_folder)) {
            return nullptr;
        }
    } catch (const HttpException& exception) {
        if (exception.status != 404) {
            throw;
        }
        TRACE_FORMAT(LogLevel::warning, L"Object '{}' is not found on the server", Masked(path));
        return nullptr;
    }
    if (type != BindObjectType::any && is_folder != (type == BindObjectType::folder)) {
        TRACE_FORMAT(LogLevel::error, L"Object '{}' has unexpected type '{}'", Masked(path), is_folder ? L"folder" : L"file");
        return nullptr;
    }
    LogObject(L"Binded object", information, is_folder);
    return MakeObject(std::move(information), is_folder);
}

std::vector<std::shared_ptr<SharePoint::Object>> Web::Enumerate(const std::wstring& path, bool get_children,
                                                                SharePoint::Information* out_information) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"path='{}', get_children={:d}", Masked(path), get_children);
    pugi::xml_document document;
    Propfind(*m_http, document, path, get_children);

    const std::wstring server = m_http->GetUri();
    std::vector<std::shared_ptr<SharePoint::Object>> objects;
    bool is_folder_met = false;
    pugi::xml_node multi_status = document.child(L"D:multistatus");
    pugi::xml_node next = multi_status.child(L"D:response");
    // Each element makes room for the object that is made of it, so that a long listing never stands in memory twice.
    for (pugi::xml_node response = next; response; multi_status.remove_child(response), response = next) {
        next = response.next_sibling(L"D:response");
        SharePoint::Information information;
        bool is_folder = false;
        if (!Utility::ParseWebDavPropfind(response, server.c_str(), information, is_folder)) {
            continue;
        }
        if (!is_folder_met && CompareUrlPaths(information.m_path.c_str(), path.c_str(), nullptr) == CompareUrlsResult::equal) {
            is_folder_met = true;
            LogObject(L"Object", information, is_folder);
            if (out_information != nullptr) {
                *out_information = std::move(information);
            }
            continue;
        }
        LogObject(L"Object child", information, is_folder);
        objects.push_back(MakeObject(std::move(information), is_folder));
    }
    TRACE_LEAVE(L"{}", objects.size());
    return objects;
}

} // namespace SharePoint2013
