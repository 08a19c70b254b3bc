#include "platform/errors.h"

#include <array>
#include <thread>

#include <gtest/gtest.h>

#include "platform/modules.h"

namespace {

constexpr DWORD from_system = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
constexpr DWORD from_module = FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS;

std::wstring TextOf(DWORD flags, LPCVOID source, DWORD code) {
    std::array<wchar_t, 1024> buffer{};
    const DWORD length = FormatMessageW(flags, source, code, 1033, buffer.data(), buffer.size(), nullptr);
    return {buffer.data(), length};
}

TEST(LastError, BelongsToItsThread) {
    SetLastError(ERROR_DISK_FULL);
    std::thread([] {
        EXPECT_EQ(GetLastError(), 0u);
        SetLastError(ERROR_BUSY);
    }).join();
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
}

TEST(FormatMessageW, FindsSystemCodesAlsoBehindResultCodes) {
    EXPECT_EQ(TextOf(from_system, nullptr, ERROR_ACCESS_DENIED), L"Access is denied.");
    for (const DWORD code : {2u, 5u, 32u, 80u, 112u, 220u, 1223u, 1237u, 6009u}) {
        SCOPED_TRACE(code);
        EXPECT_FALSE(TextOf(from_system, nullptr, code).empty());
        EXPECT_EQ(TextOf(from_system, nullptr, 0x80070000u | code), TextOf(from_system, nullptr, code));
    }
    for (const HRESULT result : {E_NOTIMPL, E_NOINTERFACE, E_POINTER, E_FAIL, E_OUTOFMEMORY, E_INVALIDARG, E_UNEXPECTED}) {
        SCOPED_TRACE(static_cast<DWORD>(result));
        const std::wstring text = TextOf(from_system, nullptr, static_cast<DWORD>(result));
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
    }
}

TEST(FormatMessageW, FindsInternetCodesOnlyInTheirModule) {
    const HMODULE wininet = GetModuleHandleA("wininet.dll");
    ASSERT_NE(wininet, nullptr);
    for (const DWORD code : {12002u, 12007u, 12029u, 12032u, 12152u, 12156u, 12175u}) {
        SCOPED_TRACE(code);
        EXPECT_FALSE(TextOf(from_module, wininet, code).empty());
        EXPECT_TRUE(TextOf(from_system, nullptr, code).empty());
        EXPECT_TRUE(TextOf(from_module, nullptr, code).empty());
    }
    EXPECT_EQ(GetModuleHandleA("kernel32.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
}

TEST(FormatMessageW, SaysWhyThereIsNoText) {
    std::array<wchar_t, 17> buffer{};
    EXPECT_EQ(FormatMessageW(from_system, nullptr, 0x1234567, 1033, buffer.data(), 17, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_MR_MID_NOT_FOUND);
    EXPECT_EQ(FormatMessageW(from_system, nullptr, 5, 1033, buffer.data(), 17, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    // Tables of other kinds and texts with arguments aren't offered.
    EXPECT_EQ(FormatMessageW(0x400, nullptr, 5, 1033, buffer.data(), 17, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

} // namespace
