#pragma once

#include "host/flag.h"
#include "host/string.h"
#include "platform/variant.h"

namespace KOV {

struct IAFS_Name;

constexpr DWORD AFS_OpenFile_Read = 0x1;
constexpr DWORD AFS_OpenFile_Write = 0x2;
constexpr DWORD AFS_OpenFile_CreateNew = 0x4;
constexpr DWORD AFS_OpenFile_CreateAlways = 0x8;
constexpr DWORD AFS_OpenFile_OpenExisting = 0x10;
constexpr DWORD AFS_OpenFile_OpenAlways = 0x20;
constexpr DWORD AFS_OpenFile_CheckOut = 0x2000;
constexpr DWORD AFS_OpenFile_AllowUI = 0x4000;

constexpr DWORD AFS_CloseFile_AllowUI = 0x1;
constexpr DWORD AFS_CloseFile_CheckIn = 0x2;
constexpr DWORD AFS_CloseFile_DiscardCheckOut = 0x4;

/// An open file. Positions and sizes are in bytes. One operation at a time on one object; a concurrent reader takes a clone.
struct IAFS_File : IUnknown {
    virtual HRESULT get_Name(IAFS_Name** out_name) = 0;
    virtual HRESULT get_OpenFlags(DWORD* out_open_flags) = 0;
    virtual HRESULT get_IoMode(DWORD* out_io_mode) = 0;
    virtual HRESULT Clone(IAFS_File** out_clone) = 0;
    virtual HRESULT IsCloneOf(IAFS_File* file, VARIANT_BOOL* out_is_clone) = 0;
    virtual HRESULT Read(void* data, ULONG size, ULONG* out_size_read, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Write(const void* data, ULONG size, ULONG* out_size_written, IString* out_error_details,
                          IKOV_Flag* cancel_flag) = 0;
    /// `origin`: 0 from the start, 1 from the position, 2 from the end.
    virtual HRESULT SetPos(LONGLONG offset, DWORD origin, LONGLONG* out_pos) = 0;
    virtual HRESULT GetPos(LONGLONG* out_pos) = 0;
    virtual HRESULT SetSize(LONGLONG new_size, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT GetSize(LONGLONG* out_size, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Flush(IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Reopen(DWORD new_open_flags, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT GetStream(IStream** o_stream) = 0;
    virtual HRESULT Close(DWORD flags, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT get_Prop(LPCWSTR name, VARIANT* out_value) = 0;
    virtual HRESULT put_Prop(LPCWSTR name, const VARIANT* value) = 0;
    virtual HRESULT Exec(LPCWSTR command, const VARIANT* data, VARIANT* out_result, IString* out_error_details,
                         IKOV_Flag* cancel_flag) = 0;

protected:
    ~IAFS_File() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAFS_File, "{A0EFB5D6-9DC8-49E3-9F6C-9BBCEA4EA1AE}");
