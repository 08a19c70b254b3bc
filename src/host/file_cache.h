#pragma once

/// The host's local copies of remote files. Positions and sizes are in bytes.

#include "host/file.h"

namespace KOV {

/// How a copy is filled and sent back; implemented by the provider, called one call at a time, strictly in order.
struct IAFS_FileCacheCallbacks : IUnknown {
    /// 0x80070026 with a count of 0 at the end of the file.
    virtual HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, IString* out_error_details,
                         IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, IString* out_error_details,
                          IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT SetSize(LONGLONG new_size, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT GetSize(LONGLONG* out_size, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT BeginWrite(IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT EndWrite(IString* out_error_details, IKOV_Flag* cancel_flag) = 0;

protected:
    ~IAFS_FileCacheCallbacks() = default;
};

/// One local copy.
struct IAFS_FileCache : IUnknown {
    virtual HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, IString* out_error_details,
                         IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, IString* out_error_details,
                          IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT SetSize(LONGLONG new_size, IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    virtual HRESULT get_Size(LONGLONG* out_size) = 0;
    /// Sends a changed copy back through the callbacks and passes their result on, 0x800704D5 (run again) included.
    virtual HRESULT Flush(IString* out_error_details, IKOV_Flag* cancel_flag) = 0;
    /// A `VT_BSTR` with the path of the local copy.
    virtual HRESULT get_TempFileName(VARIANT* out_path) = 0;
    virtual HRESULT ReopenForWrite() = 0;
    virtual HRESULT ReopenForRead() = 0;

protected:
    ~IAFS_FileCache() = default;
};

/// The copies of one session.
struct IAFS_FileCachesMap : IUnknown {
    /// The entry of a name for these open flags; null with success when there is none.
    virtual HRESULT QueryCache(IAFS_Name* name, DWORD flags, IAFS_FileCache** out_cache) = 0;
    /// A new entry; `size` is the length of the server's file.
    virtual HRESULT CreateCacheEntry(IAFS_File* file, IAFS_FileCacheCallbacks* callbacks, DWORD flags, LONGLONG size,
                                     IUnknown* reserved1, IUnknown* reserved2, IUnknown* reserved3,
                                     IAFS_FileCache** out_cache) = 0;
    /// May this open go on with the new flags?
    virtual HRESULT CheckForReopenFile(IAFS_File* file, DWORD new_open_flags) = 0;
    /// The file gives up its hold on its entry.
    virtual HRESULT ReleaseCacheEntry(IAFS_File* file, DWORD reserved) = 0;
    /// Removes the entry of a name. Mode 0 discards unsaved bytes, others refuse them with `S_FALSE`.
    virtual HRESULT DeleteEntryEx(IAFS_Name* name, DWORD mode) = 0;
    /// A complete, unsaved entry out of a local file, which is copied with `keep_file` and moved without.
    virtual HRESULT CreateCacheEntryOnLocalFile(IAFS_Name* name, DWORD reserved1, IAFS_FileCacheCallbacks* callbacks, DWORD flags,
                                                LPCWSTR local_path, DWORD reserved2, DWORD reserved3, VARIANT_BOOL keep_file,
                                                IAFS_FileCache** out_cache) = 0;
    /// Writes all unsaved entries back.
    virtual HRESULT FlushAllCaches(IString* out_error_details, IKOV_Flag* cancel_flag, VARIANT_BOOL reserved) = 0;

protected:
    ~IAFS_FileCachesMap() = default;
};

/// The extended interface of the same object: the entry of an open file.
struct IAFS_FileCachesMapEx : IUnknown {
    virtual HRESULT QueryCache(IAFS_File* file, DWORD flags, IAFS_FileCache** out_cache) = 0;

protected:
    ~IAFS_FileCachesMapEx() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAFS_FileCacheCallbacks, "{66515739-B4A8-410D-96DF-B7296DEF49FA}");
KOV_INTERFACE_ID(KOV::IAFS_FileCache, "{15CECB5D-D961-4E21-AE5D-01454E596E26}");
KOV_INTERFACE_ID(KOV::IAFS_FileCachesMap, "{81D2B2E7-DF2E-4FAF-B51D-D6742DA31517}");
KOV_INTERFACE_ID(KOV::IAFS_FileCachesMapEx, "{F12CF342-C1CD-49C2-BBE6-7ED897B8C127}");
