#pragma once

// A host whose window and browser do what a test says, at the seam where the desktop puts real ones.

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "host/object_bases.h"
#include "host/user_interface.h"
#include "platform/ole_browser.h"
#include "workbench/core/host.h"
#include "workbench/core/host_windows.h"
#include "workbench/core/uix_extension.h"

/// Tells its sink of navigations; keeps what its container said.
class ScriptedBrowser final : public cCoClassDispatchT<IWebBrowser2, IOleObject, IOleInPlaceObject, IOleInPlaceActiveObject,
                                                       IConnectionPointContainer, IConnectionPoint> {
public:
    HRESULT Navigate2(VARIANT* url, VARIANT*, VARIANT*, VARIANT*, VARIANT*) override {
        opened.push_back(url->bstrVal);
        return S_OK;
    }
    /// A page is there: what the browser raises then. Gives the listener's answer.
    HRESULT Complete(const wchar_t* url) {
        Variant text{std::wstring_view(url)};
        VARIANT arguments[2]{};
        arguments[0].vt = VT_VARIANT | VT_BYREF;
        arguments[0].pvarVal = &text;
        arguments[1].vt = VT_DISPATCH;
        DISPPARAMS parameters{arguments, nullptr, 2, 0};
        const ComPtr<DWebBrowserEvents2> held = sink;
        return held->Invoke(DISPID_NAVIGATECOMPLETE2, GUID_NULL, 0, 0, &parameters, nullptr, nullptr, nullptr);
    }

    HRESULT SetClientSite(IOleClientSite* new_site) override {
        site = new_site;
        return S_OK;
    }
    HRESULT DoVerb(LONG new_verb, MSG*, IOleClientSite* client_site, LONG, HWND new_parent, const RECT*) override {
        verb = new_verb;
        parent = new_parent;
        if (FAILED(verb_result)) {
            return verb_result;
        }
        ComPtr<IOleInPlaceSite> place;
        (void)client_site->QueryInterface(&place);
        return place->OnInPlaceActivate();
    }
    HRESULT SetExtent(DWORD, SIZE* new_extent) override {
        extent = *new_extent;
        return S_OK;
    }
    HRESULT GetWindow(HWND* out_window) override {
        *out_window = parent;
        return S_OK;
    }
    HRESULT ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT SetObjectRects(const RECT* new_rect, const RECT*) override {
        rect = *new_rect;
        return S_OK;
    }
    HRESULT TranslateAccelerator(MSG* message) override {
        keys.push_back(*message);
        return key_result;
    }
    HRESULT FindConnectionPoint(REFIID id, IConnectionPoint** out_point) override {
        return id == __uuidof(DWebBrowserEvents2) ? QueryInterface(out_point) : CONNECT_E_NOCONNECTION;
    }
    HRESULT Advise(IUnknown* new_sink, DWORD* out_cookie) override {
        *out_cookie = 7;
        return new_sink->QueryInterface(&sink);
    }
    HRESULT Unadvise(DWORD cookie) override {
        sink.Release();
        return cookie == 7 ? S_OK : E_INVALIDARG;
    }

    std::vector<std::wstring> opened;
    ComPtr<DWebBrowserEvents2> sink;
    IOleClientSite* site = nullptr;
    HWND parent = nullptr;
    LONG verb = 0;
    HRESULT verb_result = S_OK;
    SIZE extent{};
    RECT rect{};
    std::vector<MSG> keys;
    HRESULT key_result = S_FALSE;
};

/// Registered as the browser of the process while it lives.
class ScriptedBrowserClass {
public:
    ScriptedBrowserClass() {
        (void)CoRegisterClassObject(CLSID_WebBrowser, m_factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_number);
    }
    ~ScriptedBrowserClass() { Revoke(); }
    ScriptedBrowserClass(const ScriptedBrowserClass&) = delete;
    ScriptedBrowserClass& operator=(const ScriptedBrowserClass&) = delete;

    void Revoke() { (void)CoRevokeClassObject(m_number); }

    /// The next one that is made.
    ComPtr<ScriptedBrowser> next = MakeObject<ScriptedBrowser>();

private:
    class Factory final : public cCoClassUnknownT<IClassFactory> {
    public:
        explicit Factory(ScriptedBrowserClass& owner) : m_owner(owner) {}
        HRESULT CreateInstance(IUnknown*, REFIID id, void** out_object) override {
            return m_owner.next->QueryInterface(id, out_object);
        }

    private:
        ScriptedBrowserClass& m_owner;
    };

    const ComPtr<Factory> m_factory = MakeObject<Factory>(*this);
    DWORD m_number = 0;
};

/// A window that runs a script in the place of a loop.
class ScriptedWindow final : public cCoClassDispatchT<KOV::IUIX_Obj, KOV::IUIX_Application> {
public:
    ScriptedWindow(KOV::IUIX_ObjImpl* implementation, std::function<void(ScriptedWindow&)> script, HRESULT modal_result = S_OK)
        : m_implementation(implementation), m_script(std::move(script)), m_modal_result(modal_result) {}

    void Raise(DWORD code) {
        KOV::UiEvent event{.code = code};
        (void)m_implementation->OnEvent(&event);
    }
    bool HasEnded() const noexcept { return m_has_ended; }

    HRESULT get_ID(DWORD*) override { return E_NOTIMPL; }
    HRESULT DoModal(LONG, LONGLONG* io_result) override {
        Raise(KOV::UiEvent_Size);
        Raise(KOV::UiEvent_ShowModal);
        m_script(*this);
        if (m_has_ended) {
            *io_result = m_code;
        }
        return m_modal_result;
    }
    HRESULT EndModal(LONGLONG code) override {
        asked_codes.push_back(code);
        if (code == refused_code) {
            return E_ACCESSDENIED;
        }
        m_code = m_has_ended ? m_code : code;
        m_has_ended = true;
        return S_OK;
    }
    HRESULT Destroy() override {
        const ComPtr<KOV::IUIX_ObjImpl> implementation = std::move(m_implementation);
        (void)implementation->put_Obj(nullptr);
        DestroyWindow(window);
        return S_OK;
    }
    HRESULT get_WndHandle(HWND* out_window) override {
        *out_window = window;
        return S_OK;
    }
    HRESULT get_ClientRect(RECT* out_rect) override {
        *out_rect = {0, 0, 500, 400};
        return S_OK;
    }
    HRESULT get_Parent(KOV::IUIX_Obj**) override { return E_NOTIMPL; }
    HRESULT Show(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT SetStyle(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT ScaleToDevice(LONG, LONG*) override { return E_NOTIMPL; }
    HRESULT _QueryImpl(REFIID, void**) override { return E_NOINTERFACE; }
    HRESULT get_Application(KOV::IUIX_Application** out_application) override { return QueryInterface(out_application); }
    HRESULT AddEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) override {
        monitors.emplace_back(monitor);
        return S_OK;
    }
    HRESULT RemoveEventLoopMonitor(KOV::IUIX_EventLoopMonitor* monitor) override {
        std::erase_if(monitors, [&](const auto& known) { return known.Get() == monitor; });
        return S_OK;
    }

    const HWND window = CreateHostWindow();
    std::vector<ComPtr<KOV::IUIX_EventLoopMonitor>> monitors;
    std::vector<LONGLONG> asked_codes;
    /// With which the window doesn't want to end.
    LONGLONG refused_code = -1;

private:
    ComPtr<KOV::IUIX_ObjImpl> m_implementation;
    const std::function<void(ScriptedWindow&)> m_script;
    const HRESULT m_modal_result;
    LONGLONG m_code = 0;
    bool m_has_ended = false;
};

/// Windows of a host, each running the script. Outlives the host.
class ScriptedWindows final : public HostWindows {
public:
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override { return MakeObject<Uix>(*this, host); }
    HWND DialogOwner() override { return nullptr; }
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override { return nullptr; }
    HRESULT ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override { return E_NOTIMPL; }

    /// What a person does in the window.
    std::function<void(ScriptedWindow&)> script;
    HRESULT create_result = S_OK;
    HRESULT modal_result = S_OK;
    /// With success: the host makes no window.
    bool makes_nothing = false;
    std::vector<KOV::CreateUiObjectParameters> created;

private:
    class Uix final : public UixExtension {
    public:
        Uix(ScriptedWindows& windows, Host& host) : UixExtension(&host.Commands()), m_windows(windows) {}
        HRESULT CreateObj(const KOV::CreateUiObjectParameters* parameters, KOV::IUIX_Obj**) override {
            m_windows.created.push_back(*parameters);
            if (FAILED(m_windows.create_result) || m_windows.makes_nothing) {
                return m_windows.create_result;
            }
            const auto window = MakeObject<ScriptedWindow>(parameters->implementation, m_windows.script, m_windows.modal_result);
            (void)parameters->implementation->put_Obj(window);
            window->Raise(KOV::UiEvent_Created);
            return S_OK;
        }

    private:
        ScriptedWindows& m_windows;
    };
};
