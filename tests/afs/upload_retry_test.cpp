#include <dlfcn.h>

#include "afs/cache_callback.h"
#include "document_session.h"
#include "frame/log_recorder.h"
#include "platform/errors.h"
#include "platform/wininet.h"

namespace {

/// So many uploads to come end with the platform's demand to send them once more, after the server had them.
int g_demands = 0;

} // namespace

// When the platform demands that can't be brought about over a socket at will, so the demand is made here; this program's calls
// come here before they reach the platform's library.
extern "C" BOOL HttpEndRequestW(HINTERNET request, INTERNET_BUFFERSW* buffers, DWORD flags, DWORD_PTR context) {
    static const auto platform = reinterpret_cast<decltype(&HttpEndRequestW)>(dlsym(RTLD_NEXT, "HttpEndRequestW"));
    const BOOL result = platform(request, buffers, flags, context);
    if (result != FALSE && g_demands > 0) {
        --g_demands;
        SetLastError(ERROR_INTERNET_FORCE_RETRY);
        return FALSE;
    }
    return result;
}

namespace {

class UploadRetry : public DocumentSession {
protected:
    UploadRetry() { m_server.Put("Docs/a.pdf", "first"); }
    ~UploadRetry() override { g_demands = 0; }

    /// The warnings about retries, in order.
    static std::vector<std::wstring> Retries(const LogRecorder& log) {
        std::vector<std::wstring> retries;
        for (const std::wstring& message : log.Messages(LogLevel::warning)) {
            if (message.starts_with(L"Need retry")) {
                retries.push_back(message);
            }
        }
        return retries;
    }
};

TEST_F(UploadRetry, SaveIsSentFourTimesAtMostAndStaysUnsavedThen) {
    const ComPtr<KOV::IAFS_Name> ann = Bind(L"ann");
    const ComPtr<KOV::IAFS_File> file = Opened(ann, L"Docs/a.pdf", FileRead | FileWrite);
    WriteAll(file, "second");
    const LogRecorder log(LogLevel::warning);
    m_server.ClearJournal();
    g_demands = 4;
    const Outcome outcome = Flush(file);
    EXPECT_EQ(outcome.result, HRESULT_FROM_WIN32(ERROR_INTERNET_FORCE_RETRY)) << outcome;
    EXPECT_FALSE(outcome.details.empty());
    EXPECT_EQ(m_server.Count("PUT"), 4u);
    EXPECT_EQ(Retries(log),
              (std::vector<std::wstring>{L"Need retry, 3 out of 3 retries left", L"Need retry, 2 out of 3 retries left",
                                         L"Need retry, 1 out of 3 retries left", L"Need retry, 0 out of 3 retries left"}));

    g_demands = 3; // the next save has all its retries again
    EXPECT_EQ(Flush(file).result, S_OK);
    EXPECT_EQ(m_server.Count("PUT"), 8u);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "second");
}

TEST_F(UploadRetry, UploadToBeSentAgainBeginsAtItsStart) {
    const ComPtr<KOV::IAFS_Name> ann = Bind(L"ann");
    const ComPtr<CacheCallback> callback = MakeObject<CacheCallback>(NameOf(ann, L"Docs/a.pdf"));
    ASSERT_EQ(callback->SetSize(3, nullptr, nullptr), S_OK);
    ASSERT_EQ(callback->BeginWrite(nullptr, nullptr), S_OK);
    ASSERT_EQ(callback->Write(0, "abc", 3, nullptr, nullptr, nullptr), S_OK);
    g_demands = 1;
    EXPECT_EQ(callback->EndWrite(nullptr, nullptr), E_SP_RETRY);
    ASSERT_EQ(callback->BeginWrite(nullptr, nullptr), S_OK);
    EXPECT_EQ(callback->Write(3, "abc", 3, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(callback->Write(0, "abc", 3, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(callback->EndWrite(nullptr, nullptr), S_OK);
    EXPECT_EQ(m_server.Read("Docs/a.pdf"), "abc");
}

} // namespace
