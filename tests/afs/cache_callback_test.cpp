#include "afs/cache_callback.h"

#include "document_session.h"
#include "frame/log_recorder.h"

namespace {

constexpr HRESULT end_of_file = MakeHResult(0x80070026);

class CacheCallbackTest : public DocumentSession {
protected:
    void SetUp() override {
        m_server.Put("Docs/a.bin", m_content);
        m_root = Bind(L"ann");
        m_name = NameOf(m_root, L"Docs/a.bin");
        m_callback = MakeObject<CacheCallback>(m_name);
        m_server.ClearJournal();
    }
    void TearDown() override {
        m_callback = nullptr;
        m_name = nullptr;
        m_root = nullptr;
        DocumentSession::TearDown();
    }

    Outcome ReadAt(LONGLONG pos, ULONG size, std::string& out_bytes, KOV::IKOV_Flag* flag = nullptr) {
        out_bytes.assign(size, 0);
        ULONG count = 0;
        const Outcome outcome =
            Run([&](KOV::IString* details) { return m_callback->Read(pos, out_bytes.data(), size, &count, details, flag); });
        out_bytes.resize(count);
        return outcome;
    }
    /// From 0 to the end, in small pieces.
    std::string ReadToEnd() {
        std::string all;
        std::string piece;
        while (ReadAt(static_cast<LONGLONG>(all.size()), 7, piece).result == S_OK) {
            all += piece;
        }
        return all;
    }

    Outcome WriteAt(LONGLONG pos, std::string_view bytes, KOV::IKOV_Flag* flag = nullptr) {
        return Run([&](KOV::IString* details) {
            return m_callback->Write(pos, bytes.data(), static_cast<ULONG>(bytes.size()), nullptr, details, flag);
        });
    }
    Outcome Begin(LONGLONG size) {
        EXPECT_EQ(m_callback->SetSize(size, nullptr, nullptr), S_OK);
        return Run([&](KOV::IString* details) { return m_callback->BeginWrite(details, nullptr); });
    }
    Outcome End(KOV::IKOV_Flag* flag = nullptr) {
        return Run([&](KOV::IString* details) { return m_callback->EndWrite(details, flag); });
    }

    const std::string m_content = "0123456789abcdefghijklmnopqrstuvwxyz";
    const ComPtr<FlagObject> m_set_flag = MakeObject<FlagObject>(true);
    ComPtr<KOV::IAFS_Name> m_root;
    ComPtr<Name> m_name;
    ComPtr<CacheCallback> m_callback;
};

TEST_F(CacheCallbackTest, DownloadIsOneRequestAndEndsWithItsOwnCodeAndMayBeginAnew) {
    std::string bytes;
    EXPECT_EQ(ReadToEnd(), m_content);
    EXPECT_EQ(m_server.Count("GET"), 1u);
    EXPECT_EQ(ReadToEnd(), m_content);
    EXPECT_EQ(ReadAt(0, 100, bytes).result, S_OK);
    EXPECT_EQ(m_server.Count("GET"), 3u);
    std::size_t at = bytes.size();
    while (at < m_content.size()) {
        ASSERT_EQ(ReadAt(static_cast<LONGLONG>(at), 100, bytes).result, S_OK);
        at += bytes.size();
    }
    EXPECT_EQ(ReadAt(static_cast<LONGLONG>(at), 100, bytes).result, end_of_file);
    EXPECT_EQ(bytes, "");
}

TEST_F(CacheCallbackTest, RefusesToReadAtAnotherPosition) {
    const wchar_t* const sentence = L"Requested read position is not equal to current one - random reading is not supported";
    std::string bytes;
    Outcome outcome = ReadAt(5, 1, bytes);
    EXPECT_EQ(outcome.result, E_INVALIDARG);
    EXPECT_EQ(outcome.details, sentence);
    EXPECT_EQ(m_server.Count("GET"), 0u);
    ASSERT_EQ(ReadAt(0, 5, bytes).result, S_OK);
    for (const LONGLONG pos : {0, 4, 6}) {
        EXPECT_EQ(ReadAt(pos, 1, bytes).details, sentence) << pos;
    }
    EXPECT_EQ(ReadAt(5, 5, bytes).result, S_OK);
    EXPECT_EQ(bytes, "56789");
    EXPECT_EQ(m_callback->Read(10, nullptr, 1, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(m_callback->Read(10, bytes.data(), 0, nullptr, nullptr, nullptr), E_INVALIDARG);
}

TEST_F(CacheCallbackTest, CancelEndsADownloadAndTheNextBeginsAtTheStart) {
    std::string bytes;
    ASSERT_EQ(ReadAt(0, 5, bytes).result, S_OK);
    EXPECT_EQ(ReadAt(5, 5, bytes, m_set_flag).result, E_CANCELED);
    EXPECT_EQ(ReadAt(5, 5, bytes).result, E_INVALIDARG);
    EXPECT_EQ(ReadToEnd(), m_content);
}

TEST_F(CacheCallbackTest, BodyThatIsCutShortIsAFailureAndNoEnd) {
    m_server.Put("Docs/a.bin", std::string(500'000, 'x'));
    m_server.Once("GET * truncate");
    std::string bytes;
    LONGLONG pos = 0;
    Outcome outcome;
    while ((outcome = ReadAt(pos, 65536, bytes)).result == S_OK) {
        pos += static_cast<LONGLONG>(bytes.size());
    }
    EXPECT_LT(pos, 500'000);
    EXPECT_LT(outcome.result, 0);
    EXPECT_NE(outcome.result, end_of_file);
    EXPECT_FALSE(outcome.details.empty());
}

TEST_F(CacheCallbackTest, ServersRefusalOfADownloadReachesTheHostInWords) {
    m_server.Once("GET * status=503");
    std::string bytes;
    const Outcome outcome = ReadAt(0, 10, bytes);
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_NE(outcome.details.find(L"HTTP 503"), std::wstring::npos) << outcome;
    EXPECT_EQ(ReadToEnd(), m_content);
}

TEST_F(CacheCallbackTest, SizeComesFreshFromTheServer) {
    LONGLONG size = 0;
    EXPECT_EQ(m_callback->GetSize(&size, nullptr, nullptr), S_OK);
    EXPECT_EQ(size, static_cast<LONGLONG>(m_content.size()));
    m_server.Touch("Docs/a.bin", "short");
    EXPECT_EQ(m_callback->GetSize(&size, nullptr, nullptr), S_OK);
    EXPECT_EQ(size, 5);
    EXPECT_EQ(m_callback->GetSize(nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(m_callback->GetSize(&size, nullptr, m_set_flag), E_CANCELED);
}

TEST_F(CacheCallbackTest, FolderIsNoFile) {
    m_server.MakeFolder("Docs/sub");
    const ComPtr<Name> folder = NameOf(m_root, L"Docs/sub");
    folder->BindObject();
    m_callback = MakeObject<CacheCallback>(folder);
    std::string bytes;
    EXPECT_EQ(ReadAt(0, 1, bytes).result, MakeHResult(0x80070002));
    EXPECT_EQ(Begin(0).result, MakeHResult(0x80070002));
}

TEST_F(CacheCallbackTest, UploadIsOnePutOfTheAnnouncedLength) {
    ASSERT_EQ(Begin(9).result, S_OK);
    EXPECT_EQ(WriteAt(0, "new ").result, S_OK);
    EXPECT_EQ(WriteAt(4, "bytes").result, S_OK);
    EXPECT_EQ(End().result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.bin"), "new bytes");
    EXPECT_EQ(m_server.Count("PUT"), 1u);

    ASSERT_EQ(Begin(0).result, S_OK);
    EXPECT_EQ(End(m_set_flag).result, S_OK); // nothing was left to send, so the cancel comes too late
    EXPECT_EQ(m_server.Read("Docs/a.bin"), "");
}

TEST_F(CacheCallbackTest, UploadRefusesWhatIsOutOfOrder) {
    Outcome outcome;
    {
        const LogRecorder log(LogLevel::error);
        outcome = WriteAt(0, "x");
        ASSERT_FALSE(log.Messages(LogLevel::error).empty());
        EXPECT_EQ(log.Messages(LogLevel::error).front(),
                  L"Expression 'm_write_context != nullptr' caused throwing 'Write is called without prior BeginWrite'");
    }
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_EQ(outcome.details, L"Write is called without prior BeginWrite");
    EXPECT_EQ(End().result, E_FAIL);

    ASSERT_EQ(Begin(4).result, S_OK);
    ASSERT_EQ(WriteAt(0, "ab").result, S_OK);
    outcome = WriteAt(0, "ab");
    EXPECT_EQ(outcome.result, E_INVALIDARG);
    EXPECT_EQ(outcome.details, L"Requested write position is not same as previous - random writing is not supported");
    EXPECT_EQ(m_callback->Write(2, nullptr, 1, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(m_callback->Write(2, "c", 0, nullptr, nullptr, nullptr), E_INVALIDARG);
    // None of that ended the upload.
    EXPECT_EQ(WriteAt(2, "cd").result, S_OK);
    EXPECT_EQ(End().result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.bin"), "abcd");
    EXPECT_EQ(m_callback->SetSize(-1, nullptr, nullptr), E_INVALIDARG);
}

TEST_F(CacheCallbackTest, CancelInTheMiddleOfAnUploadLeavesTheServersFile) {
    ASSERT_EQ(Begin(9).result, S_OK);
    ASSERT_EQ(WriteAt(0, "new ").result, S_OK);
    EXPECT_EQ(End(m_set_flag).result, E_CANCELED);
    EXPECT_EQ(WriteAt(4, "bytes").result, E_FAIL);
    EXPECT_EQ(End().result, E_FAIL);
    EXPECT_EQ(m_server.Read("Docs/a.bin"), m_content);

    ASSERT_EQ(Begin(9).result, S_OK);
    ASSERT_EQ(WriteAt(0, "new ").result, S_OK);
    // How a host gives an upload up.
    EXPECT_EQ(m_callback->Write(0, nullptr, 0, nullptr, nullptr, m_set_flag), E_CANCELED);
    EXPECT_EQ(End().result, E_FAIL);
    EXPECT_EQ(m_server.Read("Docs/a.bin"), m_content);
}

TEST_F(CacheCallbackTest, RefusedUploadReachesTheHostInWordsAndTheNextRunsOnTheSameHandle) {
    m_server.Once("PUT * status=507");
    ASSERT_EQ(Begin(3).result, S_OK);
    ASSERT_EQ(WriteAt(0, "abc").result, S_OK);
    const Outcome outcome = End();
    EXPECT_EQ(outcome.result, E_FAIL);
    EXPECT_NE(outcome.details.find(L"HTTP 507"), std::wstring::npos) << outcome;

    ASSERT_EQ(Begin(4).result, S_OK);
    ASSERT_EQ(WriteAt(0, "next").result, S_OK);
    EXPECT_EQ(End().result, S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.bin"), "next");
}

} // namespace
