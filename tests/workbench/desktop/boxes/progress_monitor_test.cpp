#include "workbench/desktop/boxes/progress_monitor.h"

#include <thread>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include "workbench/desktop/boxes/message_text.h"
#include "workbench/desktop/boxes/transfer_text.h"
#include "workbench/desktop/modal_person.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/window_core.h"

namespace {

struct Progress : testing::Test {
    ComPtr<ProgressMonitor> NewMonitor() {
        return MakeObject<ProgressMonitor>(loop, [this] { return &main_window; });
    }
    static std::vector<QDialog*> Windows() {
        std::vector<QDialog*> windows;
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == "progress" && widget->isVisible()) {
                windows.push_back(qobject_cast<QDialog*>(widget));
            }
        }
        return windows;
    }
    template <class Condition>
    static void Until(Condition condition) {
        ASSERT_TRUE(QTest::qWaitFor(condition, 60000));
    }
    QDialog& TheWindow() {
        Until([] { return Windows().size() == 1; });
        return *Windows().at(0);
    }

    MainLoop loop;
    MessagePump pump{loop};
    QWidget main_window;
};

TEST_F(Progress, StepsBackWhileAPersonIsAsked) {
    const ComPtr<ProgressMonitor> monitor = NewMonitor();
    monitor->Start();
    QDialog& window = TheWindow();
    {
        const OpenQuestion question;
        Until([&] { return !window.isVisible(); });
    }
    Until([&] { return window.isVisible(); });
    monitor->Stop();
}

TEST_F(Progress, StepsBackForAWindowThatCameUpMeanwhileAndNotForTheOneItBeganIn) {
    QWidget windows[2];
    const auto dialog = WindowCore::Create(&windows[0], {});
    const auto sign_in = WindowCore::Create(&windows[1], {});
    const ModalScope below(dialog->Handle());
    const ComPtr<ProgressMonitor> monitor = NewMonitor();
    monitor->Start();
    QDialog& window = TheWindow();
    {
        const ModalScope above(sign_in->Handle());
        Until([&] { return !window.isVisible(); });
    }
    Until([&] { return window.isVisible(); });
    monitor->Stop();
    dialog->Destroy();
    sign_in->Destroy();
}

TEST_F(Progress, ShowsWhatItIsToldAfterAWhileAndGoesAtTheEnd) {
    const ComPtr<ProgressMonitor> monitor = NewMonitor();
    monitor->put_Title(L"Deleting");
    monitor->put_Text(L"Deleting file <b>a & <i>b</i></b>...");
    monitor->put_Status(L"1 of <b>4</b>");
    monitor->put_Total(4);
    monitor->put_Pos(1);
    monitor->Start();
    QDialog& window = TheWindow();
    EXPECT_FALSE(window.isModal());
    EXPECT_EQ(window.parentWidget(), &main_window);
    EXPECT_EQ(window.windowTitle(), "Deleting");
    EXPECT_EQ(Child<MessageText>(window, "text").toPlainText(), "Deleting file a & <i>b</i>...");
    EXPECT_EQ(Child<QLabel>(window, "status").text(), "1 of <b>4</b>");
    auto& bar = Child<QProgressBar>(window, "bar");
    EXPECT_EQ(bar.value() * 4, bar.maximum());
    monitor->put_Pos(9); // past the end
    Until([&] { return bar.value() == bar.maximum(); });
    monitor->SetStyle(KOV::UIX_ProgressStyle_Endless);
    Until([&] { return bar.maximum() == 0; });
    monitor->Stop();
    Until([] { return Windows().empty(); });
}

TEST_F(Progress, WhatIsQuickIsNeverShown) {
    const ComPtr<ProgressMonitor> quick = NewMonitor();
    quick->put_Title(L"quick");
    quick->Start();
    const ComPtr<ProgressMonitor> slow = NewMonitor();
    slow->put_Title(L"slow");
    slow->Start();
    quick->Stop();
    EXPECT_EQ(TheWindow().windowTitle(), "slow");
}

TEST_F(Progress, CancelEscapeAndCloseAreTheSameWish) {
    const std::function<void(QDialog&)> ways[] = {
        [](QDialog& window) { Child<QPushButton>(window, "btn.cancel").click(); },
        [](QDialog& window) { QTest::keyClick(&window, Qt::Key_Escape); },
        [](QDialog& window) { window.close(); },
    };
    for (const auto& way : ways) {
        const ComPtr<ProgressMonitor> monitor = NewMonitor();
        monitor->Start();
        QDialog& window = TheWindow();
        VARIANT_BOOL is_canceled = VARIANT_TRUE;
        EXPECT_EQ(monitor->get_Canceled(&is_canceled), S_OK);
        EXPECT_EQ(is_canceled, VARIANT_FALSE);
        way(window);
        EXPECT_EQ(monitor->get_Canceled(&is_canceled), S_OK);
        EXPECT_EQ(is_canceled, VARIANT_TRUE);
        EXPECT_TRUE(window.isVisible()) << "the work isn't over yet";
        EXPECT_FALSE(Child<QPushButton>(window, "btn.cancel").isEnabled());
        monitor->Stop();
        Until([] { return Windows().empty(); });
    }
}

TEST_F(Progress, AWorkerNeverWaitsAndTheLastReleaseClosesTheWindow) {
    ComPtr<ProgressMonitor> monitor = NewMonitor();
    // The main thread doesn't turn here: a call that waited for it would hang.
    std::thread([&] {
        monitor->put_Text(L"from a worker");
        monitor->Start();
    }).join();
    EXPECT_EQ(Child<MessageText>(TheWindow(), "text").toPlainText(), "from a worker");
    std::thread([&] { monitor.Release(); }).join();
    Until([] { return Windows().empty(); });
}

TEST_F(Progress, OpensAnewWhenTheWindowBelowGoes) {
    auto below = std::make_unique<QWidget>();
    const ComPtr<ProgressMonitor> monitor = MakeObject<ProgressMonitor>(loop, [&] { return below ? below.get() : &main_window; });
    monitor->Start();
    EXPECT_EQ(TheWindow().parentWidget(), below.get());
    below.reset();
    EXPECT_EQ(TheWindow().parentWidget(), &main_window);
}

TEST_F(Progress, CountsBytesWhereNoStatusIsSet) {
    const ComPtr<ProgressMonitor> monitor = NewMonitor();
    monitor->CountBytes();
    monitor->put_Total(3'000'000);
    monitor->put_Pos(1'200'000);
    monitor->Start();
    QDialog& window = TheWindow();
    auto& status = Child<QLabel>(window, "status");
    Until([&] { return status.text().startsWith("1.2 MB of 3.0 MB"); });
    monitor->put_Status(L"nearly there");
    Until([&] { return status.text() == "nearly there"; });
}

TEST(TransferRate, IsThatOfTheLastSeconds) {
    TransferRate rate;
    EXPECT_EQ(rate.BytesPerSecond(), std::nullopt);
    rate.Add(0, 0);
    rate.Add(0.1, 1000);
    EXPECT_EQ(rate.BytesPerSecond(), std::nullopt) << "too early to say";
    rate.Add(1, 1000);
    EXPECT_EQ(rate.BytesPerSecond(), 1000);
    for (int second = 2; second <= 10; ++second) {
        rate.Add(second, 1000);
    }
    EXPECT_EQ(rate.BytesPerSecond(), 0) << "a stall must be seen";
    rate.Add(11, 10);
    EXPECT_EQ(rate.BytesPerSecond(), std::nullopt) << "another transfer";
    rate.Add(13, 50);
    EXPECT_EQ(rate.BytesPerSecond(), 20);
}

TEST(TransferText, SaysHowMuchOfWhatAndHowFast) {
    QLocale::setDefault(QLocale::c());
    EXPECT_EQ(TransferText(0, 0, std::nullopt), "0 bytes");
    EXPECT_EQ(TransferText(1500, 3'000'000, std::nullopt), "1.5 kB of 3.0 MB");
    EXPECT_EQ(TransferText(1500, -1, 250'000), "1.5 kB, 250.0 kB/s");
    EXPECT_EQ(TransferText(-5, 1e300, std::nullopt), "0 bytes of 9.0 EB");
}

} // namespace
