#include <gtest/gtest.h>

#include <future>

#include "platform/errors.h"
#include "workbench/core/main_loop.h"

namespace {

TEST(MainLoop, RunsCallsOfOtherThreadsOnTheMainThreadAndGivesTheirResults) {
    MainLoop loop;
    const auto main_thread = std::this_thread::get_id();
    std::vector<int> order;
    EXPECT_TRUE(loop.RunWith([&] {
        EXPECT_NE(std::this_thread::get_id(), main_thread);
        loop.Post([&] { order.push_back(1); });
        EXPECT_EQ(loop.Call(
                      [&] {
                          EXPECT_EQ(std::this_thread::get_id(), main_thread);
                          order.push_back(2);
                          return loop.Call([&] { return S_FALSE; }, -1);
                      },
                      -1),
                  S_FALSE);
        order.push_back(3);
    }));
    EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST(MainLoop, WithdrawsACallThatDidNotBeginInTime) {
    MainLoop loop;
    bool has_run = false;
    std::thread([&] {
        EXPECT_EQ(loop.Call(
                      [&] {
                          has_run = true;
                          return S_OK;
                      },
                      1),
                  HRESULT_FROM_WIN32(ERROR_TIMEOUT));
    }).join();
    loop.Drain();
    EXPECT_FALSE(has_run);
}

TEST(MainLoop, RefusesCallsOfOtherThreadsAtTheEndOfTheProgram) {
    MainLoop loop;
    bool has_run = false;
    const auto call = [&] {
        return loop.Call(
            [&] {
                has_run = true;
                return S_OK;
            },
            -1);
    };
    auto waiting = std::async(std::launch::async, call);
    while (MsgWaitForMultipleObjects(0, nullptr, FALSE, 1000, QS_ALLINPUT) != WAIT_OBJECT_0) {
    }
    loop.RefuseCalls(true);
    EXPECT_EQ(waiting.get(), E_ABORT);
    EXPECT_EQ(std::async(std::launch::async, call).get(), E_ABORT);
    loop.Drain();
    EXPECT_FALSE(has_run);
    EXPECT_EQ(call(), S_OK) << "the main thread calls itself";
    loop.RefuseCalls(false);
    loop.RunWith([&] { EXPECT_EQ(call(), S_OK); });
}

TEST(MainLoop, EndsCallsThatStillWait) {
    auto loop = std::make_unique<MainLoop>();
    std::promise<void> posted;
    auto result = std::async(std::launch::async, [&] {
        posted.set_value();
        return loop->Call([] { return S_OK; }, -1);
    });
    posted.get_future().wait();
    // The message of the call tells that it waits.
    while (MsgWaitForMultipleObjects(0, nullptr, FALSE, 1000, QS_ALLINPUT) != WAIT_OBJECT_0) {
    }
    loop.reset();
    EXPECT_EQ(result.get(), E_ABORT);
}

TEST(MainLoop, PassesOutWhatTheWorkThrew) {
    MainLoop loop;
    EXPECT_THROW(loop.RunWith([] { throw std::runtime_error("work"); }), std::runtime_error);
}

TEST(MainLoop, ComesBackAtTheDeadlineWhileTheWorkGoesOn) {
    auto* const loop = new MainLoop;
    const auto released = std::make_shared<std::promise<void>>();
    EXPECT_FALSE(loop->RunWith([released] { released->get_future().wait(); }, MainLoop::Clock::now()));
    released->set_value();
    // The work's end wakes the loop, which then may go.
    loop->Run();
    delete loop;
}

TEST(MainLoop, HandsOnTheMessagesOfThePlatform) {
    MainLoop loop;
    std::vector<UINT> messages;
    loop.on_message = [&](const MSG& message) { messages.push_back(message.message); };
    PostMessageW(nullptr, WM_SETTEXT, 0, 0);
    loop.Post([&] { loop.Quit(); });
    loop.Run();
    EXPECT_EQ(messages, std::vector<UINT>{WM_SETTEXT});
}

} // namespace
