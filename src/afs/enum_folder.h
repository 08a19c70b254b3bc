#pragma once

#include <memory>
#include <vector>

#include "afs/file_info.h"
#include "afs/name.h"
#include "host/object_bases.h"

/// The items of one folder, as the server listed them when the object was made, in its order, all of them. No lock: one
/// caller at a time. No operation asks the server again.
class EnumFolder final : public cCoClassDispatchT<KOV::IAFS_EnumFolder> {
public:
    /// Lists the folder with one request, and one more when the name is unbound. Throws Exception when the name isn't a
    /// folder's, else as the server layer does.
    explicit EnumFolder(ComPtr<Name> name);

    HRESULT get_Name(KOV::IAFS_Name** out_name) override;
    /// An item that fails comes again at the next call.
    HRESULT Next(KOV::IAFS_EnumFolderItem** out_enum_item) override;
    HRESULT Reset(DWORD reserved, KOV::IKOV_Flag* cancel_flag) override;

private:
    ~EnumFolder() override = default;

    ComPtr<Name> m_name;
    std::vector<std::shared_ptr<SharePoint::Object>> m_objects;
    std::vector<std::shared_ptr<SharePoint::Object>>::const_iterator m_current;
};

/// One item of a folder: the facts of `FileInfo`, and its name.
class EnumFolderItem final : public KOV::IAFS_EnumFolderItem, public FileInfo {
public:
    using FileInfo::FileInfo;

    // The one object answers in both roles.
    HRESULT QueryInterface(REFIID id, void** out_object) override { return FileInfo::QueryInterface(id, out_object); }
    ULONG AddRef() override { return FileInfo::AddRef(); }
    ULONG Release() override { return FileInfo::Release(); }
    HRESULT GetTypeInfoCount(UINT* out_count) override { return FileInfo::GetTypeInfoCount(out_count); }
    HRESULT GetTypeInfo(UINT index, DWORD locale, IUnknown** out_info) override {
        return FileInfo::GetTypeInfo(index, locale, out_info);
    }
    HRESULT GetIDsOfNames(REFIID reserved, LPWSTR* names, UINT count, DWORD locale, LONG* out_ids) override {
        return FileInfo::GetIDsOfNames(reserved, names, count, locale, out_ids);
    }
    HRESULT Invoke(LONG id, REFIID reserved, DWORD locale, WORD flags, void* parameters, VARIANT* out_result, void* exception,
                   UINT* out_argument) override {
        return FileInfo::Invoke(id, reserved, locale, flags, parameters, out_result, exception, out_argument);
    }
    HRESULT get_Title(BSTR* out_title) override { return FileInfo::get_Title(out_title); }
    HRESULT get_Attributes(DWORD* out_attributes) override { return FileInfo::get_Attributes(out_attributes); }
    HRESULT get_Size(ULONGLONG* out_size) override { return FileInfo::get_Size(out_size); }
    HRESULT get_CreationTime(ULONGLONG* out_time) override { return FileInfo::get_CreationTime(out_time); }
    HRESULT get_LastAccessTime(ULONGLONG* out_time) override { return FileInfo::get_LastAccessTime(out_time); }
    HRESULT get_LastWriteTime(ULONGLONG* out_time) override { return FileInfo::get_LastWriteTime(out_time); }
    HRESULT get_Prop(LPCWSTR name, VARIANT* out_value) override { return FileInfo::get_Prop(name, out_value); }

    HRESULT get_Name(KOV::IAFS_Name** out_name) override;

private:
    ~EnumFolderItem() override = default;

    void* Find(REFIID id) noexcept override;
};
