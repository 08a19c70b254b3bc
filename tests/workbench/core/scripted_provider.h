#pragma once

// A provider of which the local copies need two answers: what a name is called, and what the server said of its file.

#include "host/cab.h"
#include "host/file_system.h"
#include "host/object_bases.h"
#include "platform/bstr.h"
#include "platform/variant.h"
#include "support/unanswered.h"
#include "workbench/core/unsaved_copies.h"

class ScriptedName final : public cCoClassUnknownT<KOV::IAFS_Name> {
public:
    ScriptedName(std::wstring url, std::optional<Stamp> stamp) : url(std::move(url)), stamp(stamp) {}
    HRESULT get_FileSys(KOV::IAFS_FileSys**) override { return E_NOTIMPL; }

    std::wstring url;
    std::optional<Stamp> stamp;
};

class ScriptedInfo final : public cCoClassDispatchT<KOV::IAFS_FileInfo> {
public:
    explicit ScriptedInfo(Stamp stamp) : m_stamp(stamp) {}
    HRESULT get_Title(BSTR*) override { return E_NOTIMPL; }
    HRESULT get_Attributes(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_Size(ULONGLONG* out_size) override {
        *out_size = static_cast<ULONGLONG>(m_stamp.size);
        return S_OK;
    }
    HRESULT get_CreationTime(ULONGLONG*) override { return E_NOTIMPL; }
    HRESULT get_LastAccessTime(ULONGLONG*) override { return E_NOTIMPL; }
    HRESULT get_LastWriteTime(ULONGLONG* out_time) override {
        *out_time = m_stamp.last_write_time;
        return S_OK;
    }
    HRESULT get_Prop(LPCWSTR, VARIANT*) override { return E_NOTIMPL; }

private:
    const Stamp m_stamp;
};

/// A place as the provider keeps it: its URL and user in a cab.
class ScriptedAccount final : public cCoClassDispatchT<KOV::IAFS_AccountData> {
public:
    explicit ScriptedAccount(std::wstring url, std::wstring user = {}) : url(std::move(url)), user(std::move(user)) {}
    static constexpr std::string_view schema = "<CabTemplate><ItemSet id='T'><Item id='Url' type='String'/>"
                                               "<Item id='User' type='String'/></ItemSet>"
                                               "<Root id='A' type='Dictionary' itemSet='T'/></CabTemplate>";

    HRESULT get_URL(BSTR* o_url) override {
        *o_url = Bstr(std::wstring_view(url)).Detach();
        return S_OK;
    }
    HRESULT get_UserName(BSTR* o_user_name) override {
        *o_user_name = Bstr(std::wstring_view(user)).Detach();
        return S_OK;
    }
    HRESULT SaveTo(KOV::IAUX_Cab* o_cab) override {
        const HRESULT result = o_cab->SetTemplate2(schema.data(), static_cast<ULONG>(schema.size()), L"A");
        if (SUCCEEDED(result)) {
            Item(o_cab, L"Url")->put_String(url.c_str());
            Item(o_cab, L"User")->put_String(user.c_str());
        }
        return refuses_to_save ? E_FAIL : result;
    }
    HRESULT VerifyURL(LPCWSTR i_url, LONG* o_result) override {
        const std::wstring_view wanted = i_url;
        *o_result = !user.empty() && wanted.starts_with(user + L"@" + url) ? 2 : wanted.find(url) != wanted.npos ? 1 : 0;
        return S_OK;
    }
    HRESULT Reserved5(IUnknown**) override { return E_NOTIMPL; }
    HRESULT Reserved6(IUnknown**) override { return E_NOTIMPL; }
    HRESULT Reserved7(IUnknown**) override { return E_NOTIMPL; }

    static ComPtr<KOV::IAUX_CabItem> Item(KOV::IAUX_Cab* cab, std::wstring_view key) {
        const Variant name(key);
        ComPtr<KOV::IAUX_CabItem> item;
        cab->GetItem(&name, &item);
        return item;
    }

    std::wstring url;
    std::wstring user;
    bool refuses_to_save = false;
};

class ScriptedProvider final : public UnansweredFileSys {
public:
    HRESULT NameToString(KOV::IAFS_Name* name, DWORD, KOV::IAFS_Name*, BSTR* out_name) override {
        *out_name = Bstr(std::wstring_view(static_cast<ScriptedName*>(name)->url)).Detach();
        return S_OK;
    }
    HRESULT GetFileInfo(KOV::IAFS_Name* name, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_FileInfo** out_file_info) override {
        const auto& stamp = static_cast<ScriptedName*>(name)->stamp;
        *out_file_info = stamp ? MakeObject<ScriptedInfo>(*stamp).Detach() : nullptr;
        return stamp ? S_OK : E_FAIL;
    }
    HRESULT CreateAccount(LPCWSTR, KOV::IAUX_Cab* i_source_cab, DWORD, DWORD, DWORD,
                          KOV::IAFS_AccountData** o_account_data) override {
        Bstr url;
        Bstr user;
        ScriptedAccount::Item(i_source_cab, L"Url")->get_String(&url);
        ScriptedAccount::Item(i_source_cab, L"User")->get_String(&user);
        *o_account_data = MakeObject<ScriptedAccount>(url.Text(), user.Text()).Detach();
        return S_OK;
    }
};

/// A file that is open: for the map a name and an address.
class ScriptedFile final : public cCoClassUnknownT<KOV::IAFS_File> {
public:
    explicit ScriptedFile(KOV::IAFS_Name* name) : m_name(name) {}
    HRESULT get_Name(KOV::IAFS_Name** out_name) override {
        m_name.CopyTo(out_name);
        return S_OK;
    }
    HRESULT get_OpenFlags(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_IoMode(DWORD*) override { return E_NOTIMPL; }
    HRESULT Clone(KOV::IAFS_File**) override { return E_NOTIMPL; }
    HRESULT IsCloneOf(KOV::IAFS_File*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT Read(void*, ULONG, ULONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Write(const void*, ULONG, ULONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT SetPos(LONGLONG, DWORD, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT GetPos(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT SetSize(LONGLONG, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetSize(LONGLONG*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Flush(KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT Reopen(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetStream(IStream**) override { return E_NOTIMPL; }
    HRESULT Close(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT get_Prop(LPCWSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT put_Prop(LPCWSTR, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT Exec(LPCWSTR, const VARIANT*, VARIANT*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }

private:
    ComPtr<KOV::IAFS_Name> m_name;
};
