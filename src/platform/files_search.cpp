#include <algorithm>
#include <cerrno>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/errors_detail.h"
#include "platform/files.h"
#include "platform/files_detail.h"
#include "platform/text.h"

namespace {

constexpr std::uint64_t ticks_per_second = 10'000'000;
constexpr std::int64_t epoch_seconds = 11'644'473'600;

/// A search with the names that it still has to give.
struct Search {
    Descriptor folder;
    std::vector<std::string> names;
    std::size_t next = 0;
};

FILETIME FileTime(std::int64_t seconds, std::uint32_t nanoseconds) {
    const std::uint64_t ticks = static_cast<std::uint64_t>(seconds + epoch_seconds) * ticks_per_second + nanoseconds / 100;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

FILETIME Earlier(const FILETIME& a, const FILETIME& b) {
    const auto value = [](const FILETIME& t) { return (static_cast<std::uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime; };
    return value(a) < value(b) ? a : b;
}

/// `*` any characters, `?` exactly one; compared by characters, not bytes.
bool Matches(const wchar_t* text, const wchar_t* mask) {
    const wchar_t* star = nullptr;
    const wchar_t* retry = nullptr;
    while (*text != 0) {
        if (*mask == L'*') {
            star = ++mask;
            retry = text;
        } else if (*mask == L'?' || *mask == *text) {
            ++mask;
            ++text;
        } else if (star != nullptr) {
            mask = star;
            text = ++retry;
        } else {
            return false;
        }
    }
    while (*mask == L'*') {
        ++mask;
    }
    return *mask == 0;
}

bool Describe(const Search& search, const std::string& name, WIN32_FIND_DATAW* out_data) {
    struct statx facts {};
    if (statx(search.folder.Get(), name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &facts) != 0) {
        return false;
    }
    *out_data = WIN32_FIND_DATAW{};
    out_data->dwFileAttributes = S_ISDIR(facts.stx_mode)   ? FILE_ATTRIBUTE_DIRECTORY
                                 : S_ISLNK(facts.stx_mode) ? FILE_ATTRIBUTE_REPARSE_POINT
                                                           : FILE_ATTRIBUTE_NORMAL;
    out_data->ftLastWriteTime = FileTime(facts.stx_mtime.tv_sec, facts.stx_mtime.tv_nsec);
    out_data->ftLastAccessTime = FileTime(facts.stx_atime.tv_sec, facts.stx_atime.tv_nsec);
    out_data->ftCreationTime = out_data->ftLastWriteTime;
    if ((facts.stx_mask & STATX_BTIME) != 0) {
        out_data->ftCreationTime = Earlier(out_data->ftLastWriteTime, FileTime(facts.stx_btime.tv_sec, facts.stx_btime.tv_nsec));
    }
    out_data->nFileSizeLow = static_cast<DWORD>(facts.stx_size);
    out_data->nFileSizeHigh = static_cast<DWORD>(facts.stx_size >> 32);
    const std::wstring wide = WideFromUtf8(name);
    std::char_traits<wchar_t>::copy(out_data->cFileName, wide.c_str(), wide.size() + 1);
    return true;
}

/// A stream over the folder with a descriptor of its own; null with `errno` set.
DIR* OpenStream(const Descriptor& folder) {
    const int copy = openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const stream = copy < 0 ? nullptr : fdopendir(copy);
    if (stream == nullptr && copy >= 0) {
        close(copy);
    }
    return stream;
}

/// The names in the folder that match. Names that have no wide form, or none short enough, can't be given. False, with `errno`
/// set, when the folder can't be read.
bool ReadNames(Search& search, const std::wstring& mask) {
    DIR* const stream = OpenStream(search.folder);
    if (stream == nullptr) {
        return false;
    }
    while (const dirent* const entry = readdir(stream)) {
        try {
            const std::wstring name = WideFromUtf8(entry->d_name);
            if (name.size() < MAX_PATH && Matches(name.c_str(), mask.c_str())) {
                search.names.emplace_back(entry->d_name);
            }
        } catch (const std::range_error&) {
            continue;
        }
    }
    closedir(stream);
    std::sort(search.names.begin(), search.names.end());
    return true;
}

struct Searches {
    std::mutex lock;
    std::set<std::shared_ptr<Search>> rows;
};

Searches& AllSearches() {
    static Searches searches;
    return searches;
}

std::shared_ptr<Search> FindSearch(HANDLE handle) {
    Searches& searches = AllSearches();
    const std::lock_guard guard(searches.lock);
    const auto found = std::find_if(searches.rows.begin(), searches.rows.end(),
                                    [&](const std::shared_ptr<Search>& search) { return search.get() == handle; });
    return found == searches.rows.end() ? nullptr : *found;
}

bool NextOf(Search& search, WIN32_FIND_DATAW* out_data) {
    while (search.next < search.names.size()) {
        if (Describe(search, search.names[search.next++], out_data)) {
            return true;
        }
    }
    return false;
}

} // namespace

HANDLE FindFirstFileW(LPCWSTR mask, WIN32_FIND_DATAW* out_data) {
    if (mask == nullptr || out_data == nullptr) {
        FailWith(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    try {
        auto search = std::make_shared<Search>();
        std::string name_mask;
        search->folder = OpenFolderOf(NativePath(mask), name_mask);
        if (!search->folder.IsOpen()) {
            FailWith(errno == ENOENT || errno == ENOTDIR ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno));
            return INVALID_HANDLE_VALUE;
        }
        if (!ReadNames(*search, WideFromUtf8(name_mask))) {
            FailWithErrno(errno);
            return INVALID_HANDLE_VALUE;
        }
        if (!NextOf(*search, out_data)) {
            FailWith(ERROR_FILE_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        }
        Searches& searches = AllSearches();
        const std::lock_guard guard(searches.lock);
        searches.rows.insert(search);
        return search.get();
    } catch (const std::exception&) {
        FailWith(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* out_data) {
    const std::shared_ptr<Search> search = FindSearch(handle);
    if (search == nullptr || out_data == nullptr) {
        return FailWith(search == nullptr ? ERROR_INVALID_HANDLE : ERROR_INVALID_PARAMETER);
    }
    return NextOf(*search, out_data) ? TRUE : FailWith(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE handle) {
    const std::shared_ptr<Search> search = FindSearch(handle);
    if (search == nullptr) {
        return FailWith(ERROR_INVALID_HANDLE);
    }
    Searches& searches = AllSearches();
    const std::lock_guard guard(searches.lock);
    searches.rows.erase(search);
    return TRUE;
}
