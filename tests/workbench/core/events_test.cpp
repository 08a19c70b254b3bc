// Named events and timers.

#include <gtest/gtest.h>

#include "scripted_handlers.h"
#include "workbench/core/event_server.h"
#include "workbench/core/timers.h"

namespace {

struct Events : testing::Test {
    ComPtr<ScriptedEventHandler> Handler(int number, std::function<void()> also = {}, HRESULT result = S_OK) {
        return MakeObject<ScriptedEventHandler>([this, number, also = std::move(also), result](DWORD, IUnknown*) {
            heard.push_back(number);
            if (also) {
                also();
            }
            return result;
        });
    }

    NameIds ids;
    ComPtr<EventServer> server = MakeObject<EventServer>(ids);
    DWORD event = *ids.Find(L"e.one", true);
    std::vector<int> heard;
};

TEST_F(Events, ReachTheirHandlersInOrderAndTellTheFirstFailure) {
    const auto first = Handler(1);
    const auto second = Handler(2, {}, E_INVALIDARG);
    const auto third = Handler(3, {}, E_FAIL);
    for (const auto& handler : {first, second, third, first}) {
        EXPECT_EQ(server->Subscribe(event, handler, 0), S_OK);
    }
    EXPECT_EQ(server->Subscribe(*ids.Find(L"e.other", true), third, 0), S_OK);
    EXPECT_EQ(server->Raise(L"e.one", server), E_INVALIDARG);
    EXPECT_EQ(heard, (std::vector{1, 2, 3})) << "each once";
    EXPECT_EQ(server->Unsubscribe(event, second), S_OK);
    EXPECT_EQ(server->Unsubscribe(event, second), S_FALSE);
    heard.clear();
    EXPECT_EQ(server->Raise(event, server), E_FAIL);
    EXPECT_EQ(heard, (std::vector{1, 3}));
    EXPECT_EQ(server->Raise(L"e.nobody", server), S_OK);
    EXPECT_EQ(server->Subscribe(event, nullptr, 0), E_INVALIDARG);
}

TEST_F(Events, MayBeLeftAndJoinedByAHandlerThatIsCalled) {
    const auto late = Handler(3);
    const auto left = Handler(2);
    ComPtr<ScriptedEventHandler> self;
    self = Handler(1, [&] {
        server->Unsubscribe(event, self);
        server->Unsubscribe(event, left);
        server->Subscribe(event, late, 0);
    });
    server->Subscribe(event, self, 0);
    server->Subscribe(event, left, 0);
    EXPECT_EQ(server->Raise(event, server), S_OK);
    EXPECT_EQ(heard, (std::vector{1}));
    EXPECT_EQ(server->Raise(event, server), S_OK);
    EXPECT_EQ(heard, (std::vector{1, 3}));
    const auto clears = Handler(4, [&] { server->Clear(); });
    server->Clear();
    server->Subscribe(event, clears, 0);
    server->Subscribe(event, late, 0);
    heard.clear();
    EXPECT_EQ(server->Raise(event, server), S_OK);
    EXPECT_EQ(heard, (std::vector{4}));
    self = nullptr;
}

TEST(Timers, RunOnceFromTheLoopWithTheNumberThatWasGiven) {
    MainLoop loop;
    Timers timers(loop);
    std::vector<DWORD> fired;
    DWORD first = 0;
    DWORD second = 0;
    const auto handler = MakeObject<ScriptedTimerHandler>([&](DWORD id) {
        EXPECT_NE(first, 0u) << "stored before";
        EXPECT_TRUE(loop.IsMainThread());
        fired.push_back(id);
        if (fired.size() == 2) {
            loop.Quit();
        }
    });
    timers.Start(handler, 0, &first);
    EXPECT_TRUE(fired.empty()) << "never inside the call";
    EXPECT_TRUE(loop.RunWith([&] { timers.Start(handler, 2, &second); }));
    if (fired.size() < 2) {
        loop.Run();
    }
    EXPECT_EQ(fired, (std::vector{first, second}));
    EXPECT_NE(first, second);
    EXPECT_FALSE(timers.Stop(first)) << "it has run";
}

TEST(Timers, DontRunWhenTheyWereStopped) {
    MainLoop loop;
    auto timers = std::make_unique<Timers>(loop);
    DWORD stopped = 0;
    DWORD last = 0;
    DWORD forgotten = 0;
    const auto never = MakeObject<ScriptedTimerHandler>([](DWORD) { ADD_FAILURE() << "was stopped"; });
    timers->Start(never, 0, &stopped);
    EXPECT_TRUE(timers->Stop(stopped));
    timers->Start(MakeObject<ScriptedTimerHandler>([&](DWORD) { loop.Quit(); }), 1, &last);
    loop.Run();
    timers->Start(never, 0, &forgotten);
    timers.reset();
    loop.Drain();
    never->AddRef();
    EXPECT_EQ(never->Release(), 1u) << "the last of its references is ours";
}

} // namespace
