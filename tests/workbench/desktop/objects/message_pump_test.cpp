// Qt's loop as the host's loop: what other threads hand over, in their order, in nested loops too.

#include <thread>

#include <QEventLoop>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

#include "host/tools/window_bases.h"
#include "platform/windows_messages.h"
#include "support/unanswered.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/window_core.h"

namespace {

class Listener final : public KOV::uiCoObjImplT<Listener, KOV::IUIX_ObjImpl> {
public:
    std::function<void(const KOV::UiEvent&)> on_event;
    HRESULT OnEvent(KOV::UiEvent* io_event) override {
        on_event(*io_event);
        return S_OK;
    }
};

class PumpTest : public testing::Test {
protected:
    PumpTest() {
        m_listener->on_event = [this](const KOV::UiEvent& event) { m_heard.push_back(static_cast<int>(event.parameter)); };
        m_window->SetImplementation(m_listener);
    }
    ~PumpTest() override { m_window->Destroy(); }
    void Post(int number) { EXPECT_TRUE(PostMessageW(m_window->Handle(), 6548, static_cast<WPARAM>(number), 0)); }

    /// Each turn of Qt's loop does one thing, so that a crowd of messages never keeps a person's input out.
    void Turn() {
        for (int turn = 0; turn < 10; ++turn) {
            QCoreApplication::processEvents();
        }
    }

    const ComPtr<UnansweredHost> m_host = MakeObject<UnansweredHost>();
    MainLoop m_loop;
    QWidget m_widget;
    std::shared_ptr<WindowCore> m_window = WindowCore::Create(&m_widget, {m_host.Get(), nullptr});
    const ComPtr<Listener> m_listener = MakeObject<Listener>();
    std::vector<int> m_heard;
};

} // namespace

TEST_F(PumpTest, HandsOutWhatCameBeforeItWasMade) {
    Post(1);
    m_loop.Post([&] { m_heard.push_back(2); });
    const MessagePump pump(m_loop);
    Turn();
    EXPECT_EQ(m_heard, std::vector<int>({1, 2}));
}

TEST_F(PumpTest, KeepsTheOrderOfTasksAndMessagesOverNestedLoops) {
    const MessagePump pump(m_loop);
    QEventLoop loop;
    m_loop.Post([&] {
        m_heard.push_back(0);
        QEventLoop nested;
        m_loop.Post([&] { nested.quit(); });
        nested.exec();
        m_heard.push_back(100);
        m_loop.Post([&] { loop.quit(); });
    });
    std::thread worker([&] {
        for (int number = 1; number < 40; number += 2) {
            Post(number);
            m_loop.Post([&, number] { m_heard.push_back(number + 1); });
        }
    });
    worker.join(); // all of it waits: the nested loop finds it
    loop.exec();
    std::vector<int> expected{0};
    for (int number = 1; number <= 40; ++number) {
        expected.push_back(number);
    }
    expected.push_back(100);
    EXPECT_EQ(m_heard, expected);
}

TEST_F(PumpTest, RunsACallOfAnotherThreadAndGivesItsResult) {
    const MessagePump pump(m_loop);
    QEventLoop loop;
    HRESULT result = S_OK;
    std::thread worker([&] {
        result = m_loop.Call([&] { return m_loop.IsMainThread() ? S_FALSE : E_FAIL; }, -1);
        m_loop.Post([&] { loop.quit(); });
    });
    loop.exec();
    worker.join();
    EXPECT_EQ(result, S_FALSE);
}

TEST_F(PumpTest, DropsAMessageWhoseWindowDiesBeforeIt) {
    const MessagePump pump(m_loop);
    m_listener->on_event = [this](const KOV::UiEvent& event) {
        m_heard.push_back(static_cast<int>(event.parameter));
        m_window->Destroy();
    };
    Post(1);
    Post(2);
    Turn();
    EXPECT_EQ(m_heard, std::vector<int>({1}));
}

TEST_F(PumpTest, ShowsAndHidesAWindowByItsHandle) {
    const MessagePump pump(m_loop);
    ShowWindow(m_window->Handle(), SW_SHOW);
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_widget.isVisible());
    ShowWindow(m_window->Handle(), SW_HIDE);
    QCoreApplication::processEvents();
    EXPECT_FALSE(m_widget.isVisible());
    EXPECT_TRUE(m_heard.empty()) << "these are the host's affair";
}

TEST_F(PumpTest, LeavesTheLoopToOthersWhenItEnds) {
    { const MessagePump pump(m_loop); }
    Post(1);
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_heard.empty());
    m_loop.Drain(); // nobody takes messages now
    EXPECT_TRUE(m_heard.empty());
}
