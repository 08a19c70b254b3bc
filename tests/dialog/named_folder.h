#pragma once

// A provider of one folder that exists nowhere.

#include <algorithm>
#include <vector>

#include "dialog/named_item.h"
#include "support/unanswered.h"

class NamedEnumFolder final : public cCoClassDispatchT<KOV::IAFS_EnumFolder> {
public:
    explicit NamedEnumFolder(const std::vector<ComPtr<NamedItemInfo>>& items) : m_items(items) {}

    HRESULT get_Name(KOV::IAFS_Name**) override { return E_NOTIMPL; }
    HRESULT Next(KOV::IAFS_EnumFolderItem** out_enum_item) override {
        *out_enum_item = m_next < m_items.size() ? ComPtr<KOV::IAFS_EnumFolderItem>(m_items[m_next++]).Detach() : nullptr;
        return *out_enum_item == nullptr ? S_FALSE : S_OK;
    }
    HRESULT Reset(DWORD, KOV::IKOV_Flag*) override { return E_NOTIMPL; }

private:
    const std::vector<ComPtr<NamedItemInfo>> m_items;
    std::size_t m_next = 0;
};

class NamedFolder : public UnansweredFileSys {
public:
    HRESULT NameToString(KOV::IAFS_Name* name, DWORD, KOV::IAFS_Name*, BSTR* out_name) override {
        *out_name = name == nullptr ? nullptr : SysAllocString(static_cast<NamedItemName*>(name)->address.c_str());
        return name == nullptr ? E_INVALIDARG : S_OK;
    }
    HRESULT NamesAreEqual(KOV::IAFS_Name* name1, KOV::IAFS_Name* name2, VARIANT_BOOL* out_are_equal) override {
        *out_are_equal = name1 == name2 ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    HRESULT NameGetParent(KOV::IAFS_Name*, KOV::IAFS_Name** out_parent) override {
        *out_parent = nullptr;
        return S_OK;
    }
    HRESULT GetFileInfo(KOV::IAFS_Name* name, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_FileInfo** out_file_info) override {
        *out_file_info = nullptr;
        if (name == folder->m_name.Get()) {
            ComPtr<KOV::IAFS_FileInfo>(folder).CopyTo(out_file_info);
            return S_OK;
        }
        const auto found = std::find_if(items.begin(), items.end(), [&](const auto& item) { return item->m_name.Get() == name; });
        if (found == items.end()) {
            return E_INVALIDARG;
        }
        ComPtr<KOV::IAFS_FileInfo>(*found).CopyTo(out_file_info);
        return S_OK;
    }
    HRESULT EnumFolder(KOV::IAFS_Name*, KOV::IString*, KOV::IKOV_Flag*, KOV::IAFS_EnumFolder** out_enum) override {
        *out_enum = MakeObject<NamedEnumFolder>(items).Detach();
        return S_OK;
    }
    HRESULT get_Icon(KOV::IKOV_MultiSizeImage** out_icon) override {
        *out_icon = nullptr;
        return S_OK;
    }

    const ComPtr<NamedItemInfo> folder = MakeObject<NamedItemInfo>(ItemFacts{.title = L"Docs", .is_folder = true});
    std::vector<ComPtr<NamedItemInfo>> items;
};
