#include <fstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/shell.h"
#include "platform/text.h"
#include "platform/windows_messages.h"
#include "tests/platform/temp_folder.h"

namespace {

TEST(PathMatchSpecW, FindsNamesByListsOfMasks) {
    const struct {
        const wchar_t* file;
        const wchar_t* masks;
        bool matches;
    } rows[] = {
        {L"a.pdf", L"*.pdf", true},
        {L"A.PDF", L"*.pdf", true},
        {L"a.pdf", L"*.txt;*.pdf", true},
        {L"a.pdf", L"*.txt; *.pdf", true},
        {L"a.pdf", L"*.txt;", false},
        {L"a.pdf", L"", false},
        {L"", L"*", true},
        {L"plain", L"*.*", true},
        {L"plain", L"*.?", false},
        {L"abc", L"a?c", true},
        {L"ac", L"a?c", false},
        {L"_catalogs/x", L"_catalogs*", true},
        {L"my_catalogs/x", L"_catalogs*", false},
        {L"a*b", L"a*b", true},
        {L"aXbYbZ", L"a*b*b?", true},
        {L"aXbYbZ", L"a*b*bY", false},
        {L"ÄRGER.txt", L"ä*", true},
        {nullptr, L"*", false},
        {L"a", nullptr, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << Utf8FromWide(row.file == nullptr ? L"null" : row.file) << " by "
                                        << Utf8FromWide(row.masks == nullptr ? L"null" : row.masks));
        EXPECT_EQ(PathMatchSpecW(row.file, row.masks) != FALSE, row.matches);
    }
    // A mask that makes a naive search try every split ends at once.
    std::wstring mask;
    for (int i = 0; i < 200; ++i) {
        mask += L"*a";
    }
    EXPECT_FALSE(PathMatchSpecW(std::wstring(2000, L'a').append(L"b").c_str(), mask.c_str()));
}

TEST(PathFindExtensionW, IsTheLastDotOfTheLastPart) {
    const struct {
        const wchar_t* path;
        const wchar_t* extension;
    } rows[] = {
        {L"a.pdf", L".pdf"}, {L"a.tar.gz", L".gz"},     {L"a", L""},          {L"a.", L"."}, {L".hidden", L".hidden"},
        {L"a.b\\c", L""},    {L"https://h/a.b/c", L""}, {L"v1.2 draft", L""}, {L"", L""},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(PathFindExtensionW(row.path), row.extension);
    }
    EXPECT_EQ(PathFindExtensionW(nullptr), nullptr);
}

/// The desktop's opener, which writes what it was given into a pipe.
class Opener : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
        WriteWhole(folder / "xdg-open", "#!/bin/sh\nprintf '%s|' \"$#\" \"$@\" > '" + (folder / "pipe").string() + "'\n");
        std::filesystem::permissions(folder / "xdg-open", std::filesystem::perms::owner_all);
    }
    std::uintptr_t Execute(const std::wstring& file, const wchar_t* parameters = L"") {
        return reinterpret_cast<std::uintptr_t>(ShellExecuteW(nullptr, L"open", file.c_str(), parameters, L"", SW_SHOWNORMAL));
    }

    TempFolder folder;
    ScopedVariable path{"PATH", folder.Path().string() + ":" + std::getenv("PATH")};
};

TEST_F(Opener, GetsOneTargetAsItStands) {
    const std::string odd = (folder / "a b;$(touch x)'.log").string();
    WriteWhole(odd, "");
    const struct {
        std::wstring file;
        std::wstring parameters;
        std::string target;
    } rows[] = {
        {WideFromUtf8(odd), L"", odd},
        {WideFromUtf8(folder.Path().string()) + L"\\xdg-open", L"", (folder / "xdg-open").string()},
        {L"https://server/a?b=c&d", L"", "https://server/a?b=c&d"},
        {L"explorer", L"/select, \"" + WideFromUtf8(odd) + L"\"", folder.Path().string()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.target);
        ASSERT_GT(Execute(row.file, row.parameters.c_str()), 32u);
        EXPECT_EQ(ReadWhole(folder / "pipe"), "1|" + row.target + "|");
    }
}

TEST_F(Opener, IsNotAskedForWhatIsNoPathAndNoWebAddress) {
    const std::wstring root = WideFromUtf8(folder.Path().string());
    const struct {
        std::wstring file;
        std::uintptr_t code;
    } rows[] = {
        {L"--help", ERROR_ACCESS_DENIED},
        {L"file:///etc/passwd", ERROR_ACCESS_DENIED},
        {L"javascript:x", ERROR_ACCESS_DENIED},
        {L"https://a\nb", ERROR_ACCESS_DENIED},
        {L"explorer", ERROR_ACCESS_DENIED},
        {root + L"\\missing", ERROR_FILE_NOT_FOUND},
        {root + L"\\missing\\x", ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8FromWide(row.file));
        SetLastError(0);
        EXPECT_EQ(Execute(row.file), row.code);
        EXPECT_EQ(GetLastError(), row.code);
    }
}

TEST_F(Opener, MayBeMissing) {
    const ScopedVariable nowhere("PATH", (folder / "nowhere").string());
    EXPECT_EQ(Execute(L"https://server/"), 31u);
}

TEST(Messages, ComeInTheOrderInWhichTheyWerePosted) {
    const HWND window = CreateHostWindow();
    const HWND other = CreateHostWindow();
    for (WPARAM i = 0; i < 3; ++i) {
        EXPECT_TRUE(PostMessageW(i == 1 ? other : window, 0x400, i, 0));
    }
    EXPECT_TRUE(DestroyWindow(other));
    EXPECT_FALSE(PostMessageW(other, 0x400, 9, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, 0));
    EXPECT_EQ(message.wParam, 0u);
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.wParam, 0u);
    ASSERT_TRUE(PeekMessageW(&message, window, 0x400, 0x400, PM_REMOVE));
    EXPECT_EQ(message.wParam, 2u);
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_TRUE(DestroyWindow(window));
}

TEST(Messages, WakeTheLoopThatWaitsForThem) {
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, 0, QS_ALLINPUT), WAIT_TIMEOUT);
    std::thread poster([] { EXPECT_TRUE(PostMessageW(nullptr, 0x401, 7, -1)); });
    EXPECT_EQ(MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT), WAIT_OBJECT_0);
    poster.join();
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.wParam, 7u);
    EXPECT_EQ(message.lParam, -1);
}

TEST(Messages, ThatNobodyTakesEndInARefusal) {
    int posted = 0;
    while (posted <= 10'000 && PostMessageW(nullptr, 0x400, 0, 0)) {
        ++posted;
    }
    EXPECT_EQ(posted, 10'000);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_QUOTA);
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
}

TEST(Windows, TakeATextAndTellTheirLoop) {
    const HWND window = CreateHostWindow();
    EXPECT_TRUE(SetWindowTextW(window, L"Open from SharePoint"));
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, window, WM_SETTEXT, WM_SETTEXT, PM_REMOVE));
    wchar_t little[5];
    EXPECT_EQ(GetWindowTextW(window, little, 5), 4);
    EXPECT_STREQ(little, L"Open");
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_FALSE(SetWindowTextW(window, L"x"));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST(Windows, AreShownByTheirLoop) {
    const HWND window = CreateHostWindow();
    EXPECT_FALSE(ShowWindow(window, SW_SHOW)) << "it was hidden before";
    EXPECT_TRUE(ShowWindow(window, SW_HIDE));
    MSG message{};
    for (const WPARAM shown : {1u, 0u}) {
        ASSERT_TRUE(PeekMessageW(&message, window, WM_SHOWWINDOW, WM_SHOWWINDOW, PM_REMOVE));
        EXPECT_EQ(message.wParam, shown);
        EXPECT_EQ(static_cast<DWORD>(GetMessageTime()), message.time);
    }
    DestroyWindow(window);
    EXPECT_FALSE(ShowWindow(window, SW_SHOW));
    EXPECT_EQ(GetLastError(), 1400u);
}

TEST(Keys, AreDownAsLongAsTheHostSaysSo) {
    BYTE states[256] = {};
    states[VK_SHIFT] = 0x81;
    EXPECT_TRUE(SetKeyboardState(states));
    EXPECT_LT(GetKeyState(VK_SHIFT), 0);
    EXPECT_EQ(GetKeyState(VK_SHIFT) & 1, 1);
    EXPECT_EQ(GetKeyState(VK_SHIFT + 1), 0);
    EXPECT_EQ(GetKeyState(256), 0);
    states[VK_SHIFT] = 0;
    EXPECT_TRUE(SetKeyboardState(states));
    EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
}

} // namespace
