#pragma once

// Items of a folder that exist nowhere: for rules about what items tell, in any number.

#include <string>

#include "dialog/folder_item.h"
#include "host/object_bases.h"
#include "platform/bstr.h"

struct ItemFacts {
    std::wstring title;
    bool is_folder = false;
    ULONGLONG size = 0;
    ULONGLONG creation_time = 0;
    ULONGLONG last_write_time = 0;
    HRESULT title_result = S_OK;
};

class NamedItemName final : public cCoClassUnknownT<KOV::IAFS_Name> {
public:
    explicit NamedItemName(std::wstring address) : address(std::move(address)) {}
    HRESULT get_FileSys(KOV::IAFS_FileSys**) override { return E_NOTIMPL; }

    const std::wstring address;
};

class NamedItemInfo final : public cCoClassDispatchT<KOV::IAFS_EnumFolderItem> {
public:
    explicit NamedItemInfo(ItemFacts facts) : m_facts(std::move(facts)) {}

    HRESULT get_Name(KOV::IAFS_Name** out_name) override {
        ComPtr<KOV::IAFS_Name>(m_name).CopyTo(out_name);
        return S_OK;
    }
    HRESULT get_Title(BSTR* out_title) override {
        *out_title = FAILED(m_facts.title_result) ? nullptr : SysAllocString(m_facts.title.c_str());
        return m_facts.title_result;
    }
    HRESULT get_Attributes(DWORD* out_attributes) override {
        *out_attributes = m_facts.is_folder ? DWORD{KOV::AFS_FileAttribute_Folder} : 0;
        return S_OK;
    }
    HRESULT get_Size(ULONGLONG* out_size) override {
        *out_size = m_facts.size;
        return m_facts.is_folder ? E_INVALIDARG : S_OK;
    }
    HRESULT get_CreationTime(ULONGLONG* out_time) override {
        *out_time = m_facts.creation_time;
        return S_OK;
    }
    HRESULT get_LastAccessTime(ULONGLONG* out_time) override { return get_LastWriteTime(out_time); }
    HRESULT get_LastWriteTime(ULONGLONG* out_time) override {
        *out_time = m_facts.last_write_time;
        return S_OK;
    }
    HRESULT get_Prop(LPCWSTR, VARIANT*) override { return E_NOTIMPL; }

private:
    const ItemFacts m_facts;

public:
    const ComPtr<NamedItemName> m_name = MakeObject<NamedItemName>(L"https://server/site/Docs/" + m_facts.title);
};

inline FolderItem NamedItem(ItemFacts facts) {
    const ComPtr<NamedItemInfo> info = MakeObject<NamedItemInfo>(std::move(facts));
    return {info->m_name, info};
}
inline FolderItem NamedItem(const wchar_t* title) { return NamedItem(ItemFacts{.title = title}); }
