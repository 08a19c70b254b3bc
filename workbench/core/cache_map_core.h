#pragma once

/// The rules by which a session's local copies are found, shared and dropped. Operations that the module calls under a lock
/// of its own make no call that could wait for a server. Any thread.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/file_cache.h"
#include "host/file_system.h"
#include "workbench/core/cache_entry.h"

class CacheMapCore : public std::enable_shared_from_this<CacheMapCore> {
public:
    CacheMapCore(std::shared_ptr<CacheFolder> folder, KOV::IAFS_FileSys* provider);

    /// `file` becomes a holder of what is found; null looks only.
    ComPtr<KOV::IAFS_FileCache> Query(KOV::IAFS_Name* name, KOV::IAFS_File* file, DWORD flags);
    ComPtr<KOV::IAFS_FileCache> Create(KOV::IAFS_File* file, KOV::IAFS_FileCacheCallbacks* callbacks, DWORD flags, LONGLONG size);
    ComPtr<KOV::IAFS_FileCache> CreateOnLocalFile(KOV::IAFS_Name* name, KOV::IAFS_FileCacheCallbacks* callbacks,
                                                  const std::wstring& path, bool keep_file);
    HRESULT LocalErrorOf(KOV::IAFS_File* file);
    void ReleaseHolder(KOV::IAFS_File* file);
    /// False when unsaved bytes stand in the way.
    bool Delete(KOV::IAFS_Name* name, bool discard_unsaved);
    HRESULT FlushAll(KOV::IString* details, KOV::IKOV_Flag* cancel_flag);
    void DropAll();

    /// An open file let go of an entry that it used.
    void EndUse(const CacheEntry* entry);

private:
    /// Files aren't counted: each gives its hold up before it ends. Its name is where the server's facts are read again.
    struct Holder {
        KOV::IAFS_File* file;
        ComPtr<KOV::IAFS_Name> name;
    };
    struct Slot {
        std::shared_ptr<CacheEntry> entry;
        ComPtr<KOV::IAFS_Name> name;
        std::optional<Stamp> stamp;
        /// What the names said before an upload after which the stamp is still to be learned.
        std::optional<Stamp> old_stamp;
        unsigned known_uploads = 0;
        std::vector<Holder> holders;
        int users = 0;
        /// The one that an open finds; older ones live on with their holders.
        bool is_current = true;

        bool IsLive() const { return !holders.empty() || users > 0 || entry->IsUnsaved(); }
    };
    /// What is taken out under the lock and released after it: a release may end a session, and this map with it.
    struct Dropped {
        ~Dropped();

        std::vector<ComPtr<KOV::IAFS_Name>> names;
        std::vector<std::shared_ptr<CacheEntry>> entries;
    };

    std::wstring UrlOf(KOV::IAFS_Name* name) const;
    std::optional<Stamp> StampOf(KOV::IAFS_Name* name) const;
    ComPtr<KOV::IAFS_FileCache> Use(Slot& slot, KOV::IAFS_File* file, KOV::IAFS_Name* name);
    Slot* Current(const std::wstring& url);
    std::optional<Stamp> StampOfEntry(const CacheEntry* entry);
    void LearnStamp(Slot& slot) const;
    std::shared_ptr<CacheEntry> MakeEntry(CacheEntry::Source source, std::unique_ptr<LocalCopy> copy);
    std::unique_ptr<LocalCopy> TakeKept(const std::wstring& url, const std::optional<Stamp>& stamp, LONGLONG size);
    Slot& AddCurrent(Slot slot);
    void DropUnused(Dropped& dropped);

    const std::shared_ptr<CacheFolder> m_folder;
    ComPtr<KOV::IAFS_FileSys> m_provider;
    std::mutex m_lock;
    std::vector<Slot> m_slots;
};
