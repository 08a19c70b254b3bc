#pragma once

/// Where local copies stand: a folder a program below `cache` of the state folder, and the list of those copies that hold
/// unsaved bytes, in the store. What a program that ended left behind and nobody misses is removed here. Any thread.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include "workbench/core/state_folder.h"
#include "workbench/core/store.h"
#include "workbench/core/unsaved_copies.h"

/// One local copy. The file goes with the object, unless it is to be kept. One call at a time.
class LocalCopy {
public:
    LocalCopy(std::filesystem::path path, FileDescriptor file);
    ~LocalCopy();
    LocalCopy(const LocalCopy&) = delete;
    LocalCopy& operator=(const LocalCopy&) = delete;

    const std::filesystem::path& Path() const noexcept { return m_path; }
    /// Read and written whole, or an exception. A short file is `ERROR_HANDLE_EOF`.
    void Read(LONGLONG pos, void* data, std::size_t size) const;
    void Write(LONGLONG pos, const void* data, std::size_t size);
    void SetSize(LONGLONG size);
    LONGLONG Size() const;
    /// Is the file still the one that stands at the path?
    bool IsInPlace() const;
    void KeepFile(bool keep) noexcept { m_keep_file = keep; }

private:
    const std::filesystem::path m_path;
    FileDescriptor m_file;
    bool m_keep_file = false;
};

class CacheFolder {
public:
    CacheFolder(std::filesystem::path state_folder, std::shared_ptr<Store> store);
    /// The folder goes with the object, unless copies with unsaved bytes are left in it.
    ~CacheFolder();
    CacheFolder(const CacheFolder&) = delete;
    CacheFolder& operator=(const CacheFolder&) = delete;

    /// An empty file of mode 0600. Its name ends in what is harmless in `title`, the extension included.
    std::unique_ptr<LocalCopy> MakeCopy(const std::wstring& title);
    /// A copy with the bytes of a local file, and its mark, which is that of the file when it is an unsaved copy itself. With
    /// `keep_file` it is copied, else moved.
    std::unique_ptr<LocalCopy> TakeFile(const std::filesystem::path& file, bool keep_file, const std::wstring& url,
                                        const std::wstring& title, const std::optional<Stamp>& stamp, std::int64_t& out_mark);

    /// From here on the copy is found again after a crash. Gives the number of its mark.
    std::int64_t MarkUnsaved(const std::wstring& url, const LocalCopy& copy, const std::optional<Stamp>& stamp);
    void SetMarkComplete(std::int64_t mark, bool is_complete);
    /// The copy reached the server, which is remembered for its URL as well.
    void ClearUploaded(std::int64_t mark, const std::wstring& url);
    void ClearMark(std::int64_t mark);
    /// The entry that held the mark is gone: from now on the copy is offered.
    void AbandonMark(std::int64_t mark);

    std::vector<UnsavedCopy> ListUnsaved();
    void DiscardUnsaved(std::int64_t mark);
    bool WasUploaded(const std::wstring& url);
    void ForgetUpload(const std::wstring& url);

    /// Who is told how many bytes of a copy this thread has sent; null for nobody.
    void ObserveUploads(std::function<void(LONGLONG sent)> observer);
    void TellSent(LONGLONG sent);

private:
    std::filesystem::path RelativePath(const std::filesystem::path& file) const;
    std::filesystem::path NewPath(const std::wstring& title);
    std::int64_t InsertMark(const std::wstring& url, const std::filesystem::path& file, const std::optional<Stamp>& stamp,
                            bool is_complete);
    void RemoveLeftovers();
    void RemoveUnmarkedFiles(const std::filesystem::path& folder);
    /// Does a program that runs use this folder?
    bool IsInUse(const std::filesystem::path& folder) const;

    const std::shared_ptr<Store> m_store;
    std::filesystem::path m_root;
    std::filesystem::path m_own;
    FileDescriptor m_own_lock;
    std::mutex m_lock;
    std::set<std::int64_t> m_live_marks;
    std::map<std::thread::id, std::function<void(LONGLONG)>> m_upload_observers;
    std::uint64_t m_last_number = 0;
};
