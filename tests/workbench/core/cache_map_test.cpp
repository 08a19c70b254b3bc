#include <fstream>
#include <gtest/gtest.h>

#include "fresh_folder.h"
#include "scripted_callbacks.h"
#include "scripted_provider.h"
#include "workbench/core/cache_map.h"
#include "workbench/core/cache_map_core.h"

namespace {

constexpr Stamp old_stamp{100, 10};
constexpr Stamp new_stamp{200, 3};

class CacheMapTest : public testing::Test {
protected:
    CacheMapTest() : m_core(MakeCacheMapCore(m_cache, m_provider)), m_map(MakeCacheMap(m_core)) {
        m_callbacks->document = "0123456789";
    }
    ~CacheMapTest() override { DropCacheMap(*m_core); }

    /// A file as the provider opens it: with a name of its own and a hold on a local copy until it ends.
    struct Open {
        ComPtr<ScriptedName> name;
        ComPtr<ScriptedFile> file;
        ComPtr<KOV::IAFS_FileCache> cache;
        bool is_found = false;
    };
    Open OpenFile(const std::wstring& url, Stamp stamp, DWORD flags = KOV::AFS_OpenFile_Read) {
        Open open;
        open.name = MakeObject<ScriptedName>(url, stamp);
        open.file = MakeObject<ScriptedFile>(open.name);
        EXPECT_EQ(m_map.As<KOV::IAFS_FileCachesMapEx>()->QueryCache(open.file, flags, &open.cache), S_OK);
        open.is_found = !open.cache.IsNull();
        if (!open.is_found) {
            EXPECT_EQ(m_map->CreateCacheEntry(open.file, m_callbacks, flags, stamp.size, nullptr, nullptr, nullptr, &open.cache),
                      S_OK);
        }
        return open;
    }
    void CloseFile(Open& open) {
        EXPECT_EQ(m_map->ReleaseCacheEntry(open.file, 0), S_OK);
        open.cache.Release();
        open.file.Release();
    }
    static std::string ReadAll(KOV::IAFS_FileCache* cache) {
        std::string bytes(100, '?');
        ULONG count = 0;
        EXPECT_EQ(cache->Read(0, bytes.data(), 100, &count, nullptr, nullptr), S_OK);
        bytes.resize(count);
        return bytes;
    }
    static void Rewrite(KOV::IAFS_FileCache* cache, const std::string& bytes) {
        EXPECT_EQ(cache->SetSize(0, nullptr, nullptr), S_OK);
        EXPECT_EQ(cache->Write(0, bytes.data(), static_cast<ULONG>(bytes.size()), nullptr, nullptr, nullptr), S_OK);
    }
    std::ptrdiff_t Downloads() const { return std::count(m_callbacks->calls.begin(), m_callbacks->calls.end(), "download"); }
    ULONG CallbackReferences() const {
        m_callbacks->AddRef();
        return m_callbacks->Release();
    }

    FreshFolder m_folder;
    std::shared_ptr<Store> m_store = std::make_shared<Store>(m_folder.Path() / "store.sqlite");
    std::shared_ptr<CacheFolder> m_cache = std::make_shared<CacheFolder>(m_folder.Path(), m_store);
    ComPtr<ScriptedCallbacks> m_callbacks = MakeObject<ScriptedCallbacks>();
    ComPtr<ScriptedProvider> m_provider = MakeObject<ScriptedProvider>();
    std::shared_ptr<CacheMapCore> m_core;
    ComPtr<KOV::IAFS_FileCachesMap> m_map;
};

TEST_F(CacheMapTest, OpensOfTheSameStateShareOneCopyWhateverTheUrlsLetterCase) {
    auto first = OpenFile(L"http://s/A.pdf", old_stamp);
    auto second = OpenFile(L"http://S/a.PDF", old_stamp);
    EXPECT_TRUE(second.is_found);
    EXPECT_EQ(ReadAll(first.cache), "0123456789");
    EXPECT_EQ(ReadAll(second.cache), "0123456789");
    EXPECT_EQ(Downloads(), 1);
    auto other = OpenFile(L"http://s/b.pdf", old_stamp);
    EXPECT_FALSE(other.is_found);
    CloseFile(first);
    CloseFile(second);
    CloseFile(other);
}

TEST_F(CacheMapTest, AnotherStateOfTheFileGetsACopyOfItsOwn) {
    auto first = OpenFile(L"http://s/a.pdf", old_stamp);
    ReadAll(first.cache);
    m_callbacks->document = "new";
    auto second = OpenFile(L"http://s/a.pdf", new_stamp);
    EXPECT_FALSE(second.is_found);
    EXPECT_EQ(ReadAll(second.cache), "new");
    EXPECT_EQ(ReadAll(first.cache), "0123456789") << "the older copy lives on with its file";
    auto third = OpenFile(L"http://s/a.pdf", old_stamp);
    EXPECT_FALSE(third.is_found) << "only the newest one is found";
    auto anew = OpenFile(L"http://s/a.pdf", old_stamp, KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_CreateAlways);
    EXPECT_FALSE(anew.is_found);
    EXPECT_EQ(ReadAll(anew.cache), "");
    for (Open* const open : {&first, &second, &third, &anew}) {
        CloseFile(*open);
    }
}

TEST_F(CacheMapTest, KeepsCompleteBytesOfAClosedFileButNothingOfTheSession) {
    auto first = OpenFile(L"http://s/a.pdf", old_stamp);
    ReadAll(first.cache);
    EXPECT_GT(CallbackReferences(), 1u);
    CloseFile(first);
    EXPECT_EQ(CallbackReferences(), 1u);
    auto second = OpenFile(L"http://s/a.pdf", old_stamp);
    EXPECT_FALSE(second.is_found);
    EXPECT_EQ(ReadAll(second.cache), "0123456789");
    EXPECT_EQ(Downloads(), 1);
    CloseFile(second);
    auto third = OpenFile(L"http://s/a.pdf", Stamp{300, 10});
    EXPECT_EQ(ReadAll(third.cache), "0123456789");
    EXPECT_EQ(Downloads(), 2) << "the server's file is another one";
    CloseFile(third);
}

TEST_F(CacheMapTest, DropsAPartOfADownloadWithItsFile) {
    auto first = OpenFile(L"http://s/a.pdf", old_stamp);
    char byte = 0;
    EXPECT_EQ(first.cache->Read(0, &byte, 1, nullptr, nullptr, nullptr), S_OK);
    CloseFile(first);
    auto second = OpenFile(L"http://s/a.pdf", old_stamp);
    ReadAll(second.cache);
    EXPECT_EQ(Downloads(), 2);
    CloseFile(second);
}

TEST_F(CacheMapTest, ACloneReadsOnAfterItsFileEnded) {
    auto file = OpenFile(L"http://s/a.pdf", old_stamp);
    const ComPtr<KOV::IAFS_FileCache> clone = file.cache;
    CloseFile(file);
    EXPECT_EQ(ReadAll(clone), "0123456789");
}

TEST_F(CacheMapTest, LearnsAfterASaveWhatTheServerMadeOfIt) {
    struct Row {
        const char* name;
        std::optional<Stamp> told;
        Stamp asked;
        bool is_found;
    };
    const Row rows[] = {
        {"the provider asked the server", new_stamp, new_stamp, true},
        {"nobody asked yet", std::nullopt, new_stamp, false},
        {"the server stored another length", Stamp{200, 7}, Stamp{200, 7}, false},
        {"somebody saved since", new_stamp, Stamp{300, 3}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        m_callbacks->document = "0123456789";
        auto first = OpenFile(L"http://s/a.pdf", old_stamp);
        Rewrite(first.cache, "new");
        EXPECT_EQ(first.cache->Flush(nullptr, nullptr), S_OK);
        first.name->stamp = row.told ? row.told : old_stamp;
        auto second = OpenFile(L"http://s/a.pdf", row.asked);
        EXPECT_EQ(second.is_found, row.is_found);
        CloseFile(first);
        CloseFile(second);
        EXPECT_EQ(m_map->DeleteEntryEx(second.name, 0), S_OK);
    }
}

TEST_F(CacheMapTest, UnsavedBytesOutliveTheirFileAndAreWrittenBackOrGivenUpByWord) {
    auto first = OpenFile(L"http://s/a.pdf", old_stamp);
    Rewrite(first.cache, "new");
    m_callbacks->FailNext("EndWrite", E_FAIL);
    EXPECT_EQ(first.cache->Flush(nullptr, nullptr), E_FAIL);
    const auto name = first.name;
    CloseFile(first);
    auto second = OpenFile(L"http://s/a.pdf", old_stamp);
    EXPECT_TRUE(second.is_found);
    EXPECT_EQ(ReadAll(second.cache), "new");
    CloseFile(second);
    EXPECT_EQ(m_map->DeleteEntryEx(name, 1), S_FALSE);
    m_callbacks->FailNext("EndWrite", RunAgain);
    EXPECT_EQ(m_map->FlushAllCaches(nullptr, nullptr, VARIANT_FALSE), S_OK);
    EXPECT_EQ(m_callbacks->document, "new");
    EXPECT_EQ(CallbackReferences(), 1u);

    auto third = OpenFile(L"http://s/a.pdf", old_stamp);
    Rewrite(third.cache, "lost");
    EXPECT_EQ(m_map->DeleteEntryEx(third.name, 0), S_OK);
    EXPECT_EQ(m_map->FlushAllCaches(nullptr, nullptr, VARIANT_FALSE), S_OK);
    EXPECT_EQ(m_callbacks->document, "new");
    CloseFile(third);
    EXPECT_TRUE(m_cache->ListUnsaved().empty());
}

TEST_F(CacheMapTest, UnsavedBytesNeverGoOverANewerDocumentUnasked) {
    auto first = OpenFile(L"http://s/a.pdf", old_stamp);
    Rewrite(first.cache, "mine");
    CloseFile(first);
    m_callbacks->document = "new";
    auto second = OpenFile(L"http://s/a.pdf", new_stamp);
    EXPECT_FALSE(second.is_found);
    EXPECT_EQ(m_map->FlushAllCaches(nullptr, nullptr, VARIANT_FALSE), S_OK);
    EXPECT_EQ(m_callbacks->document, "new");
    CloseFile(second);
    DropCacheMap(*m_core);
    const auto left = m_cache->ListUnsaved();
    ASSERT_EQ(left.size(), 1u) << "and they aren't lost";
    EXPECT_EQ(left[0].stamp, old_stamp);
}

TEST_F(CacheMapTest, TakesALocalFileAsAnUnsavedCopy) {
    for (const bool keep_file : {true, false}) {
        SCOPED_TRACE(keep_file);
        const auto local = m_folder.Path() / "local.pdf";
        std::ofstream(local) << "local bytes";
        const auto name = MakeObject<ScriptedName>(L"http://s/a.pdf", old_stamp);
        ComPtr<KOV::IAFS_FileCache> cache;
        ASSERT_EQ(m_map->CreateCacheEntryOnLocalFile(name, 0, m_callbacks, 0xA00, local.wstring().c_str(), 0, 0,
                                                     keep_file ? VARIANT_TRUE : VARIANT_FALSE, &cache),
                  S_OK);
        EXPECT_EQ(std::filesystem::exists(local), keep_file);
        cache.Release();
        auto open = OpenFile(L"http://s/a.pdf", old_stamp);
        EXPECT_TRUE(open.is_found);
        EXPECT_EQ(ReadAll(open.cache), "local bytes");
        CloseFile(open);
        EXPECT_EQ(m_map->FlushAllCaches(nullptr, nullptr, VARIANT_FALSE), S_OK);
        EXPECT_EQ(m_callbacks->document, "local bytes");
    }
}

TEST_F(CacheMapTest, AdoptsTheCopyThatACrashLeftWithItsMark) {
    auto crashed = OpenFile(L"http://s/a.pdf", old_stamp);
    Rewrite(crashed.cache, "left");
    CloseFile(crashed);
    DropCacheMap(*m_core);
    const auto left = m_cache->ListUnsaved();
    ASSERT_EQ(left.size(), 1u);
    m_core = MakeCacheMapCore(m_cache, m_provider);
    m_map = MakeCacheMap(m_core);
    ComPtr<KOV::IAFS_FileCache> cache;
    ASSERT_EQ(m_map->CreateCacheEntryOnLocalFile(crashed.name, 0, m_callbacks, 0xA00, left[0].path.wstring().c_str(), 0, 0,
                                                 VARIANT_FALSE, &cache),
              S_OK);
    EXPECT_TRUE(m_cache->ListUnsaved().empty()) << "somebody has it now";
    EXPECT_FALSE(std::filesystem::exists(left[0].path));
    EXPECT_EQ(cache->Flush(nullptr, nullptr), S_OK);
    EXPECT_EQ(m_callbacks->document, "left");
}

TEST_F(CacheMapTest, AFileThatItDoesNotKnowIsNoFailure) {
    const auto file = MakeObject<ScriptedFile>(MakeObject<ScriptedName>(L"http://s/a.pdf", old_stamp));
    EXPECT_EQ(m_map->ReleaseCacheEntry(file, 0), S_OK);
    EXPECT_EQ(m_map->CheckForReopenFile(file, KOV::AFS_OpenFile_Write), S_OK);
    ComPtr<KOV::IAFS_FileCache> cache;
    EXPECT_EQ(m_map->QueryCache(static_cast<KOV::IAFS_Name*>(nullptr), 0, &cache), E_INVALIDARG);
    EXPECT_EQ(m_map->CreateCacheEntry(file, m_callbacks, 0, -1, nullptr, nullptr, nullptr, &cache), E_INVALIDARG);
}

} // namespace
