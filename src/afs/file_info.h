#pragma once

#include "afs/name.h"
#include "host/object_bases.h"

/// Facts about one location, read through its bound name: no getter asks the server. Any thread, one at a time on a name.
class FileInfo : public cCoClassDispatchT<KOV::IAFS_FileInfo> {
public:
    /// Binds the name. Throws HResultException 0x80070490 when nothing is there, else as `Name::BindObject`.
    explicit FileInfo(ComPtr<Name> name);

    /// Also without memory for the text `*out_title` is written: null then, with `E_OUTOFMEMORY`.
    HRESULT get_Title(BSTR* out_title) override;
    HRESULT get_Attributes(DWORD* out_attributes) override;
    /// In bytes; `E_INVALIDARG` for a folder.
    HRESULT get_Size(ULONGLONG* out_size) override;
    HRESULT get_CreationTime(ULONGLONG* out_time) override;
    /// Servers keep none: the same as `get_LastWriteTime`.
    HRESULT get_LastAccessTime(ULONGLONG* out_time) override;
    HRESULT get_LastWriteTime(ULONGLONG* out_time) override;
    HRESULT get_Prop(LPCWSTR name, VARIANT* out_value) override;

protected:
    ~FileInfo() override = default;

    ComPtr<Name> m_name;

private:
    const SharePoint::Information& GetInformation() const { return m_name->GetObject()->m_information; }
};
