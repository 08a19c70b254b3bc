#include "workbench/core/cache_folder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* LockName = "lock";
constexpr std::size_t MaxNameLength = 120;

bool IsHarmless(wchar_t c) {
    constexpr std::wstring_view refused = L"/\\:*?\"<>|";
    return c >= 0x20 && c != 0x7F && (c < 0x80 || c >= 0xA0) && !(c >= 0xD800 && c < 0xE000) && c <= 0x10FFFF &&
           refused.find(c) == std::wstring_view::npos;
}

/// The title as the end of a file name: what could mean something to a shell, a terminal or the file system is replaced, and
/// what is too long loses its middle, so that the extension stays.
std::string HarmlessName(const std::wstring& title) {
    std::wstring name = title;
    std::replace_if(
        name.begin(), name.end(), [](wchar_t c) { return !IsHarmless(c); }, L'_');
    while (Utf8FromWide(name).size() > MaxNameLength) {
        name.erase(name.size() / 2, 1);
    }
    return Utf8FromWide(name);
}

void CopyBytes(const fs::path& from, LocalCopy& to) {
    const FileDescriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC));
    if (!source.IsOpen()) {
        ThrowErrno("Can't open the file", from, errno);
    }
    std::vector<char> buffer(std::size_t{1} << 18);
    LONGLONG pos = 0;
    for (;;) {
        const ssize_t count = read(source.Get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            ThrowErrno("Can't read the file", from, errno);
        }
        if (count == 0) {
            return;
        }
        to.Write(pos, buffer.data(), static_cast<std::size_t>(count));
        pos += count;
    }
}

} // namespace

CacheFolder::CacheFolder(fs::path state_folder, std::shared_ptr<Store> store) : m_store(std::move(store)) {
    m_root = MakePrivateFolder(state_folder / "cache");
    // Nobody may take a new folder for a left one before its own lock stands.
    const FileDescriptor root_lock = OpenPrivateFile(m_root / LockName, O_RDWR | O_CREAT);
    LockFile(root_lock, true);
    std::string own = (m_root / "XXXXXX").string();
    if (mkdtemp(own.data()) == nullptr) {
        ThrowErrno("Can't make a folder for local copies in", m_root, errno);
    }
    m_own = own;
    m_own_lock = OpenPrivateFile(m_own / LockName, O_RDWR | O_CREAT);
    LockFile(m_own_lock, false);
    RemoveLeftovers();
}

CacheFolder::~CacheFolder() {
    m_own_lock.Close();
    std::error_code error;
    // What is left besides the lock are unsaved copies; a later start finds them.
    if (std::distance(fs::directory_iterator(m_own, error), fs::directory_iterator()) == 1) {
        fs::remove(m_own / LockName, error);
        fs::remove(m_own, error);
    }
}

fs::path CacheFolder::RelativePath(const fs::path& file) const { return file.lexically_relative(m_root); }

fs::path CacheFolder::NewPath(const std::wstring& title) {
    const std::scoped_lock hold(m_lock);
    return m_own / (std::to_string(++m_last_number) + "-" + HarmlessName(title));
}

std::unique_ptr<LocalCopy> CacheFolder::MakeCopy(const std::wstring& title) {
    const fs::path path = NewPath(title);
    return std::make_unique<LocalCopy>(path, OpenPrivateFile(path, O_RDWR | O_CREAT | O_EXCL));
}

std::unique_ptr<LocalCopy> CacheFolder::TakeFile(const fs::path& file, bool keep_file, const std::wstring& url,
                                                 const std::wstring& title, const std::optional<Stamp>& stamp,
                                                 std::int64_t& out_mark) {
    const fs::path path = NewPath(title);
    // The old name goes last, so that the bytes have a mark at every moment. A file elsewhere, or one with other rights than
    // a local copy has, is copied instead.
    const fs::path source = fs::absolute(file).lexically_normal();
    const bool is_ours = !keep_file && RelativePath(source).native().find("..") != 0;
    std::unique_ptr<LocalCopy> copy;
    if (is_ours && link(source.c_str(), path.c_str()) == 0) {
        copy = std::make_unique<LocalCopy>(path, OpenPrivateFile(path, O_RDWR));
    } else {
        copy = std::make_unique<LocalCopy>(path, OpenPrivateFile(path, O_RDWR | O_CREAT | O_EXCL));
        CopyBytes(source, *copy);
    }
    {
        Store::Transaction transaction(*m_store);
        out_mark = InsertMark(url, path, stamp, true);
        if (!keep_file) {
            Store::Query(*m_store, "DELETE FROM unsaved WHERE path=?1")
                .Bind(1, WideFromUtf8(RelativePath(source).string()))
                .Run();
        }
        transaction.Commit();
    }
    copy->KeepFile(true);
    if (!keep_file) {
        unlink(source.c_str());
    }
    return copy;
}

std::int64_t CacheFolder::InsertMark(const std::wstring& url, const fs::path& file, const std::optional<Stamp>& stamp,
                                     bool is_complete) {
    Store::Transaction transaction(*m_store);
    {
        Store::Query query(*m_store,
                           "INSERT INTO unsaved(url, path, server_time, server_size, is_complete) VALUES(?1,?2,?3,?4,?5)");
        query.Bind(1, url).Bind(2, WideFromUtf8(RelativePath(file).string())).Bind(5, std::int64_t{is_complete});
        if (stamp) {
            query.Bind(3, static_cast<std::int64_t>(stamp->last_write_time)).Bind(4, std::int64_t{stamp->size});
        }
        query.Run();
    }
    const std::int64_t mark = m_store->LastRowId();
    {
        const std::scoped_lock hold(m_lock);
        m_live_marks.insert(mark);
    }
    transaction.Commit();
    return mark;
}

std::int64_t CacheFolder::MarkUnsaved(const std::wstring& url, const LocalCopy& copy, const std::optional<Stamp>& stamp) {
    return InsertMark(url, copy.Path(), stamp, false);
}

void CacheFolder::SetMarkComplete(std::int64_t mark, bool is_complete) {
    Store::Query(*m_store, "UPDATE unsaved SET is_complete=?2 WHERE id=?1")
        .Bind(1, mark)
        .Bind(2, std::int64_t{is_complete})
        .Run();
}

void CacheFolder::ClearUploaded(std::int64_t mark, const std::wstring& url) {
    Store::Transaction transaction(*m_store);
    ClearMark(mark);
    Store::Query(*m_store, "INSERT OR IGNORE INTO uploaded(url) VALUES(?1)").Bind(1, url).Run();
    transaction.Commit();
}

void CacheFolder::ClearMark(std::int64_t mark) {
    Store::Query(*m_store, "DELETE FROM unsaved WHERE id=?1").Bind(1, mark).Run();
    AbandonMark(mark);
}

void CacheFolder::AbandonMark(std::int64_t mark) {
    const std::scoped_lock hold(m_lock);
    m_live_marks.erase(mark);
}

std::vector<UnsavedCopy> CacheFolder::ListUnsaved() {
    std::vector<UnsavedCopy> copies;
    Store::Query query(*m_store, "SELECT id, url, path, server_time, server_size, is_complete FROM unsaved ORDER BY id");
    while (query.Step()) {
        UnsavedCopy copy{query.Integer(0), query.Text(1), m_root / Utf8FromWide(query.Text(2))};
        if (!query.IsNull(3)) {
            copy.stamp = Stamp{static_cast<ULONGLONG>(query.Integer(3)), query.Integer(4)};
        }
        copy.is_complete = query.Integer(5) != 0;
        std::error_code error;
        copy.size = static_cast<LONGLONG>(fs::file_size(copy.path, error));
        const fs::path folder = copy.path.parent_path();
        const std::scoped_lock hold(m_lock);
        const bool is_live = folder == m_own ? m_live_marks.contains(copy.id) : IsInUse(folder);
        if (!error && !is_live) {
            copies.push_back(std::move(copy));
        }
    }
    return copies;
}

void CacheFolder::DiscardUnsaved(std::int64_t mark) {
    for (const UnsavedCopy& copy : ListUnsaved()) {
        if (copy.id == mark) {
            // First the bytes: on a full disk the store can't write either. A mark without its file is no unsaved copy any more.
            std::error_code error;
            fs::remove(copy.path, error);
            ClearMark(mark);
            return;
        }
    }
    throw HostException(HRESULT_FROM_WIN32(ERROR_NOT_FOUND), "There is no such unsaved copy, or it is open");
}

bool CacheFolder::WasUploaded(const std::wstring& url) {
    Store::Query query(*m_store, "SELECT 1 FROM uploaded WHERE url=?1");
    return query.Bind(1, url).Step();
}

void CacheFolder::ForgetUpload(const std::wstring& url) {
    Store::Query(*m_store, "DELETE FROM uploaded WHERE url=?1").Bind(1, url).Run();
}

void CacheFolder::ObserveUploads(std::function<void(LONGLONG sent)> observer) {
    const std::scoped_lock hold(m_lock);
    if (observer) {
        m_upload_observers[std::this_thread::get_id()] = std::move(observer);
    } else {
        m_upload_observers.erase(std::this_thread::get_id());
    }
}

void CacheFolder::TellSent(LONGLONG sent) {
    std::function<void(LONGLONG)> observer;
    {
        const std::scoped_lock hold(m_lock);
        if (const auto found = m_upload_observers.find(std::this_thread::get_id()); found != m_upload_observers.end()) {
            observer = found->second;
        }
    }
    if (observer) {
        observer(sent);
    }
}

bool CacheFolder::IsInUse(const fs::path& folder) const {
    const FileDescriptor lock(open((folder / LockName).c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    return lock.IsOpen() && !LockFile(lock, false);
}

void CacheFolder::RemoveLeftovers() {
    std::vector<fs::path> folders;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_root, error)) {
        if (entry.is_directory(error) && !entry.is_symlink(error) && entry.path() != m_own && !IsInUse(entry.path())) {
            folders.push_back(entry.path());
        }
    }
    for (const fs::path& folder : folders) {
        RemoveUnmarkedFiles(folder);
    }
}

void CacheFolder::RemoveUnmarkedFiles(const fs::path& folder) {
    bool is_empty = true;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        Store::Query query(*m_store, "SELECT 1 FROM unsaved WHERE path=?1");
        if (query.Bind(1, WideFromUtf8(RelativePath(entry.path()).string())).Step()) {
            is_empty = false;
        } else if (entry.path().filename() != LockName) {
            std::error_code ignored;
            fs::remove(entry.path(), ignored);
        }
    }
    if (is_empty) {
        fs::remove(folder / LockName, error);
        fs::remove(folder, error);
        Store::Query gone(*m_store, "DELETE FROM unsaved WHERE substr(path, 1, length(?1) + 1) = ?1 || '/'");
        gone.Bind(1, WideFromUtf8(RelativePath(folder).string())).Run();
    }
}

std::vector<UnsavedCopy> UnsavedCopies::List() const { return m_folder->ListUnsaved(); }

std::optional<UnsavedCopy> UnsavedCopies::Find(const std::wstring& url) const {
    std::optional<UnsavedCopy> newest;
    for (UnsavedCopy& copy : m_folder->ListUnsaved()) {
        if (CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, copy.url.c_str(), -1, url.c_str(), -1) == CSTR_EQUAL) {
            newest = std::move(copy);
        }
    }
    return newest;
}

void UnsavedCopies::Discard(std::int64_t id) { m_folder->DiscardUnsaved(id); }
bool UnsavedCopies::WasUploaded(const std::wstring& url) const { return m_folder->WasUploaded(url); }
void UnsavedCopies::ForgetUpload(const std::wstring& url) { m_folder->ForgetUpload(url); }
