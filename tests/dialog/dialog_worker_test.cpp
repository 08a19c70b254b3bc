// The worker beside a window, and the way of its results through the message queue.

#include <atomic>
#include <latch>

#include <gtest/gtest.h>

#include "dialog/dialog_worker.h"
#include "platform/errors.h"
#include "platform/windows_messages.h"

namespace {

class WorkerTest : public testing::Test {
protected:
    ~WorkerTest() override { DestroyWindow(window); }

    /// The next message to the window, as the window's loop would get it.
    std::intptr_t NextParameter() {
        MSG message{};
        while (!PeekMessageW(&message, window, 0, 0, PM_REMOVE)) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, INFINITE, QS_ALLINPUT);
        }
        EXPECT_EQ(message.message, EventCodes::async_complete);
        return static_cast<std::intptr_t>(message.wParam);
    }

    HWND window = CreateHostWindow();
    DialogWorker worker;
    /// Counts who holds it, so that what is left behind is seen.
    std::shared_ptr<int> token = std::make_shared<int>(0);
};

TEST_F(WorkerTest, BringsAResultBackAndIsFreeForTheNext) {
    for (int round = 0; round < 3; ++round) {
        bool is_done = false;
        ASSERT_TRUE(worker.Start(
            [this, &is_done, token = token] {
                EXPECT_EQ(worker.Complete(
                              window, [&is_done, token] { is_done = true; }, L"done"),
                          S_OK);
            },
            L"work"));
        auto context = worker.Take(NextParameter());
        ASSERT_NE(context, nullptr);
        EXPECT_FALSE(worker.IsUnderWay());
        EXPECT_FALSE(is_done);
        context->function();
        EXPECT_TRUE(is_done);
        context.reset();
        EXPECT_EQ(token.use_count(), 1) << "something of the work is left";
    }
}

TEST_F(WorkerTest, RefusesASecondTaskUntilTheResultOfTheFirstWasTaken) {
    std::latch may_end(1);
    ASSERT_TRUE(worker.Start(
        [&] {
            may_end.wait();
            worker.Complete(
                window, [] {}, L"");
        },
        L"first"));
    EXPECT_TRUE(worker.IsUnderWay());
    const auto never = [] { ADD_FAILURE() << "a second task ran"; };
    EXPECT_FALSE(worker.Start(never, L"second"));
    may_end.count_down();
    const std::intptr_t parameter = NextParameter();
    EXPECT_FALSE(worker.Start(never, L"third"));
    EXPECT_TRUE(worker.IsUnderWay());
    EXPECT_NE(worker.Take(parameter), nullptr);
    EXPECT_FALSE(worker.IsUnderWay());
}

TEST_F(WorkerTest, TakesNothingForAParameterThatItNeverPosted) {
    EXPECT_EQ(worker.Take(0), nullptr);
    EXPECT_EQ(worker.Take(0x1234), nullptr);
    ASSERT_TRUE(worker.Start(
        [&] {
            worker.Complete(
                window, [] {}, L"");
        },
        L""));
    const std::intptr_t parameter = NextParameter();
    EXPECT_EQ(worker.Take(parameter + 8), nullptr);
    EXPECT_NE(worker.Take(parameter), nullptr);
    EXPECT_EQ(worker.Take(parameter), nullptr);
}

TEST_F(WorkerTest, FreesAResultWhoseWindowIsGone) {
    std::latch may_end(1);
    std::atomic<HRESULT> result = S_OK;
    ASSERT_TRUE(worker.Start(
        [&, token = token] {
            may_end.wait();
            result = worker.Complete(
                window, [token] { ADD_FAILURE() << "called without a window"; }, L"");
        },
        L""));
    DestroyWindow(window);
    may_end.count_down();
    worker.End();
    EXPECT_EQ(result, HRESULT_FROM_WIN32(ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_FALSE(worker.IsUnderWay());
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(WorkerTest, FreesAResultThatWasPostedAndNeverTaken) {
    ASSERT_TRUE(worker.Start(
        [&, token = token] {
            worker.Complete(
                window, [token] {}, L"");
        },
        L""));
    NextParameter();
    worker.End();
    EXPECT_FALSE(worker.IsUnderWay());
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(WorkerTest, SurvivesATaskThatThrows) {
    ASSERT_TRUE(worker.Start([] { throw std::bad_alloc(); }, L"throws"));
    worker.End();
    EXPECT_FALSE(worker.IsUnderWay());
}

} // namespace
