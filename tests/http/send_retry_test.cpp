// What is sent again when the transport asks for it.

#include <dlfcn.h>

#include <vector>

#include <gtest/gtest.h>

#include "frame/diagnostics/exceptions.h"
#include "frame/log_recorder.h"
#include "http/served_session.h"
#include "platform/errors.h"

namespace {

/// The errors with which the sends to come fail before anything reached the server.
std::vector<DWORD> g_failures;
int g_sends = 0;

bool Fails() {
    ++g_sends;
    if (g_failures.empty()) {
        return false;
    }
    SetLastError(g_failures.front());
    g_failures.erase(g_failures.begin());
    return true;
}

} // namespace

// When the platform asks for a retry can't be brought about over a socket at will, so it is asked for here; this program's calls
// come here before they reach the platform's library.
extern "C" BOOL HttpSendRequestW(HINTERNET request, LPCWSTR headers, DWORD headers_length, LPVOID body, DWORD body_length) {
    static const auto platform = reinterpret_cast<decltype(&HttpSendRequestW)>(dlsym(RTLD_NEXT, "HttpSendRequestW"));
    return Fails() ? FALSE : platform(request, headers, headers_length, body, body_length);
}

extern "C" BOOL HttpSendRequestExW(HINTERNET request, INTERNET_BUFFERSW* in, INTERNET_BUFFERSW* out, DWORD flags,
                                   DWORD_PTR context) {
    static const auto platform = reinterpret_cast<decltype(&HttpSendRequestExW)>(dlsym(RTLD_NEXT, "HttpSendRequestExW"));
    return Fails() ? FALSE : platform(request, in, out, flags, context);
}

namespace {

struct Row {
    const char* what;
    std::vector<DWORD> failures;
    int sends;
    DWORD error;
    std::vector<std::wstring> lefts;
};

const Row rows[] = {
    {"once", {ERROR_INTERNET_FORCE_RETRY}, 2, 0, {L"2"}},
    {"twice", {ERROR_RETRY, ERROR_INTERNET_FORCE_RETRY}, 3, 0, {L"2", L"1"}},
    {"for ever", {ERROR_RETRY, ERROR_RETRY, ERROR_RETRY, ERROR_RETRY}, 3, ERROR_RETRY, {L"2", L"1"}},
    {"not asked for", {ERROR_INTERNET_NAME_NOT_RESOLVED}, 1, ERROR_INTERNET_NAME_NOT_RESOLVED, {}},
    {"asked for, then not", {ERROR_RETRY, ERROR_INTERNET_TIMEOUT}, 2, ERROR_INTERNET_TIMEOUT, {L"2"}},
};

/// Runs `send` under each row and looks at the number of sends, the outcome and the log.
template <class Send>
void Check(const std::wstring& operation, Send send) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const LogRecorder log(LogLevel::information);
        g_failures = row.failures;
        g_sends = 0;
        DWORD error = 0;
        try {
            send();
        } catch (const ApiException& exception) {
            error = exception.error;
        }
        g_failures.clear();
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(g_sends, row.sends);
        std::vector<std::wstring> lines;
        for (const std::wstring& left : row.lefts) {
            lines.push_back(operation + L" needs to be retried, " + left + L" retries left");
        }
        EXPECT_EQ(log.Messages(LogLevel::information), lines);
    }
}

TEST(SendRetry, RequestIsSentThreeTimesAtMost) {
    TrialServer server;
    const auto session = SessionOn(server);
    Check(L"HttpSendRequest", [&] { Get(*session, L""); });
}

TEST(SendRetry, UploadIsBegunThreeTimesAtMost) {
    TrialServer server;
    const auto session = SessionOn(server);
    Check(L"HttpSendRequestEx", [&] { session->CreateRequest(L"a.bin", Http::accept_any, 3); });
}

} // namespace
