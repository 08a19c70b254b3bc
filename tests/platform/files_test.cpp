#include "platform/files.h"

#include <array>
#include <csignal>
#include <set>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/errors.h"
#include "platform/text.h"
#include "tests/platform/temp_folder.h"

namespace fs = std::filesystem;

namespace {

std::wstring Wide(const fs::path& path) { return WideFromUtf8(path.string()); }

HANDLE CreateLog(const std::wstring& path) {
    return CreateFileW(path.c_str(), FILE_GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                       FILE_FLAG_WRITE_THROUGH | FILE_ATTRIBUTE_TEMPORARY, nullptr);
}

BOOL Write(HANDLE file, const std::string& bytes) {
    return WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, nullptr);
}

mode_t ModeOf(const fs::path& path) {
    struct stat facts {};
    EXPECT_EQ(lstat(path.c_str(), &facts), 0);
    return facts.st_mode & 0777;
}

/// The names that a search gives; empty with the last error of `FindFirstFileW`.
std::set<std::wstring> Search(const std::wstring& mask) {
    WIN32_FIND_DATAW data{};
    std::set<std::wstring> names;
    const HANDLE search = FindFirstFileW(mask.c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        names.insert(data.cFileName);
    } while (FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    return names;
}

/// The folder of `GetTempPathW` lies in a folder of the test's own.
class UserFolder : public testing::Test {
protected:
    std::wstring TempPath() {
        std::array<wchar_t, 260> buffer{};
        const DWORD length = GetTempPathW(259, buffer.data());
        return {buffer.data(), length};
    }
    fs::path Own() const { return base.Path() / ("kov-" + std::to_string(geteuid())); }

    TempFolder base;
    ScopedVariable variable{"TMPDIR", base.Path().string()};
};

TEST_F(UserFolder, IsMadeForTheUserAlone) {
    EXPECT_EQ(TempPath(), Wide(Own()) + L"\\");
    EXPECT_EQ(ModeOf(Own()), 0700u);
    EXPECT_EQ(TempPath(), Wide(Own()) + L"\\");
    wchar_t little[4] = L"xyz";
    EXPECT_EQ(GetTempPathW(4, little), Wide(Own()).size() + 2);
    EXPECT_STREQ(little, L"xyz");
}

TEST_F(UserFolder, IsRefusedWhenOthersCanEnterOrItIsALink) {
    fs::create_directory(Own());
    fs::permissions(Own(), fs::perms::all);
    EXPECT_EQ(TempPath(), L"");
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    fs::remove(Own());

    fs::create_directory(base / "elsewhere");
    fs::permissions(base / "elsewhere", fs::perms::owner_all);
    fs::create_directory_symlink(base / "elsewhere", Own());
    EXPECT_EQ(TempPath(), L"");
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(UserFolder, FollowsNoLinkBelowIt) {
    const std::wstring temp = TempPath();
    ASSERT_FALSE(temp.empty());
    fs::create_directory(base / "elsewhere");
    fs::create_directory_symlink(base / "elsewhere", Own() / "linked");
    WriteWhole(base / "elsewhere" / "kept.log", "kept");

    EXPECT_EQ(CreateLog(temp + L"linked\\x.log"), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(CreateDirectoryW((temp + L"linked\\new").c_str(), nullptr));
    EXPECT_FALSE(DeleteFileW((temp + L"linked\\kept.log").c_str()));
    EXPECT_EQ(Search(temp + L"linked\\*.log"), std::set<std::wstring>{});
    EXPECT_EQ(CreateLog(temp + L"..\\x.log"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(ReadWhole(base / "elsewhere" / "kept.log"), "kept");
    EXPECT_FALSE(fs::exists(base / "elsewhere" / "x.log"));
    EXPECT_FALSE(fs::exists(base / "x.log"));
}

class Files : public testing::Test {
protected:
    TempFolder folder;
    std::wstring root = Wide(folder.Path());
};

TEST_F(Files, FoldersAreMadeStepByStepAlongAPath) {
    EXPECT_TRUE(CreateDirectoryW((root + L"\\a").c_str(), nullptr));
    EXPECT_TRUE(CreateDirectoryW((root + L"\\a\\b").c_str(), nullptr));
    EXPECT_EQ(ModeOf(folder / "a"), 0700u);
    const struct {
        std::wstring path;
        DWORD error;
    } rows[] = {
        {L"", ERROR_ALREADY_EXISTS},
        {root + L"\\a", ERROR_ALREADY_EXISTS},
        {root + L"\\missing\\b", ERROR_PATH_NOT_FOUND},
        {root + L"\\" + std::wstring(300, L'x'), ERROR_FILENAME_EXCED_RANGE},
        {root + L"\\" + std::wstring(1, static_cast<wchar_t>(0xD800)), ERROR_INVALID_NAME},
    };
    for (const auto& row : rows) {
        SetLastError(0);
        EXPECT_FALSE(CreateDirectoryW(row.path.c_str(), nullptr));
        EXPECT_EQ(GetLastError(), row.error);
    }
    EXPECT_FALSE(RemoveDirectoryW((root + L"\\a").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
    EXPECT_TRUE(RemoveDirectoryW((root + L"\\a\\b").c_str()));
    EXPECT_TRUE(RemoveDirectoryW((root + L"\\a").c_str()));
    EXPECT_FALSE(PathFileExistsW((root + L"\\a").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(PathFileExistsW(root.c_str()));
}

TEST_F(Files, OpenLogKeepsItsContentsAndItsNameWhenOthersWantThem) {
    WriteWhole(folder / "x.log", "an older run");
    const std::wstring path = root + L"\\x.log";
    const HANDLE log = CreateLog(path);
    ASSERT_NE(log, INVALID_HANDLE_VALUE);
    EXPECT_EQ(ModeOf(folder / "x.log"), 0600u);
    EXPECT_TRUE(Write(log, "first\n"));

    EXPECT_EQ(CreateLog(path), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(Write(log, "second\n"));
    EXPECT_EQ(ReadWhole(folder / "x.log"), "first\nsecond\n");

    EXPECT_TRUE(CloseHandle(log));
    EXPECT_FALSE(Write(log, "too late"));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(log));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    EXPECT_FALSE(DeleteFileW(path.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Files, LateWriteNeverLandsInTheNextFile) {
    const HANDLE first = CreateLog(root + L"\\1.log");
    ASSERT_TRUE(CloseHandle(first));
    const HANDLE second = CreateLog(root + L"\\2.log");
    EXPECT_NE(first, second);
    EXPECT_FALSE(Write(first, "late"));
    EXPECT_EQ(ReadWhole(folder / "2.log"), "");
    EXPECT_TRUE(CloseHandle(second));
}

TEST_F(Files, LinesOfSeveralThreadsStayWhole) {
    const HANDLE log = CreateLog(root + L"\\x.log");
    std::vector<std::thread> threads;
    for (const char letter : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([log, letter] {
            for (int i = 0; i < 100; ++i) {
                EXPECT_TRUE(Write(log, std::string(200, letter) + "\n"));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(CloseHandle(log));
    std::ifstream file(folder / "x.log");
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        ASSERT_EQ(line, std::string(200, line[0]));
    }
    EXPECT_EQ(lines, 400);
}

TEST_F(Files, WhatIsNoFileOrALinkIsNeverOpened) {
    WriteWhole(folder / "target", "kept");
    fs::create_symlink(folder / "target", folder / "link");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const wchar_t* const name : {L"\\link", L"\\pipe", L"", L"\\missing\\x.log"}) {
        SetLastError(0);
        EXPECT_EQ(CreateLog(root + name), INVALID_HANDLE_VALUE);
        EXPECT_NE(GetLastError(), 0u);
    }
    EXPECT_EQ(ReadWhole(folder / "target"), "kept");
    // Removing a link removes the link.
    EXPECT_TRUE(DeleteFileW((root + L"\\link").c_str()));
    EXPECT_TRUE(fs::exists(folder / "target"));
    EXPECT_FALSE(DeleteFileW(root.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
}

TEST_F(Files, ShortWriteIsAFailure) {
    const HANDLE log = CreateLog(root + L"\\x.log");
    // A limit on the size of files cuts a write as a full disk does.
    const auto old_handler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit old_limit {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old_limit), 0);
    const struct rlimit limit { 4096, old_limit.rlim_max };
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    const std::string line(5000, 'x');
    DWORD written = 7;
    const BOOL is_written = WriteFile(log, line.data(), 5000, &written, nullptr);
    const DWORD error = GetLastError();
    DWORD second = 7;
    const BOOL is_second_written = WriteFile(log, line.data(), 5000, &second, nullptr);
    const DWORD second_error = GetLastError();
    setrlimit(RLIMIT_FSIZE, &old_limit);
    std::signal(SIGXFSZ, old_handler);

    EXPECT_FALSE(is_written);
    EXPECT_EQ(error, ERROR_DISK_FULL);
    EXPECT_EQ(written, 4096u);
    EXPECT_FALSE(is_second_written);
    EXPECT_EQ(second_error, ERROR_FILE_TOO_LARGE);
    EXPECT_EQ(second, 0u);
    EXPECT_TRUE(CloseHandle(log));
}

TEST_F(Files, MaskFindsExactlyTheNamesThatTheLogMakes) {
    const char* const ours = "KOVD-SP_2026-02-03_09.41.07.512.log";
    for (const char* const name : {ours, "KOVD-SP_2026-02-03_09.41.07.51.log", "KOVD-SP_2026-02-03_09.41.07.512.log.bak",
                                   "KOVD-SP_2026-02-03_09.41.07.5\xC3\xA9"
                                   "2.log",
                                   "kovd-sp_2026-02-03_09.41.07.512.log", "notes.txt", "\xFF.log"}) {
        WriteWhole(folder / name, "12345");
    }
    const std::wstring mask = root + L"\\KOVD-SP_???\?-?\?-?\?_??.??.??.???.log";
    EXPECT_EQ(Search(mask), (std::set<std::wstring>{WideFromUtf8(ours), L"KOVD-SP_2026-02-03_09.41.07.5é2.log"}));
    EXPECT_EQ(Search(root + L"\\*.txt"), (std::set<std::wstring>{L"notes.txt"}));
    EXPECT_EQ(Search(root + L"\\*.pdf"), std::set<std::wstring>{});
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Search(root + L"\\missing\\*"), std::set<std::wstring>{});
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

TEST_F(Files, SearchTellsWhatAnEntryIs) {
    WriteWhole(folder / "a", "12345");
    fs::create_directory(folder / "b");
    fs::create_symlink("a", folder / "c");
    // Older than its birth, as a copy is that was put back: 1970-01-01 00:00:10 UTC.
    const struct timespec times[2] = {{20, 0}, {10, 500}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder / "a").c_str(), times, 0), 0);

    WIN32_FIND_DATAW data{};
    const HANDLE search = FindFirstFileW((root + L"\\?").c_str(), &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    while (std::wstring_view(data.cFileName) != L"a") {
        ASSERT_TRUE(FindNextFileW(search, &data));
    }
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    constexpr std::uint64_t modified = 116'444'736'100'000'005;
    EXPECT_EQ((std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32) | data.ftLastWriteTime.dwLowDateTime, modified);
    EXPECT_EQ((std::uint64_t{data.ftCreationTime.dwHighDateTime} << 32) | data.ftCreationTime.dwLowDateTime, modified);
    ASSERT_TRUE(FindNextFileW(search, &data));
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_DIRECTORY);
    // What goes between two steps is passed over.
    fs::remove(folder / "c");
    EXPECT_FALSE(FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
    EXPECT_FALSE(FindClose(search));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

} // namespace
