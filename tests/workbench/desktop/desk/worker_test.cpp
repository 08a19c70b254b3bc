#include <future>

#include <QTest>
#include <gtest/gtest.h>

#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/worker.h"

namespace {

class Work : public testing::Test {
protected:
    bool Wait(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30'000); }

    MainLoop loop;
    MessagePump pump{loop};
};

} // namespace

TEST_F(Work, JobsRunInTheirOrderAndAreHeardOfOnTheMainThread) {
    Worker worker(loop);
    std::vector<int> order;
    std::vector<int> heard;
    for (int job = 0; job < 20; ++job) {
        worker.Post({[&order, job](KOV::IKOV_Flag*) { order.push_back(job); },
                     [&, job](const Outcome&) {
                         EXPECT_TRUE(loop.IsMainThread());
                         heard.push_back(job);
                     },
                     nullptr});
    }
    EXPECT_TRUE(Wait([&] { return worker.IsIdle(); }));
    EXPECT_EQ(order, heard);
    EXPECT_EQ(heard.size(), 20u);
}

TEST_F(Work, AFailureBecomesWords) {
    Worker worker(loop);
    const struct {
        std::function<void()> fails;
        HRESULT result;
        std::wstring message;
    } rows[] = {
        {[] {
             throw Failure{E_ACCESSDENIED, L"no"};
         },
         E_ACCESSDENIED, L"no"},
        {[] { throw HostException(E_INVALIDARG, "wrong – so"); }, E_INVALIDARG, L"wrong – so"},
        {[] { throw std::runtime_error("odd"); }, E_FAIL, L"Something went wrong: odd"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunAndTurn(
            worker, [&](KOV::IKOV_Flag*) { row.fails(); }, nullptr);
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_EQ(outcome.message, row.message);
    }
}

TEST_F(Work, CancelReachesTheJobThatRunsAndThoseThatWait) {
    Worker worker(loop);
    std::promise<void> began;
    std::promise<void> go_on;
    bool first = false;
    bool second = false;
    worker.Post({[&](KOV::IKOV_Flag* cancel) {
                     began.set_value();
                     go_on.get_future().wait();
                     first = IsSet(cancel);
                 },
                 {},
                 nullptr});
    worker.Post({[&](KOV::IKOV_Flag* cancel) { second = IsSet(cancel); }, {}, nullptr});
    began.get_future().wait();
    worker.Cancel();
    go_on.set_value();
    EXPECT_TRUE(Wait([&] { return worker.IsIdle(); }));
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

TEST_F(Work, TheMainThreadTurnsWhileItWaits) {
    Worker worker(loop);
    bool has_turned = false;
    const Outcome outcome = RunAndTurn(
        worker,
        [&](KOV::IKOV_Flag*) {
            // Would wait for ever for a main thread that waits for this.
            EXPECT_EQ(loop.Call(
                          [&] {
                              has_turned = true;
                              return S_OK;
                          },
                          -1),
                      S_OK);
        },
        nullptr);
    EXPECT_TRUE(outcome.HasSucceeded());
    EXPECT_TRUE(has_turned);
}

TEST_F(Work, WhatTheWorkHeldIsGoneBeforeAnybodyHears) {
    Worker worker(loop);
    const auto held = std::make_shared<int>(1);
    long uses = 0;
    worker.Post({[held](KOV::IKOV_Flag*) {}, [&](const Outcome&) { uses = held.use_count(); }, nullptr});
    EXPECT_TRUE(Wait([&] { return uses != 0; }));
    EXPECT_EQ(uses, 1);
}
