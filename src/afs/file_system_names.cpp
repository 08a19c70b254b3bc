// Names into texts, texts into names, and how names relate. Only a full test and the question whether an unbound name lies in
// its parent's web ask a server.

#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "http/sign_in/sharepoint_checker.h"
#include "url/compare_urls.h"

namespace {

/// How the location `string` relates to the parent's. A relative path has no URL of its own; it lies below the parent.
CompareUrlsResult CompareStringWithUrl(LPCWSTR string, const std::wstring& parent_url) {
    try {
        const std::wstring absolute = Name::GetAbsoluteUrl(string);
        return CompareUrls(absolute.c_str(), parent_url.c_str());
    } catch (...) {
        return CompareUrlsResult::url2_is_parent;
    }
}

} // namespace

HRESULT FileSystem::StringToName(LPCWSTR string, DWORD flags, KOV::IAFS_Name* parent, KOV::IAFS_Name** out_name) {
    TRACE_ENTER(L"flags={}", flags);
    INTERFACE_TRY
    if (out_name != nullptr) {
        *out_name = nullptr;
    }
    CHECK_OR_RETURN(string != nullptr, E_INVALIDARG);
    if (Bits::Has(flags, KOV::AFS_String2Name_FullTest)) {
        if (!Utility::SharepointChecker::IsSharePoint(string)) {
            TRACE_FORMAT(LogLevel::warning, L"AFS_String2Name_FullTest with flags={} failed - not SharePoint path '{}'", flags,
                         Masked(string));
            CHECK_OR_RETURN(E_INVALIDARG);
        }
    } else if (Bits::Has(flags, KOV::AFS_String2Name_Test)) {
        TRACE_FORMAT(LogLevel::warning, L"AFS_String2Name_Test with flags={} and path='{}' always fails", flags, Masked(string));
        CHECK_OR_RETURN(E_INVALIDARG);
    } else if ((flags & ~DWORD{1}) == 0) {
        CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
        if (parent == nullptr) {
            TRACE_FORMAT(LogLevel::warning, L"parent=0, flags={}, path='{}' - fail", flags, Masked(string));
            CHECK_OR_RETURN(E_INVALIDARG);
        }
        ComPtr<Name> local_parent = GetName(parent);
        CHECK_OR_RETURN(local_parent != nullptr, E_INVALIDARG);
        const CompareUrlsResult compare_string_with_others_url_result = CompareStringWithUrl(string, local_parent->GetUrl());
        CHECK_OR_RETURN(compare_string_with_others_url_result != CompareUrlsResult::error, E_INVALIDARG);
        *out_name = compare_string_with_others_url_result == CompareUrlsResult::equal
                        ? local_parent.Detach()
                        : Name::Create(string, local_parent).Detach();
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FileSystem::NameToString(KOV::IAFS_Name* name, DWORD flags, KOV::IAFS_Name* parent, BSTR* out_name) {
    TRACE_ENTER(L"flags={}", flags);
    INTERFACE_TRY
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    const ComPtr<Name> local_parent = GetName(parent);
    CHECK_OR_RETURN(parent == nullptr || local_parent != nullptr, E_INVALIDARG);
    std::wstring string;
    if (!local_parent.IsNull()) {
        CHECK_OR_RETURN(CompareUrls(local_parent->GetUrl().c_str(), local_name->GetUrl().c_str(), &string) ==
                            CompareUrlsResult::url1_is_parent,
                        E_INVALIDARG);
    } else if (Bits::Has(flags, KOV::AFS_Name2String_WebRelative)) {
        const std::wstring web_url =
            local_name->GetSession()->GetPath() + L"/" + local_name->GetSession()->GetWeb()->m_information.m_path;
        CHECK_OR_RETURN(CompareUrls(web_url.c_str(), local_name->GetUrl().c_str(), &string) == CompareUrlsResult::url1_is_parent,
                        E_INVALIDARG);
    } else {
        string = local_name->GetUrl();
    }
    if (string.ends_with(L'/')) {
        string.pop_back();
    }
    *out_name = SysAllocString(string.c_str());
    CHECK_OR_RETURN(*out_name != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FileSystem::NameGetParent(KOV::IAFS_Name* name, KOV::IAFS_Name** out_parent) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_parent != nullptr, E_POINTER);
    *out_parent = nullptr;
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    *out_parent = local_name->GetParent().Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT FileSystem::NameIsChildOf(KOV::IAFS_Name* name, KOV::IAFS_Name* parent, VARIANT_BOOL* out_is_child) {
    TRACE_ENTER();
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_is_child != nullptr, E_POINTER);
    *out_is_child = VARIANT_FALSE;
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    const ComPtr<Name> local_parent = GetName(parent);
    CHECK_OR_RETURN(parent == nullptr || local_parent != nullptr, E_INVALIDARG);
    if (!local_parent.IsNull() &&
        CompareUrls(local_parent->GetUrl().c_str(), local_name->GetUrl().c_str()) == CompareUrlsResult::url1_is_parent &&
        IsInWebOf(*local_name, *local_parent)) {
        *out_is_child = VARIANT_TRUE;
    }
    TRACE_RETURN(S_OK);
}

// A URL below the parent's may still lead into a web of its own, which the parent's session can't reach.
bool FileSystem::IsInWebOf(Name& name, const Name& parent) noexcept {
    const std::shared_ptr<SharePoint::Web> web = parent.GetSession()->GetWeb()->AsWeb();
    if (const std::shared_ptr<SharePoint::Object> bound = name.GetObject(); bound != nullptr) {
        return bound->GetWeb() == web;
    }
    try {
        if (const auto object = web->BindObject(name.GetUrl(), SharePoint::Web::BindObjectType::any); object != nullptr) {
            name.SetObject(object);
            return true;
        }
    } catch (...) {
        // What can't be bound there isn't there.
        TRACE_FORMAT(LogLevel::information, L"'{}' isn't in the parent's web", Masked(name.GetUrl()));
    }
    return false;
}

HRESULT FileSystem::NamesAreEqual(KOV::IAFS_Name* name1, KOV::IAFS_Name* name2, VARIANT_BOOL* out_are_equal) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_are_equal != nullptr, E_POINTER);
    if (name1 == name2 || name1 == nullptr || name2 == nullptr) {
        *out_are_equal = name1 == name2 ? VARIANT_TRUE : VARIANT_FALSE;
        TRACE_RETURN(S_OK);
    }
    const ComPtr<Name> local_name1 = GetName(name1);
    CHECK_OR_RETURN(local_name1 != nullptr, E_INVALIDARG);
    const ComPtr<Name> local_name2 = GetName(name2);
    CHECK_OR_RETURN(local_name2 != nullptr, E_INVALIDARG);
    const CompareUrlsResult result = CompareUrls(local_name1->GetUrl().c_str(), local_name2->GetUrl().c_str());
    *out_are_equal = result == CompareUrlsResult::equal ? VARIANT_TRUE : VARIANT_FALSE;
    TRACE_RETURN(S_OK);
}
