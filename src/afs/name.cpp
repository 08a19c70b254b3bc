#include "afs/name.h"

#include <new>

#include "afs/account_data.h"
#include "afs/file_system.h"
#include "frame/diagnostics/diagnostics.h"
#include "url/compare_urls.h"
#include "url/url_kinds.h"
#include "url/url_parent.h"
#include "url/webdav_path.h"

namespace {

constexpr HRESULT invalid_relative_path = MakeHResult(0x803D0020);

/// The URL of a web or folder: `path` is decoded and relative to the server; empty is the server's root.
std::wstring UrlBelow(std::wstring server, const std::wstring& path) {
    if (!path.empty()) {
        server.reserve(server.size() + 1 + path.size());
        server += L'/';
        server += path;
    }
    return server;
}

} // namespace

Name::Name(Private, std::shared_ptr<Session> session, std::wstring url) : m_session(std::move(session)), m_url(std::move(url)) {
    TRACE_ENTER();
}

ComPtr<Name> Name::Make(std::shared_ptr<Session> session, std::wstring url) {
    ComPtr<Name> name = MakeObject<Name>(Private(), std::move(session), std::move(url));
    if (name.IsNull()) {
        throw std::bad_alloc();
    }
    return name;
}

std::wstring Name::GetAbsoluteUrl(const wchar_t* text) {
    TRACE_ENTER();
    const std::wstring absolute_url = IsDirectUrl(text) || IsFileLinkUrl(text) ? text : WebDavPathToUrl(text);
    CHECK_OR_THROW(!absolute_url.empty(), HResultException(E_INVALIDARG));
    TRACE_LEAVE(L"{}", Masked(absolute_url));
    return absolute_url;
}

std::wstring Name::GetAbsoluteUrl(const Session& session, const SharePoint::Object& object) {
    return UrlBelow(session.GetPath(), object.m_information.m_path);
}

ComPtr<Name> Name::Create(const wchar_t* url, Name* other) {
    TRACE_ENTER();
    const bool is_direct_url = IsDirectUrl(url);
    const bool is_file_link_url = IsFileLinkUrl(url);
    std::wstring absolute = is_direct_url || is_file_link_url ? url : WebDavPathToUrl(url);
    if (absolute.empty()) {
        CHECK_OR_THROW(IsValidFileOrFolderUrlPath(url), HResultException(invalid_relative_path));
        const auto object = other->BindObject(SharePoint::Web::BindObjectType::any, true);
        absolute = other->m_session->GetPath() + L"/" + object->m_information.m_path;
        if (!absolute.ends_with(L'/')) {
            absolute += L'/';
        }
        absolute += *url == L'/' ? url + 1 : url;
    } else {
        // A sharing link tells nothing of its web before the server resolved it, so it is held against the server alone.
        std::wstring web_url = other->m_session->GetPath();
        if (is_direct_url) {
            web_url += L"/" + other->m_session->GetWeb()->m_information.m_path;
        }
        const CompareUrlsResult result = CompareUrls(web_url.c_str(), absolute.c_str());
        if (result != CompareUrlsResult::equal && result != CompareUrlsResult::url1_is_parent) {
            TRACE_FORMAT(LogLevel::warning,
                         L"Cannot create name for URL '{}' (absolute '{}'), is_direct_url={}, is_file_link_url={}, comparison to "
                         L"web URL '{}' returned {}",
                         Masked(url), Masked(absolute), int{is_direct_url}, int{is_file_link_url}, Masked(web_url),
                         static_cast<unsigned>(result));
            THROW_LOGGED(HResultException(E_INVALIDARG));
        }
    }
    ComPtr<Name> name = Make(other->m_session, std::move(absolute));
    TRACE_LEAVE(L"name");
    return name;
}

ComPtr<Name> Name::Create(const std::shared_ptr<SharePoint::Object>& object, Name* other) {
    TRACE_ENTER();
    CHECK_OR_THROW(object->GetWeb() == other->m_session->GetWeb()->AsWeb(), HResultException(E_INVALIDARG));
    ComPtr<Name> name = Make(other->m_session, {});
    name->SetObject(object);
    TRACE_LEAVE(L"name");
    return name;
}

ComPtr<Name> Name::CreateRoot(AccountData& account_data, Plugin* plugin, KOV::IAFS_BindContext* context) {
    TRACE_ENTER();
    account_data.SetUrl(GetAbsoluteUrl(account_data.GetUrl().c_str()));
    const std::shared_ptr<Session> session = Session::Create(account_data, plugin, context);
    ComPtr<Name> name = Make(session, {});
    name->SetObject(session->GetWeb());
    TRACE_LEAVE(L"name");
    return name;
}

void Name::SetObject(const std::shared_ptr<SharePoint::Object>& object) {
    TRACE_ENTER();
    CHECK_OR_THROW(object, HResultException(E_INVALIDARG));
    std::wstring url = GetAbsoluteUrl(*m_session, *object);
    {
        const std::scoped_lock hold(m_object_lock);
        m_object = object;
    }
    m_url = std::move(url);
    if (object->AsFolder() != nullptr) {
        m_attributes = KOV::AFS_FileAttributes::AFS_FileAttribute_Folder;
    }
    TRACE_LEAVE();
}

std::shared_ptr<SharePoint::Object> Name::BindObject(SharePoint::Web::BindObjectType type, bool use_bound) {
    TRACE_ENTER();
    if (m_object == nullptr || !use_bound) {
        SetObject(m_session->GetWeb()->AsWeb()->BindObject(m_url, type));
    } else if ((type == SharePoint::Web::BindObjectType::file && m_object->AsFile() == nullptr) ||
               (type == SharePoint::Web::BindObjectType::folder && m_object->AsFolder() == nullptr)) {
        TRACE_LEAVE(L"nullptr");
        return nullptr;
    }
    TRACE_LEAVE(L"{}", Masked(m_url));
    return m_object;
}

ComPtr<Name> Name::GetParent() const {
    TRACE_ENTER();
    if (m_object != nullptr && m_object->AsWeb() != nullptr) {
        TRACE_LEAVE(L"nullptr (this name is Web)");
        return nullptr;
    }
    std::wstring parent_url = GetUrlParent(m_url);
    if (parent_url.empty()) {
        TRACE_LEAVE(L"nullptr (no parent string)");
        return nullptr;
    }
    ComPtr<Name> parent = Make(m_session, std::move(parent_url));
    TRACE_LEAVE(L"name");
    return parent;
}

HRESULT Name::get_FileSys(KOV::IAFS_FileSys** out_file_system) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_file_system != nullptr, E_POINTER);
    *out_file_system = m_session->GetFileSystem().Detach();
    TRACE_RETURN(S_OK);
}
