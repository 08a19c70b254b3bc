#pragma once

// The desktop's extension over a real host that has the module's texts but no module, and a module's side of windows that a test
// lays out.

#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <QApplication>
#include <QTest>
#include <gtest/gtest.h>

#include "../../core/fresh_folder.h"
#include "host/tools/window_bases.h"
#include "platform/memory.h"
#include "workbench/core/host.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/text.h"
#include "workbench/desktop/windows/desktop_uix.h"
#include "workbench/desktop/windows/window.h"

inline std::string ReadSource(const char* path) {
    std::ifstream file(std::string(KOV_SOURCE_DIR) + "/" + path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// What happened to a window, in order: "created", "size", "show", "pre 2", "end 2", "message 6548 7", "3 btn.ok", "gone".
using Heard = std::vector<std::string>;

/// The module's side of a window.
class Module final : public KOV::uiStdObjImplT<Module, KOV::IUIX_ObjImpl> {
public:
    Module(KOV::IKOV_Inst& host, Heard& heard) : m_host(host), m_heard(heard) {}

    /// What happens upon an entry of `heard`.
    std::map<std::string, std::function<void()>> on;
    std::function<bool(LONGLONG code)> vetoes = [](LONGLONG) { return false; };
    /// Sizes are told only while a window is made and by whoever asks: the off-screen platform resizes by itself.
    bool hears_sizes = false;

    KOV::IUIX_Dialog& Dialog() { return *m_dlg; }
    KOV::IUIX_Obj& Object() { return *m_pObj; }
    bool HasObject() const { return !m_pObj.IsNull(); }
    template <class Interface>
    ComPtr<Interface> Item(const wchar_t* id) {
        ComPtr<KOV::IUIX_Obj> object;
        ComPtr<Interface> control;
        EXPECT_EQ(m_dlg->GetItem(id, 1, &object), S_OK) << ToQString(id).toStdString();
        if (!object.IsNull()) {
            EXPECT_EQ(object->_QueryImpl(&control), S_OK) << ToQString(id).toStdString();
        }
        return control;
    }

    HRESULT OnEvent(KOV::UiEvent* io_event) override {
        (void)uiStdObjImplT::OnEvent(io_event);
        const std::string text = TextOf(*io_event);
        if (io_event->code == KOV::UiEvent_PreEndModal) {
            io_event->veto = vetoes(io_event->parameter) ? 1 : 0;
        }
        if (io_event->code != KOV::UiEvent_Size || hears_sizes) {
            m_heard.push_back(text);
        }
        if (const auto found = on.find(text); found != on.end()) {
            const std::function<void()> function = found->second;
            function();
        }
        return S_OK;
    }

protected:
    void OnObjectGone() override { m_heard.push_back("gone"); }

private:
    std::string TextOf(const KOV::UiEvent& event) const {
        switch (event.code) {
        case KOV::UiEvent_Created:
            return "created";
        case KOV::UiEvent_Size:
            return "size";
        case KOV::UiEvent_ShowModal:
            return "show";
        case KOV::UiEvent_PreEndModal:
            return "pre " + std::to_string(event.parameter);
        case KOV::UiEvent_EndModal:
            return "end " + std::to_string(event.parameter);
        case KOV::UiEvent_Notification:
            return TextOf(*reinterpret_cast<const KOV::UiNotification*>(event.parameter));
        default:
            return "message " + std::to_string(event.code) + " " + std::to_string(event.parameter);
        }
    }
    std::string TextOf(const KOV::UiNotification& notification) const {
        DWORD id = 0;
        EXPECT_EQ(notification.source->get_ID(&id), S_OK);
        EXPECT_EQ(id, notification.control_id);
        return std::to_string(notification.kind) + " " + PartOf(notification.source)->Widget()->objectName().toStdString();
    }

    KOV::IKOV_Inst& m_host;
    Heard& m_heard;
};

class DeskTest : public testing::Test {
protected:
    DeskTest() {
        const std::string strings = ReadSource("src/resources/strings.xml");
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, strings.size());
        memcpy(GlobalLock(block), strings.data(), strings.size());
        GlobalUnlock(block);
        ComPtr<IStream> stream;
        EXPECT_EQ(CreateStreamOnHGlobal(block, TRUE, &stream), S_OK);
        EXPECT_EQ(m_host->LoadLocalizationStream(stream), S_OK);
    }
    ~DeskTest() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    /// A window of a layout of the module's, or of `layouts`; the record as the module fills it.
    HRESULT Create(Module* module, const wchar_t* id, DWORD window_style = 0x86C80000) {
        KOV::CreateUiObjectParameters parameters{};
        parameters.implementation = module;
        parameters.kind = KOV::UIX_ObjKind_Window;
        parameters.flags = 2;
        parameters.parent_window = m_parent;
        parameters.layout = m_layouts.data();
        parameters.layout_size = m_layouts.size();
        parameters.layout_id = id;
        parameters.window_style = window_style;
        return m_uix->CreateObj(&parameters, nullptr);
    }
    ComPtr<Module> CreateModule(const wchar_t* id, DWORD window_style = 0x86C80000) {
        const ComPtr<Module> module = MakeObject<Module>(*m_host.Get(), m_heard);
        EXPECT_EQ(Create(module, id, window_style), S_OK);
        return module;
    }
    static QWidget* WidgetOfModule(Module& module) { return PartOf(&module.Object())->Widget(); }
    template <class Widget = QWidget>
    static Widget* Find(Module& module, const char* id) {
        return WidgetOfModule(module)->findChild<Widget*>(id);
    }
    /// Runs a window to its end and destroys it; gives the result.
    static LONGLONG Run(Module& module) {
        LONGLONG result = -1;
        EXPECT_EQ(module.Object().DoModal(KOV::UIX_ObjModal_AppModal, &result), S_OK);
        EXPECT_EQ(module.Object().Destroy(), S_OK);
        return result;
    }
    /// Does something at the next turn of the loop.
    void Soon(std::function<void()> function) { m_loop.Post(std::move(function)); }

    FreshFolder m_folder;
    MainLoop m_loop;
    MessagePump m_pump{m_loop};
    ComPtr<Host> m_host = MakeObject<Host>(HostOptions{m_folder.Path() / "state", m_folder.Path() / "none.kvp"}, m_loop);
    ComPtr<DesktopUix> m_uix =
        MakeObject<DesktopUix>(*m_host.Get(), m_host->Commands(), QString::fromStdString(m_folder.Path() / "windows.ini"));
    std::string m_layouts = ReadSource("src/resources/layouts.xml");
    HWND m_parent = nullptr;
    Heard m_heard;
};
