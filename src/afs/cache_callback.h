#pragma once

/// How the host's local copy of a document is filled from the server and sent back to it.
///
/// HTTP knows only whole files, so reading and writing go strictly in order; anything else is refused with `E_INVALIDARG`. Bodies
/// stream between the connection and the caller's buffer, nothing is held. The host's cache entry owns this object and calls it
/// one call at a time, on any thread; each call waits for the network.

#include <memory>

#include "host/file_cache.h"
#include "host/object_bases.h"
#include "http/transfer.h"

class Name;

class CacheCallback final : public cCoClassUnknownT<KOV::IAFS_FileCacheCallbacks> {
public:
    /// How often an upload is sent again before the demand for that counts as a failure.
    static constexpr DWORD max_retries = 3;

    explicit CacheCallback(Name* name);

    /// The next bytes of the download, which begins at position 0. At the end 0x80070026 with a count of 0; after that, and after
    /// a cancel, position 0 begins a new one.
    HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override;
    /// The next bytes of the upload. A failure ends it, and so does a cancel.
    HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* out_error_details,
                  KOV::IKOV_Flag* cancel_flag) override;
    /// The length of the uploads to come.
    HRESULT SetSize(LONGLONG new_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    /// The length of the server's file, asked anew.
    HRESULT GetSize(LONGLONG* out_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    /// Announces an upload of the size that was set; after 0x800704D5 the same one once more, from position 0.
    HRESULT BeginWrite(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;
    /// Waits for the server's answer. 0x800704D5 means that all has to be sent again from `BeginWrite` on. A cancel no longer
    /// counts when all bytes are written.
    HRESULT EndWrite(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override;

private:
    ~CacheCallback() override;

    void EndDownload() noexcept;
    void EndUpload() noexcept;

    ComPtr<Name> m_name;
    std::unique_ptr<Http::Response> m_read_context;
    std::unique_ptr<Http::Request> m_write_context;
    LONGLONG m_size = 0;
    LONGLONG m_pos = 0;
    DWORD m_retries_left = max_retries;
};
