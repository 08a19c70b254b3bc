#include "host/tools/thread_safe_call.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "recording_host.h"

namespace {

TEST(ThreadSafeCall, GivesTheFunctionsResultAndTurnsAnExceptionIntoAFailure) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    EXPECT_EQ(ThreadSafeCall::Call(host, [] { return S_FALSE; }), S_FALSE);
    EXPECT_EQ(ThreadSafeCall::Call(host, []() -> HRESULT { throw std::runtime_error("no"); }), E_FAIL);
    EXPECT_EQ(ThreadSafeCall::Call(nullptr, [] { return S_OK; }), E_INVALIDARG);
}

TEST(ThreadSafeCall, LetsGoOfWhatTheFunctionHolds) {
    const ComPtr<RecordingHost> host = MakeObject<RecordingHost>();
    const auto held = std::make_shared<int>(1);
    ThreadSafeCall::Call(host, [held] { return S_OK; });
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
