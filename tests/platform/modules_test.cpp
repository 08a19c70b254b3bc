#include "platform/modules.h"

#include <string_view>

#include <gtest/gtest.h>

#include "platform/errors.h"
#include "platform/text.h"
#include "tests/platform/temp_folder.h"

namespace {

using namespace std::string_view_literals;

HMODULE LoadTestModule() { return LoadLibraryW(WideFromUtf8(KOV_TEST_MODULE).c_str()); }

std::string_view BytesOf(HMODULE module, WORD number, LPCWSTR type) {
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(number), type);
    return resource == nullptr ? "(none)"sv
                               : std::string_view(static_cast<const char*>(LockResource(LoadResource(module, resource))),
                                                  SizeofResource(module, resource));
}

TEST(Modules, CarryFilesFromLoadToUnload) {
    const HMODULE module = LoadTestModule();
    ASSERT_NE(module, nullptr) << Utf8FromWide(GetModuleLoadError());
    EXPECT_EQ(BytesOf(module, 101, L"XML"), "<root>first</root>"sv);
    EXPECT_EQ(BytesOf(module, 104, L"png"), "\0\1\xFFsecond"sv);

    const struct {
        HMODULE module;
        WORD number;
        const wchar_t* type;
        DWORD error;
    } rows[] = {
        {module, 104, L"XML", ERROR_RESOURCE_NAME_NOT_FOUND},
        {module, 101, L"TXT", ERROR_RESOURCE_TYPE_NOT_FOUND},
        {nullptr, 101, L"XML", ERROR_RESOURCE_TYPE_NOT_FOUND},
        {module, 101, nullptr, ERROR_INVALID_PARAMETER},
    };
    for (const auto& row : rows) {
        SetLastError(0);
        EXPECT_EQ(FindResourceW(row.module, MAKEINTRESOURCEW(row.number), row.type), nullptr);
        EXPECT_EQ(GetLastError(), row.error);
    }
    // What a caller does with a resource that isn't there.
    EXPECT_EQ(SizeofResource(module, nullptr), 0u);
    EXPECT_EQ(LockResource(LoadResource(module, nullptr)), nullptr);

    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(BytesOf(module, 101, L"XML"), "(none)"sv);
}

TEST(Modules, KnowTheirOwnHandleAndCountTheirLoads) {
    const HMODULE module = LoadTestModule();
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadTestModule(), module);
    EXPECT_TRUE(FreeLibrary(module));
    const auto own = reinterpret_cast<HMODULE (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "GetOwnModule")));
    ASSERT_NE(own, nullptr);
    EXPECT_EQ(own(), module);
    EXPECT_EQ(GetProcAddress(module, "NoSuchFunction"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Modules, SayWhyTheyCannotBeLoaded) {
    const TempFolder folder;
    WriteWhole(folder / "text.kvp", "no module");
    for (const std::string& path : {(folder / "text.kvp").string(), (folder / "missing.kvp").string()}) {
        SetLastError(0);
        EXPECT_EQ(LoadLibraryW(WideFromUtf8(path).c_str()), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
        EXPECT_NE(std::wstring_view(GetModuleLoadError()).find(WideFromUtf8(path)), std::wstring_view::npos);
    }
    EXPECT_EQ(LoadLibraryW(L""), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

} // namespace
