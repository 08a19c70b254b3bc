#include <atomic>
#include <future>
#include <thread>

#include <QFrame>
#include <QVBoxLayout>
#include <gtest/gtest.h>

#include "host/controls.h"
#include "host/tools/window_bases.h"
#include "platform/windows_messages.h"
#include "support/unanswered.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/objects/ui_object.h"

namespace {

class Box final : public UiObjectT<KOV::IUIX_Picture> {
public:
    explicit Box(QWidget* parent) : UiObjectT(new QFrame(parent)) {}
    HRESULT put_Image(KOV::IKOV_MultiSizeImage*) override { return S_OK; }
    void Tell(DWORD kind) { Notify(kind); }
};

class Listener final : public KOV::uiCoObjImplT<Listener, KOV::IUIX_ObjImpl> {
public:
    std::vector<DWORD> kinds;
    HRESULT OnEvent(KOV::UiEvent* io_event) override {
        const auto& notification = *reinterpret_cast<const KOV::UiNotification*>(io_event->parameter);
        EXPECT_EQ(notification.control_id, 7u);
        kinds.push_back(notification.kind);
        return S_OK;
    }
};

class ObjectTest : public testing::Test {
protected:
    ObjectTest() {
        m_window->SetImplementation(m_listener);
        m_box->Adopt(m_window, m_parent, 7);
    }
    ~ObjectTest() override { m_window->Destroy(); }

    const ComPtr<UnansweredHost> m_host = MakeObject<UnansweredHost>();
    QWidget m_widget;
    std::shared_ptr<WindowCore> m_window = WindowCore::Create(&m_widget, {m_host.Get(), nullptr});
    const ComPtr<Listener> m_listener = MakeObject<Listener>();
    const ComPtr<Box> m_parent = MakeObject<Box>(&m_widget);
    const ComPtr<Box> m_box = MakeObject<Box>(&m_widget);
};

} // namespace

TEST_F(ObjectTest, StandsBehindItsInterfaces) {
    const ComPtr<KOV::IUIX_Obj> object = m_box;
    ComPtr<KOV::IUIX_Picture> picture;
    ComPtr<KOV::IUIX_List> list;
    ComPtr<KOV::IUIX_Obj> parent;
    DWORD id = 0;
    RECT area{};
    EXPECT_EQ(object->_QueryImpl(&picture), S_OK);
    EXPECT_EQ(object->_QueryImpl(&list), E_NOINTERFACE);
    EXPECT_EQ(object->get_ID(&id), S_OK);
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(object->get_Parent(&parent), S_OK);
    EXPECT_EQ(parent.Get(), static_cast<KOV::IUIX_Obj*>(m_parent.Get()));
    EXPECT_EQ(PartOf(object), static_cast<UiObject*>(m_box.Get()));
    EXPECT_EQ(PartOf(nullptr), nullptr);
    m_box->Widget()->resize(30, 20);
    EXPECT_EQ(object->get_ClientRect(&area), S_OK);
    EXPECT_EQ(area.right, 30);
    EXPECT_EQ(area.bottom, 20);
    EXPECT_EQ(object->SetStyle(KOV::UIX_ObjStyle_NoBorder, KOV::UIX_ObjStyle_NoBorder), S_OK);
    EXPECT_EQ(static_cast<QFrame*>(m_box->Widget())->frameShape(), QFrame::NoFrame);
    EXPECT_EQ(object->DoModal(1, nullptr), E_NOTIMPL);
    EXPECT_EQ(m_window->Find(7).Get(), object.Get());
    EXPECT_TRUE(m_window->Find(8).IsNull());
}

TEST_F(ObjectTest, TellsItsWindowUnlessDisabledOrEnded) {
    m_box->Tell(KOV::UiNotify_Clicked);
    m_box->Widget()->setEnabled(false);
    m_box->Tell(KOV::UiNotify_TextChanged);
    m_box->Widget()->setEnabled(true);
    m_box->Tell(KOV::UiNotify_Committed);
    m_window->EndNotifications();
    m_box->Tell(KOV::UiNotify_Clicked);
    EXPECT_EQ(m_listener->kinds, std::vector<DWORD>({KOV::UiNotify_Clicked, KOV::UiNotify_Committed}));
}

// A worker asks for the handle and drops its references while the main thread waits for that worker.
TEST_F(ObjectTest, AnswersAWorkerWhileTheMainThreadWaitsForIt) {
    ComPtr<KOV::IUIX_Obj> object = MakeObject<Box>(nullptr);
    std::unique_ptr<QWidget> widget(PartOf(object)->Widget());
    const HWND expected = m_window->Handle();
    std::future<bool> worker = std::async(std::launch::async, [&] {
        HWND window = nullptr;
        const bool is_right = SUCCEEDED(m_box->get_WndHandle(&window)) && window == expected && WindowOf(window) == m_window;
        object.Release();
        const HWND top = TopModalWindow();
        return is_right && top == nullptr && PostMessageW(window, 6548, 0, 0);
    });
    ASSERT_EQ(worker.wait_for(std::chrono::seconds(30)), std::future_status::ready) << "it waits for the main thread";
    EXPECT_TRUE(worker.get());
}

TEST_F(ObjectTest, IsFoundByItsHandleUntilItIsDestroyed) {
    const HWND handle = m_window->Handle();
    QWidget* const inside = m_box->Widget();
    EXPECT_EQ(WidgetOf(handle), &m_widget);
    EXPECT_EQ(WindowAround(inside), m_window);
    {
        const ModalScope modal(handle);
        EXPECT_EQ(TopModalWindow(), handle);
        m_window->Destroy();
        EXPECT_EQ(TopModalWindow(), nullptr) << "a dead window owns nothing";
    }
    EXPECT_EQ(WidgetOf(handle), nullptr);
    EXPECT_EQ(WindowAround(inside), nullptr);
    EXPECT_FALSE(PostMessageW(handle, 6548, 0, 0));
    EXPECT_EQ(m_box->Parent(), nullptr) << "no object holds another any more";
}

TEST_F(ObjectTest, ModalWindowsStandOnTopOfEachOther) {
    QWidget other_widget;
    const std::shared_ptr<WindowCore> other = WindowCore::Create(&other_widget, {m_host.Get(), nullptr});
    ModalScope below(m_window->Handle());
    {
        const ModalScope above(other->Handle());
        EXPECT_EQ(TopModalWindow(), other->Handle());
        below.End(); // hidden while its loop goes on
        EXPECT_EQ(TopModalWindow(), other->Handle());
    }
    EXPECT_EQ(TopModalWindow(), nullptr);
    other->Destroy();
}

TEST(Texts, CrossBetweenWideAndQtAsTheyAre) {
    const std::wstring texts[] = {L"", L"a & b", L"\x5D3\x5D5\x5D7", L"\x1F600 smile", std::wstring(L"a\0b", 3)};
    for (const std::wstring& text : texts) {
        EXPECT_EQ(ToWide(ToQString(text)), text);
        Bstr copy;
        copy.m_str = ToBstr(ToQString(text));
        EXPECT_EQ(copy.View(), text);
    }
    EXPECT_EQ(PlainTip("file x <b>y</b>\nz"), "<span>file x &lt;b&gt;y&lt;/b&gt;<br>z</span>");
    EXPECT_EQ(WithoutMnemonic("R&D"), "R&&D");
}
