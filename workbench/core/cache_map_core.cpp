#include "workbench/core/cache_map_core.h"

#include <algorithm>

#include "host/object_bases.h"
#include "platform/bstr.h"
#include "platform/text.h"
#include "workbench/core/cache_map.h"
#include "workbench/core/errors.h"

namespace {

/// Copies that nobody uses any more and that are kept for the next open.
constexpr std::size_t MaxKept = 32;
/// More than any provider wants; its own bound is lower.
constexpr int MaxRounds = 16;

bool IsSameUrl(const std::wstring& url1, const std::wstring& url2) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, url1.c_str(), -1, url2.c_str(), -1) == CSTR_EQUAL;
}

std::wstring TitleOf(const std::wstring& url) { return url.substr(url.find_last_of(L'/') + 1); }

/// An entry as an open file holds it. Its clones share it.
class CacheFile final : public cCoClassUnknownT<KOV::IAFS_FileCache> {
public:
    CacheFile(std::shared_ptr<CacheEntry> entry, std::shared_ptr<CacheMapCore> core)
        : m_entry(std::move(entry)), m_core(std::move(core)) {}

    HRESULT Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details,
                 KOV::IKOV_Flag* cancel_flag) override {
        return m_entry->Read(pos, data, size, out_size_read, out_error_details, cancel_flag);
    }
    HRESULT Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* out_error_details,
                  KOV::IKOV_Flag* cancel_flag) override {
        return m_entry->Write(pos, data, size, out_size_written, out_error_details, cancel_flag);
    }
    HRESULT SetSize(LONGLONG new_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override {
        return m_entry->SetSize(new_size, out_error_details, cancel_flag);
    }
    HRESULT get_Size(LONGLONG* out_size) override {
        if (out_size == nullptr) {
            return E_POINTER;
        }
        *out_size = m_entry->Size();
        return S_OK;
    }
    HRESULT Flush(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) override {
        return m_entry->Flush(out_error_details, cancel_flag);
    }
    HRESULT get_TempFileName(VARIANT* out_path) override {
        if (out_path == nullptr) {
            return E_POINTER;
        }
        return AtBorder(nullptr, [&] {
            VariantInit(out_path);
            Variant path(m_entry->Path());
            path.swap(static_cast<Variant&>(*out_path));
            return S_OK;
        });
    }
    HRESULT ReopenForWrite() override { return m_entry->Reopen(); }
    HRESULT ReopenForRead() override { return m_entry->Reopen(); }

private:
    ~CacheFile() override { m_core->EndUse(m_entry.get()); }

    const std::shared_ptr<CacheEntry> m_entry;
    const std::shared_ptr<CacheMapCore> m_core;
};

} // namespace

CacheMapCore::Dropped::~Dropped() {
    for (const std::shared_ptr<CacheEntry>& entry : entries) {
        entry->DropCallbacks().Release();
    }
}

CacheMapCore::CacheMapCore(std::shared_ptr<CacheFolder> folder, KOV::IAFS_FileSys* provider)
    : m_folder(std::move(folder)), m_provider(provider) {}

std::wstring CacheMapCore::UrlOf(KOV::IAFS_Name* name) const {
    Bstr url;
    const HRESULT result = m_provider.IsNull() ? E_UNEXPECTED : m_provider->NameToString(name, 0, nullptr, &url);
    if (FAILED(result)) {
        throw HostException(result, "A file's name can't be told");
    }
    return url.Text();
}

std::optional<Stamp> CacheMapCore::StampOf(KOV::IAFS_Name* name) const {
    ComPtr<KOV::IAFS_FileInfo> info;
    Stamp stamp;
    ULONGLONG size = 0;
    if (m_provider.IsNull() || FAILED(m_provider->GetFileInfo(name, nullptr, nullptr, &info)) || info.IsNull() ||
        FAILED(info->get_LastWriteTime(&stamp.last_write_time)) || FAILED(info->get_Size(&size))) {
        return std::nullopt;
    }
    stamp.size = static_cast<LONGLONG>(size);
    return stamp;
}

CacheMapCore::Slot* CacheMapCore::Current(const std::wstring& url) {
    const auto found = std::find_if(m_slots.begin(), m_slots.end(),
                                    [&](const Slot& slot) { return slot.is_current && IsSameUrl(slot.entry->Url(), url); });
    return found != m_slots.end() ? &*found : nullptr;
}

ComPtr<KOV::IAFS_FileCache> CacheMapCore::Use(Slot& slot, KOV::IAFS_File* file, KOV::IAFS_Name* name) {
    ComPtr<CacheFile> use = MakeObject<CacheFile>(slot.entry, shared_from_this());
    if (use.IsNull()) {
        throw std::bad_alloc();
    }
    ++slot.users;
    if (file != nullptr) {
        slot.holders.push_back({file, name});
    }
    return use;
}

/// After an upload only the name through which it went tells the new facts, once they were asked for; the one answer that
/// isn't the old one is taken. A server that stored another length has another document than the local copy.
void CacheMapCore::LearnStamp(Slot& slot) const {
    const unsigned uploads = slot.entry->Uploads();
    if (uploads == slot.known_uploads) {
        return;
    }
    if (slot.stamp) {
        slot.old_stamp = std::exchange(slot.stamp, std::nullopt);
    }
    std::optional<Stamp> news;
    const auto ask = [&](KOV::IAFS_Name* name) {
        const std::optional<Stamp> told = name != nullptr ? StampOf(name) : std::nullopt;
        if (!told || told == slot.old_stamp || told == news) {
            return true;
        }
        return !std::exchange(news, told).has_value();
    };
    const bool is_one = ask(slot.name) && std::all_of(slot.holders.begin(), slot.holders.end(),
                                                      [&](const Holder& holder) { return ask(holder.name); });
    if (news && is_one) {
        slot.known_uploads = uploads;
        slot.old_stamp = news;
        slot.stamp = news->size == slot.entry->UploadedSize() ? news : std::nullopt;
    }
}

std::optional<Stamp> CacheMapCore::StampOfEntry(const CacheEntry* entry) {
    const std::scoped_lock hold(m_lock);
    for (Slot& slot : m_slots) {
        if (slot.entry.get() == entry) {
            LearnStamp(slot);
            return slot.stamp;
        }
    }
    return std::nullopt;
}

ComPtr<KOV::IAFS_FileCache> CacheMapCore::Query(KOV::IAFS_Name* name, KOV::IAFS_File* file, DWORD flags) {
    if ((flags & KOV::AFS_OpenFile_CreateAlways) != 0) {
        return {};
    }
    const std::wstring url = UrlOf(name);
    const std::optional<Stamp> stamp = StampOf(name);
    const std::scoped_lock hold(m_lock);
    Slot* const slot = Current(url);
    if (slot == nullptr || !slot->IsLive()) {
        return {};
    }
    LearnStamp(*slot);
    return stamp && slot->stamp == stamp ? Use(*slot, file, name) : ComPtr<KOV::IAFS_FileCache>();
}

std::shared_ptr<CacheEntry> CacheMapCore::MakeEntry(CacheEntry::Source source, std::unique_ptr<LocalCopy> copy) {
    // Known before it is made: the entry asks for the stamp of itself.
    const auto self = std::make_shared<const CacheEntry*>(nullptr);
    source.learn_stamp = [core = weak_from_this(), self]() -> std::optional<Stamp> {
        const auto alive = core.lock();
        return alive ? alive->StampOfEntry(*self) : std::nullopt;
    };
    auto entry = std::make_shared<CacheEntry>(m_folder, std::move(copy), std::move(source));
    *self = entry.get();
    return entry;
}

/// The bytes of a complete copy that nobody uses any more, when the server's file is still the same.
std::unique_ptr<LocalCopy> CacheMapCore::TakeKept(const std::wstring& url, const std::optional<Stamp>& stamp, LONGLONG size) {
    const std::scoped_lock hold(m_lock);
    Slot* const slot = Current(url);
    const bool is_same = slot != nullptr && !slot->IsLive() && stamp && slot->stamp == stamp && slot->entry->Size() == size;
    return is_same && slot->entry->IsComplete() ? slot->entry->TakeCopy() : nullptr;
}

CacheMapCore::Slot& CacheMapCore::AddCurrent(Slot slot) {
    while (Slot* const older = Current(slot.entry->Url())) {
        older->is_current = false;
    }
    return m_slots.emplace_back(std::move(slot));
}

ComPtr<KOV::IAFS_FileCache> CacheMapCore::Create(KOV::IAFS_File* file, KOV::IAFS_FileCacheCallbacks* callbacks, DWORD flags,
                                                 LONGLONG size) {
    ComPtr<KOV::IAFS_Name> name;
    if (const HRESULT result = file->get_Name(&name); FAILED(result)) {
        throw HostException(result, "A file has no name");
    }
    const std::wstring url = UrlOf(name);
    const bool is_new = (flags & KOV::AFS_OpenFile_CreateAlways) != 0;
    size = is_new ? 0 : size;
    const std::optional<Stamp> stamp = is_new ? std::nullopt : StampOf(name);
    std::unique_ptr<LocalCopy> kept = is_new ? nullptr : TakeKept(url, stamp, size);
    const bool is_complete = is_new || kept != nullptr;
    auto entry =
        MakeEntry({url, callbacks, stamp, size, {}}, kept != nullptr ? std::move(kept) : m_folder->MakeCopy(TitleOf(url)));
    if (is_complete) {
        entry->SetComplete();
    }
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    Slot& slot = AddCurrent({std::move(entry), name, stamp});
    ComPtr<KOV::IAFS_FileCache> use = Use(slot, file, name);
    DropUnused(dropped);
    return use;
}

ComPtr<KOV::IAFS_FileCache> CacheMapCore::CreateOnLocalFile(KOV::IAFS_Name* name, KOV::IAFS_FileCacheCallbacks* callbacks,
                                                            const std::wstring& path, bool keep_file) {
    const std::wstring url = UrlOf(name);
    const std::optional<Stamp> stamp = StampOf(name);
    std::int64_t mark = 0;
    auto copy = m_folder->TakeFile(Utf8FromWide(path), keep_file, url, TitleOf(url), stamp, mark);
    const LONGLONG size = copy->Size();
    auto entry = MakeEntry({url, callbacks, stamp, size, {}}, std::move(copy));
    entry->SetUnsaved(mark);
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    Slot& slot = AddCurrent({std::move(entry), name, stamp});
    ComPtr<KOV::IAFS_FileCache> use = Use(slot, nullptr, nullptr);
    DropUnused(dropped);
    return use;
}

HRESULT CacheMapCore::LocalErrorOf(KOV::IAFS_File* file) {
    const std::scoped_lock hold(m_lock);
    for (const Slot& slot : m_slots) {
        for (const Holder& holder : slot.holders) {
            if (holder.file == file && FAILED(slot.entry->LocalError())) {
                return slot.entry->LocalError();
            }
        }
    }
    return S_OK;
}

void CacheMapCore::ReleaseHolder(KOV::IAFS_File* file) {
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    for (Slot& slot : m_slots) {
        // While its name is still there.
        LearnStamp(slot);
        for (Holder& holder : slot.holders) {
            if (holder.file == file) {
                dropped.names.push_back(std::exchange(holder.name, nullptr));
            }
        }
        std::erase_if(slot.holders, [&](const Holder& holder) { return holder.file == file; });
    }
    DropUnused(dropped);
}

void CacheMapCore::EndUse(const CacheEntry* entry) {
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    for (Slot& slot : m_slots) {
        if (slot.entry.get() == entry) {
            --slot.users;
        }
    }
    DropUnused(dropped);
}

/// What nobody uses lets go of its callbacks and its name: they hold the session, which holds this map. Complete bytes of a
/// known state of the server's file stay for the next open.
void CacheMapCore::DropUnused(Dropped& dropped) {
    for (Slot& slot : m_slots) {
        if (slot.IsLive() || slot.name.IsNull()) {
            continue;
        }
        LearnStamp(slot);
        dropped.names.push_back(std::exchange(slot.name, nullptr));
        dropped.entries.push_back(slot.entry);
        if (!slot.entry->IsComplete() || !slot.stamp) {
            slot.is_current = false;
        }
    }
    std::size_t kept = 0;
    for (auto slot = m_slots.rbegin(); slot != m_slots.rend(); ++slot) {
        if (!slot->IsLive() && slot->is_current && ++kept > MaxKept) {
            slot->is_current = false;
        }
    }
    std::erase_if(m_slots, [](const Slot& slot) { return !slot.IsLive() && !slot.is_current; });
}

bool CacheMapCore::Delete(KOV::IAFS_Name* name, bool discard_unsaved) {
    const std::wstring url = UrlOf(name);
    std::shared_ptr<CacheEntry> entry;
    {
        const std::scoped_lock hold(m_lock);
        if (Slot* const slot = Current(url)) {
            entry = slot->entry;
        }
    }
    if (entry == nullptr) {
        return true;
    }
    if (entry->IsUnsaved()) {
        if (!discard_unsaved) {
            return false;
        }
        entry->DiscardUnsaved();
    }
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    for (Slot& slot : m_slots) {
        slot.is_current = slot.is_current && slot.entry != entry;
    }
    DropUnused(dropped);
    return true;
}

HRESULT CacheMapCore::FlushAll(KOV::IString* details, KOV::IKOV_Flag* cancel_flag) {
    std::vector<ComPtr<KOV::IAFS_FileCache>> unsaved;
    {
        const std::scoped_lock hold(m_lock);
        for (Slot& slot : m_slots) {
            // One that an open has superseded would go over the newer document.
            if (slot.is_current && slot.entry->IsUnsaved()) {
                unsaved.push_back(Use(slot, nullptr, nullptr));
            }
        }
    }
    HRESULT first_failure = S_OK;
    for (const ComPtr<KOV::IAFS_FileCache>& cache : unsaved) {
        HRESULT result = RunAgain;
        for (int round = 0; result == RunAgain && round < MaxRounds; ++round) {
            result = cache->Flush(first_failure == S_OK ? details : nullptr, cancel_flag);
        }
        first_failure = first_failure == S_OK ? result : first_failure;
    }
    return first_failure;
}

void CacheMapCore::DropAll() {
    ComPtr<KOV::IAFS_FileSys> provider;
    std::vector<Slot> slots;
    Dropped dropped;
    const std::scoped_lock hold(m_lock);
    provider = std::exchange(m_provider, nullptr);
    slots.swap(m_slots);
    for (const Slot& slot : slots) {
        dropped.entries.push_back(slot.entry);
    }
}

std::shared_ptr<CacheMapCore> MakeCacheMapCore(std::shared_ptr<CacheFolder> folder, KOV::IAFS_FileSys* provider) {
    return std::make_shared<CacheMapCore>(std::move(folder), provider);
}

void DropCacheMap(CacheMapCore& core) { core.DropAll(); }
