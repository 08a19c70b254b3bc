#pragma once

/// One local copy of a server's file: filled through the callbacks from 0 upward and only as far as it was asked for, sent back
/// whole by a flush. Any thread; operations that may call back wait for each other, the rest never waits for a server.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/file_cache.h"
#include "workbench/core/cache_folder.h"

class CacheEntry {
public:
    struct Source {
        std::wstring url;
        ComPtr<KOV::IAFS_FileCacheCallbacks> callbacks;
        std::optional<Stamp> stamp;
        LONGLONG size = 0;
        /// The server's stamp as it is after an upload, as far as that is known. Asks no server.
        std::function<std::optional<Stamp>()> learn_stamp;
    };

    /// A copy that is still to be filled.
    CacheEntry(std::shared_ptr<CacheFolder> folder, std::unique_ptr<LocalCopy> copy, Source source);
    ~CacheEntry();
    CacheEntry(const CacheEntry&) = delete;
    CacheEntry& operator=(const CacheEntry&) = delete;

    /// All bytes are there already. Before the entry is given out.
    void SetComplete() noexcept { m_fill = Fill::complete; }
    /// All bytes are there, none is saved, and this is their mark. Before the entry is given out.
    void SetUnsaved(std::int64_t mark) noexcept;

    HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* details, KOV::IKOV_Flag* cancel_flag);
    HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* details,
                  KOV::IKOV_Flag* cancel_flag);
    HRESULT SetSize(LONGLONG new_size, KOV::IString* details, KOV::IKOV_Flag* cancel_flag);
    HRESULT Flush(KOV::IString* details, KOV::IKOV_Flag* cancel_flag);
    HRESULT Reopen();

    const std::wstring& Url() const noexcept { return m_url; }
    std::wstring Path() const;
    LONGLONG Size() const noexcept { return m_size.load(); }
    bool IsUnsaved() const noexcept { return m_is_unsaved.load(); }
    bool IsComplete() const noexcept { return m_fill.load() == Fill::complete; }
    /// Why the local copy can't be trusted, or `S_OK`.
    HRESULT LocalError() const noexcept { return m_local_error.load(); }
    /// How many flushes reached the server; with each of them the server's stamp becomes another.
    unsigned Uploads() const noexcept { return m_uploads.load(); }
    /// How long the file was that the last one sent.
    LONGLONG UploadedSize() const noexcept { return m_uploaded_size.load(); }

    /// The unsaved bytes are given up.
    void DiscardUnsaved();
    /// No call is under way and none comes; the callbacks are the caller's to release, outside all locks.
    [[nodiscard]] ComPtr<KOV::IAFS_FileCacheCallbacks> DropCallbacks();
    /// The file, for another entry; this one is at its end.
    std::unique_ptr<LocalCopy> TakeCopy() noexcept { return std::move(m_copy); }

private:
    enum class Fill {
        part,
        /// The length was reached and the end was seen behind it, or the bytes are the user's own.
        complete,
    };
    struct Call {
        KOV::IString* details;
        KOV::IKOV_Flag* cancel_flag;
    };

    ULONG ReadLocked(LONGLONG pos, char* data, ULONG size, const Call& call);
    ULONG FillInto(char* data, ULONG size, const Call& call);
    void FillTo(LONGLONG end, const Call& call);
    void SeeEnd(const Call& call);
    void AbandonFill() noexcept;
    void MakeComplete(const Call& call);
    void PrepareChange();
    void WriteLocal(LONGLONG pos, const void* data, ULONG size);
    void Upload(const Call& call);
    void SendBytes(const Call& call);
    void DropUpload() noexcept;

    const std::shared_ptr<CacheFolder> m_folder;
    const std::wstring m_url;
    std::mutex m_io;
    std::unique_ptr<LocalCopy> m_copy;
    ComPtr<KOV::IAFS_FileCacheCallbacks> m_callbacks;
    /// The server's file that the bytes began from.
    std::optional<Stamp> m_origin;
    const std::function<std::optional<Stamp>()> m_learn_stamp;
    std::atomic<LONGLONG> m_size;
    LONGLONG m_filled = 0;
    std::atomic<Fill> m_fill = Fill::part;
    std::atomic<bool> m_is_unsaved = false;
    std::atomic<HRESULT> m_local_error = S_OK;
    std::atomic<LONGLONG> m_uploaded_size = 0;
    std::atomic<unsigned> m_uploads = 0;
    LONGLONG m_failed_pos = 0;
    std::int64_t m_mark = 0;
    bool m_mark_is_complete = false;
};
