// The window with the browser in it, and what it makes of finished navigations, over the real cookie store.

#include <memory>

#include <gtest/gtest.h>

#include "frame/diagnostics/cancel.h"
#include "frame/log_recorder.h"
#include "http/sign_in/microsoft_forms.h"
#include "http/sign_in/scripted_browser.h"
#include "http/sign_in/web_browser_control.h"
#include "http/sign_in/web_browser_dialog.h"
#include "platform/wininet.h"
#include "platform/wininet_settings.h"
#include "support/in_process_module.h"

namespace {

constexpr const wchar_t* site = L"https://team.example";
constexpr const wchar_t* back = L"https://team.example/back/";
constexpr HRESULT no_more_items = MakeHResult(0x80070103);

class BrowserWindow : public testing::Test {
protected:
    BrowserWindow() {
        windows.script = [](ScriptedWindow& window) { window.EndModal(2); };
    }
    ~BrowserWindow() override { wininet::ClearCookies(); }

    HRESULT SignIn(const wchar_t* return_url) {
        return AuthenticateWithMicrosoftForms(header, L"https://login.example/", return_url, site, module.host);
    }
    static void SetCookie(const wchar_t* name, const std::wstring& value) {
        if (!value.empty()) {
            ASSERT_NE(InternetSetCookieExW(site, name, value.c_str(), INTERNET_COOKIE_HTTPONLY, 0), 0u);
        }
    }

    ScriptedBrowserClass browsers;
    ScriptedWindows windows;
    InProcessModule module{&windows};
    std::wstring header = L"untouched";
};

TEST_F(BrowserWindow, FinishedNavigationsEndTheSignInWhenTheCookiesAreThere) {
    const std::wstring long_fed(3500, L'f');
    const std::wstring long_rtfa(3500, L'r');
    const struct {
        const char* what;
        const wchar_t* return_url;
        const wchar_t* reached;
        std::wstring fed;
        std::wstring rtfa;
        HRESULT result;
        std::wstring header = L"untouched";
    } rows[] = {
        {"the return URL", back, back, L"1", L"2", S_OK, L"Cookie:FedAuth=1; rtFa=2\n"},
        {"a slash less", back, L"https://team.example/back", L"1", L"2", S_OK, L"Cookie:FedAuth=1; rtFa=2\n"},
        {"other letter case", back, L"https://TEAM.example/back/", L"1", L"2", S_OK, L"Cookie:FedAuth=1; rtFa=2\n"},
        {"another page", back, L"https://team.example/", L"1", L"2", E_CANCELED},
        {"another site", back, L"https://evil.example/back/", L"1", L"2", E_CANCELED},
        {"long cookies", back, back, long_fed, long_rtfa, S_OK, L"Cookie:FedAuth=" + long_fed + L"; rtFa=" + long_rtfa + L"\n"},
        {"no cookie", back, back, L"", L"", E_UNEXPECTED},
        {"rtFa alone", back, back, L"", L"2", E_UNEXPECTED},
        {"FedAuth alone", back, back, L"1", L"", no_more_items},
        {"any page", L"", L"https://login.example/x", L"1", L"2", S_OK, L"Cookie:FedAuth=1; rtFa=2\n"},
        {"any page, null", nullptr, L"https://login.example/x", L"1", L"2", S_OK, L"Cookie:FedAuth=1; rtFa=2\n"},
        {"any page, no cookie", L"", site, L"", L"2", E_CANCELED},
        {"any page, FedAuth alone", L"", site, L"1", L"", no_more_items},
    };
    for (const auto& row : rows) {
        wininet::ClearCookies();
        header = L"untouched";
        windows.script = [&](ScriptedWindow& window) {
            SetCookie(L"FedAuth", row.fed);
            SetCookie(L"rtFa", row.rtfa);
            browsers.next->Complete(row.reached);
            window.EndModal(2); // the user closes what is still open
        };
        EXPECT_EQ(SignIn(row.return_url), row.result) << row.what;
        EXPECT_EQ(header, row.header) << row.what;
    }
}

TEST_F(BrowserWindow, IsTheOneOfTheLayoutsAndHoldsTheBrowser) {
    windows.script = [&](ScriptedWindow& window) {
        EXPECT_EQ(browsers.next->opened, std::vector<std::wstring>{L"https://login.example/"});
        EXPECT_EQ(browsers.next->verb, OLEIVERB_INPLACEACTIVATE);
        EXPECT_EQ(browsers.next->parent, window.window);
        EXPECT_EQ(browsers.next->extent.cx, 500);
        EXPECT_EQ(browsers.next->extent.cy, 400);
        EXPECT_EQ(browsers.next->rect.right, 500);
        EXPECT_EQ(browsers.next->rect.bottom, 400);
        MSG message{};
        EXPECT_TRUE(PeekMessageW(&message, window.window, WM_SHOWWINDOW, WM_SHOWWINDOW, PM_REMOVE));
    };
    (void)SignIn(back);
    ASSERT_EQ(windows.created.size(), 1u);
    const KOV::CreateUiObjectParameters& record = windows.created[0];
    EXPECT_EQ(record.kind, 1u);
    EXPECT_EQ(record.flags, 3u);
    EXPECT_EQ(record.window_style, 0x86CD0000u);
    EXPECT_EQ(record.reserved112, 1u);
    EXPECT_STREQ(record.layout_id, L"WebBrowserDialog");
    const std::string_view layouts(static_cast<const char*>(record.layout), record.layout_size);
    EXPECT_NE(layouts.find("id=\"WebBrowserDialog\""), layouts.npos);
}

TEST_F(BrowserWindow, LeavesNothingOfTheBrowserBehind) {
    windows.script = [&](ScriptedWindow& window) {
        EXPECT_EQ(window.monitors.size(), 1u);
        EXPECT_FALSE(browsers.next->sink.IsNull());
    };
    (void)SignIn(back);
    EXPECT_TRUE(browsers.next->sink.IsNull());
    browsers.next->AddRef();
    EXPECT_EQ(browsers.next->Release(), 1u) << "somebody still holds the browser";
}

TEST_F(BrowserWindow, EndsWithWhatItsCodeMeans) {
    const struct {
        LONGLONG code;
        HRESULT result;
    } rows[] = {{1, S_OK}, {0, E_CANCELED}, {2, E_CANCELED}, {E_ACCESSDENIED, E_ACCESSDENIED}};
    for (const auto& row : rows) {
        windows.script = [&](ScriptedWindow& window) { window.EndModal(row.code); };
        EXPECT_EQ(SignIn(back), row.result) << row.code;
    }
    windows.script = [](ScriptedWindow&) {};
    EXPECT_EQ(SignIn(back), E_UNEXPECTED) << "ended without a code";
    windows.create_result = HRESULT_FROM_WIN32(1459);
    EXPECT_EQ(SignIn(back), HRESULT_FROM_WIN32(1459));
    windows.create_result = S_OK;
    windows.makes_nothing = true;
    header = L"untouched";
    EXPECT_EQ(SignIn(back), S_OK) << "no window and no failure";
    EXPECT_EQ(header, L"");
}

TEST_F(BrowserWindow, ASignInThatCantEndItsWindowWellEndsItWithTheFailure) {
    SetCookie(L"FedAuth", L"1");
    SetCookie(L"rtFa", L"2");
    windows.script = [&](ScriptedWindow& window) {
        window.refused_code = 1;
        EXPECT_EQ(browsers.next->Complete(back), E_ACCESSDENIED);
    };
    EXPECT_EQ(SignIn(back), E_ACCESSDENIED);
    EXPECT_EQ(header, L"untouched");
}

TEST_F(BrowserWindow, ANavigationElsewhereAfterTheSignInEndsNothing) {
    SetCookie(L"FedAuth", L"1");
    SetCookie(L"rtFa", L"2");
    windows.script = [&](ScriptedWindow& window) {
        EXPECT_EQ(browsers.next->Complete(back), S_OK);
        EXPECT_EQ(browsers.next->Complete(site), S_OK);
        EXPECT_EQ(window.asked_codes, std::vector<LONGLONG>{1});
    };
    EXPECT_EQ(SignIn(back), S_OK);
}

TEST_F(BrowserWindow, AWindowThatFailsIsDestroyedAndNamedInTheLog) {
    const LogRecorder log(LogLevel::error);
    windows.modal_result = E_ACCESSDENIED;
    EXPECT_EQ(SignIn(back), E_ACCESSDENIED);
    EXPECT_TRUE(browsers.next->sink.IsNull());
    EXPECT_NE(log.Text().find(L"Expression: 'm_pObj->DoModal(UIX_ObjModal_AppModal, &result)' caused returning '"),
              std::wstring::npos);
}

TEST_F(BrowserWindow, ForgetsItsListenersWithTheEndOfTheCall) {
    for (const HRESULT create_result : {S_OK, E_ACCESSDENIED}) {
        windows.create_result = create_result;
        const auto caller = std::make_shared<int>();
        const ComPtr<KOV::WebBrowserDialog> dialog = MakeObject<KOV::WebBrowserDialog>(ComPtr<KOV::IKOV_Inst>(module.host));
        EXPECT_TRUE(FAILED(dialog->DoModal(
            site, [caller](auto&&...) { return S_OK; }, [caller](LPCWSTR) { return S_OK; })));
        EXPECT_EQ(caller.use_count(), 1) << create_result;
    }
}

TEST_F(BrowserWindow, StaysEmptyUntilItIsClosedWhenTheBrowserFails) {
    browsers.next->verb_result = E_ACCESSDENIED;
    windows.script = [&](ScriptedWindow& window) {
        EXPECT_TRUE(browsers.next->opened.empty());
        EXPECT_TRUE(window.monitors.empty());
        browsers.next->AddRef();
        EXPECT_EQ(browsers.next->Release(), 1u) << "a browser that failed isn't kept";
        window.EndModal(2);
    };
    EXPECT_EQ(SignIn(back), E_CANCELED);
}

TEST_F(BrowserWindow, StaysEmptyInAHostWithoutABrowser) {
    browsers.Revoke();
    bool shown = false;
    windows.script = [&](ScriptedWindow& window) {
        shown = true;
        EXPECT_TRUE(window.monitors.empty());
        window.EndModal(2);
    };
    EXPECT_EQ(SignIn(back), E_CANCELED);
    EXPECT_TRUE(shown);
}

/// A key as the host's loop shows it.
class KeyEvent final : public cCoClassUnknownT<KOV::IUIX_Event> {
public:
    HRESULT get_Code(DWORD* out_code) override {
        *out_code = code;
        return S_OK;
    }
    HRESULT get_Param1(LONGLONG* out_parameter) override {
        *out_parameter = 0x0D;
        return S_OK;
    }
    HRESULT get_Param2(LONGLONG* out_parameter) override {
        *out_parameter = -2;
        return S_OK;
    }
    HRESULT get_Point(POINT* out_point) override {
        *out_point = {3, 4};
        return S_OK;
    }
    HRESULT put_Handled(VARIANT_BOOL value) override {
        handled = value;
        return S_OK;
    }

    DWORD code = WM_KEYDOWN;
    VARIANT_BOOL handled = VARIANT_FALSE;
};

TEST_F(BrowserWindow, TheBrowserGetsTheKeysOfTheHostsLoopFirst) {
    const auto event = MakeObject<KeyEvent>();
    windows.script = [&](ScriptedWindow& window) {
        const ComPtr<KOV::IUIX_EventLoopMonitor> monitor = window.monitors.at(0);
        EXPECT_EQ(monitor->OnEventLoopMonitor(window.window, event), S_OK);
        EXPECT_EQ(event->handled, VARIANT_FALSE) << "a key that the browser doesn't want";
        browsers.next->key_result = E_FAIL;
        EXPECT_EQ(monitor->OnEventLoopMonitor(window.window, event), E_FAIL);
        EXPECT_EQ(event->handled, VARIANT_FALSE);
        browsers.next->key_result = S_OK;
        EXPECT_EQ(monitor->OnEventLoopMonitor(window.window, event), S_OK);
        EXPECT_EQ(event->handled, VARIANT_TRUE);
        event->code = WM_KEYDOWN + 1;
        EXPECT_EQ(monitor->OnEventLoopMonitor(window.window, event), S_OK);
        ASSERT_EQ(browsers.next->keys.size(), 3u);
        const MSG& message = browsers.next->keys[0];
        EXPECT_EQ(message.hwnd, window.window);
        EXPECT_EQ(message.message, WM_KEYDOWN);
        EXPECT_EQ(message.wParam, 0x0Du);
        EXPECT_EQ(message.lParam, -2);
        EXPECT_EQ(message.pt.x, 3);
        EXPECT_EQ(message.pt.y, 4);
    };
    (void)SignIn(back);
}

TEST(WebBrowserControl, AnswersAsTheSiteOfItsBrowser) {
    WebBrowserControl control;
    EXPECT_EQ(control.Init(nullptr, {0, 0, 1, 1}), E_INVALIDARG);
    EXPECT_EQ(control.AddRef(), 1u);
    EXPECT_EQ(control.Release(), 1u);
    void* found = nullptr;
    for (const IID& id : {__uuidof(IUnknown), __uuidof(IOleClientSite), __uuidof(IOleInPlaceSite), __uuidof(IStorage)}) {
        EXPECT_EQ(control.QueryInterface(id, &found), S_OK);
        EXPECT_NE(found, nullptr);
    }
    EXPECT_EQ(control.QueryInterface(__uuidof(IDispatch), &found), E_NOINTERFACE);
    EXPECT_EQ(control.QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);

    auto* const nowhere = reinterpret_cast<IStorage*>(1);
    IStorage* storage = nowhere;
    IStream* stream = reinterpret_cast<IStream*>(1);
    IOleContainer* container = reinterpret_cast<IOleContainer*>(1);
    EXPECT_EQ(control.OpenStorage(L"x", nullptr, 0, nullptr, 0, &storage), E_NOTIMPL);
    EXPECT_EQ(control.CreateStream(L"x", 0, 0, 0, &stream), E_NOTIMPL);
    EXPECT_EQ(control.GetContainer(&container), E_NOINTERFACE);
    EXPECT_EQ(storage, nullptr);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(container, nullptr);
    EXPECT_EQ(control.GetContainer(nullptr), E_INVALIDARG);
    EXPECT_EQ(control.Stat(nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(control.GetWindow(nullptr), E_INVALIDARG);
    EXPECT_EQ(control.EnumElements(0, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(control.GetWindowContext(nullptr, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    EXPECT_TRUE(FAILED(control.OnInPlaceActivate())) << "nothing is there that could be activated";
    EXPECT_EQ(control.OnInPlaceDeactivate(), S_OK);
}

} // namespace
