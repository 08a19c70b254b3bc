// The worker beside a window, and the way of its results through the message queue.

#include <latch>

#include <gtest/gtest.h>

#include "dialog/dialog_worker.h"
#include "dialog/leftovers.h"
#include "support/unanswered.h"
#include "workbench/core/main_loop.h"

namespace {

/// Its main thread is the test's, as far as the test turns `loop`.
class LoopHost final : public UnansweredHost {
public:
    HRESULT ThreadSafeCall(KOV::IKOV_ThreadSafeCallback* callback, LONG timeout) override {
        called.count_down();
        return loop.Call([callback] { return callback->OnCallback(); }, timeout);
    }

    MainLoop loop;
    std::latch called{1};
};

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
    bool Start(
        std::function<void()> function, std::function<void()> complete = [] {}) {
        return worker.Start(window, std::move(function), L"work", {std::move(complete), L"done"});
    }

    HWND window = CreateHostWindow();
    ComPtr<LoopHost> host = MakeObject<LoopHost>();
    DialogWorker worker{host};
    /// Counts who holds it, so that what is left behind is seen.
    std::shared_ptr<int> token = std::make_shared<int>(0);
};

TEST_F(WorkerTest, BringsAResultBackAndIsFreeForTheNext) {
    for (int round = 0; round < 3; ++round) {
        int step = 0;
        ASSERT_TRUE(Start([&step, token = token] { step = 1; },
                          [&step, token = token] {
                              EXPECT_EQ(step, 1);
                              step = 2;
                          }));
        EXPECT_TRUE(worker.IsUnderWay());
        auto context = worker.Take(NextParameter());
        ASSERT_NE(context, nullptr);
        EXPECT_EQ(context->name, L"done");
        EXPECT_FALSE(worker.IsUnderWay());
        EXPECT_EQ(step, 1);
        context->function();
        EXPECT_EQ(step, 2);
        context.reset();
        EXPECT_EQ(token.use_count(), 1) << "something of the work is left";
    }
}

TEST_F(WorkerTest, RefusesASecondTaskUntilTheResultOfTheFirstWasTaken) {
    std::latch may_end(1);
    ASSERT_TRUE(Start([&] { may_end.wait(); }));
    EXPECT_TRUE(worker.IsUnderWay());
    const auto never = [] { ADD_FAILURE() << "a second task ran"; };
    EXPECT_FALSE(Start(never));
    may_end.count_down();
    const std::intptr_t parameter = NextParameter();
    EXPECT_FALSE(Start(never));
    EXPECT_TRUE(worker.IsUnderWay());
    EXPECT_NE(worker.Take(parameter), nullptr);
    EXPECT_FALSE(worker.IsUnderWay());
}

TEST_F(WorkerTest, TakesNothingForAParameterThatItNeverPosted) {
    EXPECT_EQ(worker.Take(0), nullptr);
    EXPECT_EQ(worker.Take(0x1234), nullptr);
    ASSERT_TRUE(Start([] {}));
    const std::intptr_t parameter = NextParameter();
    EXPECT_EQ(worker.Take(parameter + 8), nullptr);
    EXPECT_NE(worker.Take(parameter), nullptr);
    EXPECT_EQ(worker.Take(parameter), nullptr);
}

TEST_F(WorkerTest, BringsTheResultOfATaskThatThrowsToo) {
    bool is_done = false;
    ASSERT_TRUE(Start([] { throw std::bad_alloc(); }, [&] { is_done = true; }));
    const auto context = worker.Take(NextParameter());
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(RunGuarded(context->function), S_OK);
    EXPECT_TRUE(is_done);
    EXPECT_EQ(RunGuarded([] { throw std::bad_alloc(); }), E_OUTOFMEMORY);
}

TEST_F(WorkerTest, BringsAResultBackThroughAQueueThatWasFull) {
    while (PostMessageW(nullptr, 1, 0, 0) != FALSE) {
    }
    ASSERT_TRUE(Start([] {}));
    host->called.wait(); // before that it had no place in the queue
    std::intptr_t parameter = 0;
    host->loop.on_message = [&](const MSG& message) {
        if (message.hwnd == window) {
            parameter = static_cast<std::intptr_t>(message.wParam);
            host->loop.Quit();
        }
    };
    host->loop.Run();
    EXPECT_NE(worker.Take(parameter), nullptr);
}

TEST_F(WorkerTest, LeavesATaskWhoseWindowIsGoneToWhoeverWaits) {
    std::latch may_end(1);
    ASSERT_TRUE(Start([&, token = token] { may_end.wait(); }, [token = token] { ADD_FAILURE() << "called without a window"; }));
    DestroyWindow(window);
    {
        Leftovers leftovers;
        leftovers.Take(worker.Leave());
        EXPECT_FALSE(worker.IsUnderWay()) << "it is somebody else's now";
        leftovers.Take(std::make_shared<std::shared_ptr<int>>(token)); // waits for nothing here
        may_end.count_down();
    }
    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(worker.Leave(), nullptr);
}

TEST_F(WorkerTest, IsNoLongerUnderWayWhenNobodyHearsOfItsEnd) {
    std::latch may_end(1);
    ASSERT_TRUE(Start([&, token = token] { may_end.wait(); }, [token = token] {}));
    DestroyWindow(window);
    may_end.count_down();
    while (worker.IsUnderWay()) {
        std::this_thread::yield();
    }
    EXPECT_NE(worker.Leave(), nullptr);
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(WorkerTest, FreesAResultThatWasPostedAndNeverTaken) {
    ASSERT_TRUE(Start([token = token] {}, [token = token] {}));
    NextParameter();
    worker.Leave().reset();
    EXPECT_FALSE(worker.IsUnderWay());
    EXPECT_EQ(token.use_count(), 1);
}

} // namespace
