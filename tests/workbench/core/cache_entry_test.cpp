#include <gtest/gtest.h>

#include <sys/stat.h>
#include <thread>

#include "fresh_folder.h"
#include "platform/errors.h"
#include "platform/text.h"
#include "scripted_callbacks.h"
#include "workbench/core/cache_entry.h"

namespace {

using Calls = std::vector<std::string>;

class CacheEntryTest : public testing::Test {
protected:
    CacheEntryTest() { m_callbacks->document = "0123456789"; }

    std::unique_ptr<CacheEntry> Open(LONGLONG size) {
        return std::make_unique<CacheEntry>(m_cache, m_cache->MakeCopy(L"a.pdf"),
                                            CacheEntry::Source{L"http://s/a.pdf", m_callbacks, Stamp{7, size}, size, {}});
    }
    std::string ReadAt(CacheEntry& entry, LONGLONG pos, ULONG size, HRESULT expected = S_OK) {
        std::string bytes(size, '?');
        ULONG count = 0;
        EXPECT_EQ(entry.Read(pos, bytes.data(), size, &count, m_details, m_cancel), expected);
        bytes.resize(count);
        return bytes;
    }
    HRESULT Write(CacheEntry& entry, LONGLONG pos, const std::string& bytes) {
        ULONG count = 0;
        return entry.Write(pos, bytes.data(), static_cast<ULONG>(bytes.size()), &count, m_details, m_cancel);
    }
    std::wstring Details() const { return TextOf(m_details); }

    FreshFolder m_folder;
    std::shared_ptr<Store> m_store = std::make_shared<Store>(m_folder.Path() / "store.sqlite");
    std::shared_ptr<CacheFolder> m_cache = std::make_shared<CacheFolder>(m_folder.Path(), m_store);
    ComPtr<ScriptedCallbacks> m_callbacks = MakeObject<ScriptedCallbacks>();
    ComPtr<StringObject> m_details = MakeObject<StringObject>();
    ComPtr<FlagObject> m_cancel = MakeObject<FlagObject>();
};

TEST_F(CacheEntryTest, FillsInOrderAndOnlyAsFarAsItWasAskedFor) {
    m_callbacks->piece = 3;
    const auto entry = Open(10);
    EXPECT_EQ(ReadAt(*entry, 0, 4), "0123");
    EXPECT_FALSE(entry->IsComplete());
    EXPECT_EQ(ReadAt(*entry, 1, 2), "12");
    EXPECT_EQ(ReadAt(*entry, 8, 10), "89") << "short at the end, and no failure";
    EXPECT_TRUE(entry->IsComplete());
    EXPECT_EQ(ReadAt(*entry, 10, 4), "");
    EXPECT_EQ(ReadAt(*entry, 3, 5), "34567");
    EXPECT_EQ(m_callbacks->calls, Calls{"download"}) << "one download, and none for bytes that are there";
}

TEST_F(CacheEntryTest, RefusesADocumentOfAnotherLengthThanTheServerReported) {
    for (const LONGLONG reported : {LONGLONG{9}, LONGLONG{11}, LONGLONG{0}}) {
        SCOPED_TRACE(reported);
        m_callbacks->calls.clear();
        const auto entry = Open(reported);
        ReadAt(*entry, 0, 20, HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
        EXPECT_NE(Details().find(L"that it reported"), std::wstring::npos);
        EXPECT_EQ(m_callbacks->calls.back(), "drop read");
    }
}

TEST_F(CacheEntryTest, BeginsAnewAfterAFailedDownloadAndJoinsNoBytesOfTwo) {
    m_callbacks->piece = 3;
    m_callbacks->fail_read_at = 6;
    const auto entry = Open(10);
    EXPECT_EQ(ReadAt(*entry, 0, 10, E_FAIL), "");
    EXPECT_EQ(Details(), L"the line is cut");
    m_callbacks->document = "ABCDEFGHIJ";
    EXPECT_EQ(ReadAt(*entry, 0, 10), "ABCDEFGHIJ");
    EXPECT_EQ(m_callbacks->calls, (Calls{"download", "drop read", "download"}));
}

TEST_F(CacheEntryTest, FillsToTheEndBeforeTheFirstChangeUnlessAllIsNew) {
    struct Row {
        const char* name;
        std::function<HRESULT(CacheEntry&)> change;
        std::string uploaded;
        bool is_downloaded;
    };
    const Row rows[] = {
        {"write in the middle", [&](CacheEntry& entry) { return Write(entry, 3, "xy"); }, "012xy56789", true},
        {"write behind the end", [&](CacheEntry& entry) { return Write(entry, 11, "z"); }, std::string("0123456789\0z", 12),
         true},
        {"cut", [&](CacheEntry& entry) { return entry.SetSize(4, m_details, m_cancel); }, "0123", true},
        {"grow", [&](CacheEntry& entry) { return entry.SetSize(12, m_details, m_cancel); }, std::string("0123456789\0\0", 12),
         true},
        {"new content",
         [&](CacheEntry& entry) {
             const HRESULT result = entry.SetSize(0, m_details, m_cancel);
             return SUCCEEDED(result) ? Write(entry, 0, "new") : result;
         },
         "new", false},
        {"empty", [&](CacheEntry& entry) { return entry.SetSize(0, m_details, m_cancel); }, "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        m_callbacks->document = "0123456789";
        m_callbacks->calls.clear();
        const auto entry = Open(10);
        EXPECT_EQ(row.change(*entry), S_OK);
        EXPECT_EQ(entry->Flush(m_details, m_cancel), S_OK);
        EXPECT_EQ(m_callbacks->document, row.uploaded);
        EXPECT_EQ(std::count(m_callbacks->calls.begin(), m_callbacks->calls.end(), "download"), row.is_downloaded ? 1 : 0);
        EXPECT_EQ(ReadAt(*entry, 0, 20), row.uploaded);
    }
}

TEST_F(CacheEntryTest, SeveralReadersShareOneDownload) {
    m_callbacks->document.assign(100'000, '\0');
    std::generate(m_callbacks->document.begin(), m_callbacks->document.end(),
                  [n = 0]() mutable { return static_cast<char>(n++ % 251); });
    m_callbacks->piece = 1000;
    const auto entry = Open(100'000);
    const auto read = [&](ULONG step) {
        std::string bytes;
        for (LONGLONG pos = 0; pos < 100'000; pos += step) {
            bytes += ReadAt(*entry, pos, step);
        }
        return bytes;
    };
    std::string of_thread;
    std::thread reader([&] { of_thread = read(777); });
    EXPECT_EQ(read(4096), m_callbacks->document);
    reader.join();
    EXPECT_EQ(of_thread, m_callbacks->document);
    EXPECT_EQ(m_callbacks->calls, Calls{"download"});
}

TEST_F(CacheEntryTest, SendsNothingWhenNothingChanged) {
    const auto entry = Open(10);
    ReadAt(*entry, 0, 10);
    EXPECT_EQ(entry->SetSize(10, m_details, m_cancel), S_OK);
    EXPECT_EQ(entry->Flush(m_details, m_cancel), S_OK);
    EXPECT_EQ(m_callbacks->calls, Calls{"download"});
}

TEST_F(CacheEntryTest, SavesWholeAndInOrderAndPassesEachFailureOn) {
    struct Row {
        std::string failing;
        HRESULT result;
        Calls calls;
    };
    const Row rows[] = {
        {"none", S_OK, {"SetSize 3", "BeginWrite", "Write", "EndWrite"}},
        {"SetSize", E_FAIL, {"SetSize 3", "drop write"}},
        {"BeginWrite", E_FAIL, {"SetSize 3", "BeginWrite", "drop write"}},
        {"Write", E_FAIL, {"SetSize 3", "BeginWrite", "Write", "drop write"}},
        {"Write", UserCanceled, {"SetSize 3", "BeginWrite", "Write", "drop write"}},
        {"EndWrite", E_FAIL, {"SetSize 3", "BeginWrite", "Write", "EndWrite", "drop write"}},
        {"EndWrite", RunAgain, {"SetSize 3", "BeginWrite", "Write", "EndWrite"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.failing + " " + std::to_string(row.result));
        m_callbacks->piece = 2;
        const auto entry = Open(10);
        entry->SetSize(0, m_details, m_cancel);
        Write(*entry, 0, "new");
        m_callbacks->calls.clear();
        m_details->Clear();
        m_callbacks->FailNext(row.failing, row.result);
        EXPECT_EQ(entry->Flush(m_details, m_cancel), row.result);
        EXPECT_EQ(m_callbacks->calls, row.calls);
        EXPECT_EQ(entry->IsUnsaved(), row.result != S_OK);
        if (row.result != S_OK) {
            EXPECT_EQ(Details(), std::wstring(row.failing.begin(), row.failing.end()) + L" is refused");
            EXPECT_EQ(entry->Flush(m_details, m_cancel), S_OK) << "the next save works";
        }
        EXPECT_EQ(m_callbacks->document, "new");
        EXPECT_FALSE(entry->IsUnsaved());
    }
}

TEST_F(CacheEntryTest, MarksTheCopyBeforeTheFirstUnsavedByteUntilTheUploadSucceeded) {
    const auto entry = Open(10);
    const auto marks = [&] {
        Store::Query query(*m_store, "SELECT count(*), max(is_complete) FROM unsaved");
        query.Step();
        return std::pair(query.Integer(0), query.Integer(1));
    };
    using Marks = std::pair<std::int64_t, std::int64_t>;
    ReadAt(*entry, 0, 10);
    EXPECT_EQ(marks(), Marks(0, 0));
    Write(*entry, 0, "x");
    EXPECT_EQ(marks(), Marks(1, 0)) << "the writer is still at it";
    m_callbacks->on_call = [&](const std::string&) { EXPECT_EQ(marks(), Marks(1, 1)) << "all bytes were handed over"; };
    m_callbacks->FailNext("EndWrite", E_FAIL);
    EXPECT_EQ(entry->Flush(m_details, m_cancel), E_FAIL);
    EXPECT_EQ(marks(), Marks(1, 1));
    EXPECT_EQ(Write(*entry, 1, "y"), S_OK);
    EXPECT_EQ(marks(), Marks(1, 0));
    EXPECT_EQ(entry->Flush(m_details, m_cancel), S_OK);
    EXPECT_EQ(marks(), Marks(0, 0));
    EXPECT_TRUE(m_cache->WasUploaded(L"HTTP://S/A.PDF"));
    m_cache->ForgetUpload(L"http://s/a.pdf");
    EXPECT_FALSE(m_cache->WasUploaded(L"http://s/a.pdf"));
}

TEST_F(CacheEntryTest, LeavesTheCopyOnDiskAndOffersItWhenItEndsUnsaved) {
    std::filesystem::path path;
    {
        const auto entry = Open(10);
        Write(*entry, 0, "unsaved");
        path = Utf8FromWide(entry->Path());
        EXPECT_TRUE(m_cache->ListUnsaved().empty()) << "somebody has it open";
    }
    const auto left = m_cache->ListUnsaved();
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0].url, L"http://s/a.pdf");
    EXPECT_EQ(left[0].path, path);
    EXPECT_EQ(left[0].size, 10);
    EXPECT_EQ(left[0].stamp, (Stamp{7, 10}));
    EXPECT_FALSE(left[0].is_complete);
    m_cache->DiscardUnsaved(left[0].id);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(m_cache->ListUnsaved().empty());
}

TEST_F(CacheEntryTest, NamesLocalCopiesHarmlesslyAndForTheUserAlone) {
    struct Row {
        std::wstring title;
        std::string end;
    };
    const Row rows[] = {
        {L"report.pdf", "1-report.pdf"},
        {L"../../etc/passwd", "2-.._.._etc_passwd"},
        {L"a\\b:c\n\"x\"|$.pdf", "3-a_b_c__x__$.pdf"},
        {std::wstring(300, L'ä') + L".pdf", ".pdf"},
        {L"", "5-"},
    };
    for (const Row& row : rows) {
        const auto copy = m_cache->MakeCopy(row.title);
        const std::string name = copy->Path().filename().string();
        EXPECT_EQ(name.substr(name.size() - std::min(name.size(), row.end.size())), row.end);
        EXPECT_LE(name.size(), 130u);
        struct stat facts {};
        ASSERT_EQ(stat(copy->Path().c_str(), &facts), 0);
        EXPECT_EQ(facts.st_mode & 0777, 0600u);
    }
}

} // namespace
