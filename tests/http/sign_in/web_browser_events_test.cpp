#include "http/sign_in/web_browser_events.h"

#include <gtest/gtest.h>

#include "http/sign_in/scripted_browser.h"

namespace {

class RecordingEvents final : public WebBrowserEvents2 {
public:
    HRESULT BeforeNavigate2(LPCWSTR url, LONG flags, LPCWSTR target_frame, const void* post_data, ULONG post_data_size,
                            LPCWSTR headers, bool* io_cancel) override {
        const auto* const bytes = static_cast<const BYTE*>(post_data);
        heard = std::wstring(url) + L' ' + std::to_wstring(flags) + L' ' + target_frame + L' ' + headers;
        heard += *io_cancel ? L" canceled" : L"";
        for (ULONG i = 0; i < post_data_size; ++i) {
            heard += L' ' + std::to_wstring(bytes[i]);
        }
        has_post_data = post_data != nullptr;
        *io_cancel = cancels;
        return S_FALSE;
    }
    HRESULT NavigateComplete2(LPCWSTR url) override {
        heard = url;
        return S_FALSE;
    }

    std::wstring heard;
    bool has_post_data = false;
    bool cancels = false;
};

/// The arguments of one event, as a browser hands them over: the last one first.
struct Arguments {
    Arguments() {
        const auto refer = [](VARIANT& argument, VARIANT* value) {
            argument.vt = VT_VARIANT | VT_BYREF;
            argument.pvarVal = value;
        };
        for (VARIANT& argument : values) {
            VariantInit(&argument);
        }
        values[6].vt = VT_DISPATCH;
        refer(values[5], &url);
        refer(values[4], &flags);
        refer(values[3], &frame);
        refer(values[2], &post_reference);
        refer(post_reference, &post_data);
        refer(values[1], &headers);
        values[0].vt = VT_BOOL | VT_BYREF;
        values[0].pboolVal = &cancel;
        const BYTE bytes[] = {1, 255};
        post_data.vt = VT_ARRAY | VT_UI1;
        post_data.parray = SafeArrayCreateVector(VT_UI1, 0, 2);
        for (LONG i = 0; i < 2; ++i) {
            (void)SafeArrayPutElement(post_data.parray, &i, const_cast<BYTE*>(&bytes[i]));
        }
    }
    HRESULT Raise(LONG id, UINT count) {
        parameters.cArgs = count;
        return events.Invoke(id, GUID_NULL, 0, 0, &parameters, nullptr, nullptr, nullptr);
    }

    Variant url{std::wstring_view(L"https://h/")};
    Variant flags{std::int32_t{64}};
    Variant frame{std::wstring_view(L"_self")};
    Variant headers{std::wstring_view(L"X: y")};
    Variant post_data;
    VARIANT post_reference{};
    VARIANT_BOOL cancel = VARIANT_FALSE;
    VARIANT values[7];
    DISPPARAMS parameters{values, nullptr, 7, 0};
    RecordingEvents events;
};

TEST(WebBrowserEvents2, KnowsTheArgumentsOfANavigationThatBegins) {
    const struct {
        const char* what;
        void (*change)(Arguments&);
        HRESULT result;
        const wchar_t* heard = L"";
    } rows[] = {
        {"all there", [](Arguments&) {}, S_FALSE, L"https://h/ 64 _self X: y 1 255"},
        {"canceled already", [](Arguments& a) { a.cancel = VARIANT_TRUE; }, S_FALSE, L"https://h/ 64 _self X: y canceled 1 255"},
        {"1 is not canceled", [](Arguments& a) { a.cancel = 1; }, S_FALSE, L"https://h/ 64 _self X: y 1 255"},
        {"nothing posted", [](Arguments& a) { VariantClear(&a.post_data); }, S_FALSE, L"https://h/ 64 _self X: y"},
        {"a text posted", [](Arguments& a) { a.post_data = Variant(std::wstring_view(L"x")); }, E_INVALIDARG},
        {"no array posted",
         [](Arguments& a) {
             VariantClear(&a.post_data);
             a.post_data.vt = VT_ARRAY | VT_UI1;
         },
         S_FALSE, L"https://h/ 64 _self X: y"},
        {"no post reference", [](Arguments& a) { a.post_reference.pvarVal = nullptr; }, E_INVALIDARG},
        {"post data of its own", [](Arguments& a) { a.post_reference.vt = VT_EMPTY; }, E_INVALIDARG},
        {"no arguments", [](Arguments& a) { a.parameters.rgvarg = nullptr; }, E_INVALIDARG},
        {"a browser of another type", [](Arguments& a) { a.values[6].vt = VT_UNKNOWN; }, E_INVALIDARG},
        {"a URL of another type", [](Arguments& a) { a.url = Variant(std::int32_t{1}); }, E_INVALIDARG},
        {"a URL by value", [](Arguments& a) { a.values[5] = a.url; }, E_INVALIDARG},
        {"no URL", [](Arguments& a) { a.values[5].pvarVal = nullptr; }, E_INVALIDARG},
        {"flags of another type", [](Arguments& a) { a.flags = Variant(true); }, E_INVALIDARG},
        {"a frame of another type", [](Arguments& a) { a.frame = Variant(true); }, E_INVALIDARG},
        {"headers of another type", [](Arguments& a) { a.headers = Variant(true); }, E_INVALIDARG},
        {"a cancel by value", [](Arguments& a) { a.values[0].vt = VT_BOOL; }, E_INVALIDARG},
        {"no cancel", [](Arguments& a) { a.values[0].pboolVal = nullptr; }, E_INVALIDARG},
    };
    for (const auto& row : rows) {
        Arguments arguments;
        row.change(arguments);
        EXPECT_EQ(arguments.Raise(DISPID_BEFORENAVIGATE2, 7), row.result) << row.what;
        EXPECT_EQ(arguments.events.heard, row.heard) << row.what;
    }
    for (const UINT count : {6u, 8u}) {
        EXPECT_EQ(Arguments().Raise(DISPID_BEFORENAVIGATE2, count), E_INVALIDARG) << count;
    }
}

TEST(WebBrowserEvents2, HandsTheCancelOfItsListenerBack) {
    for (const bool cancels : {true, false}) {
        Arguments arguments;
        arguments.cancel = 5;
        arguments.events.cancels = cancels;
        EXPECT_EQ(arguments.Raise(DISPID_BEFORENAVIGATE2, 7), S_FALSE);
        EXPECT_EQ(arguments.cancel, cancels ? VARIANT_TRUE : VARIANT_FALSE);
        EXPECT_TRUE(arguments.events.has_post_data);
    }
}

TEST(WebBrowserEvents2, KnowsTheArgumentsOfANavigationThatEnded) {
    const auto raise = [](void (*change)(Arguments&), UINT count = 2) {
        Arguments arguments;
        arguments.values[0] = arguments.values[5];
        arguments.values[1] = arguments.values[6];
        change(arguments);
        const HRESULT result = arguments.Raise(DISPID_NAVIGATECOMPLETE2, count);
        EXPECT_EQ(arguments.events.heard, result == S_FALSE ? L"https://h/" : L"");
        return result;
    };
    EXPECT_EQ(raise([](Arguments&) {}), S_FALSE);
    EXPECT_EQ(raise([](Arguments&) {}, 1), E_INVALIDARG);
    EXPECT_EQ(raise([](Arguments&) {}, 3), E_INVALIDARG);
    EXPECT_EQ(raise([](Arguments& a) { a.values[1].vt = VT_UNKNOWN; }), E_INVALIDARG);
    EXPECT_EQ(raise([](Arguments& a) { a.url = Variant(true); }), E_INVALIDARG);
    EXPECT_EQ(raise([](Arguments& a) { a.values[0].pvarVal = nullptr; }), E_INVALIDARG);
}

TEST(WebBrowserEvents2, LeavesOtherEventsAlone) {
    Arguments arguments;
    EXPECT_EQ(arguments.Raise(259, 7), S_OK);
    EXPECT_EQ(arguments.events.heard, L"");
    EXPECT_EQ(arguments.events.Invoke(259, GUID_NULL, 0, 0, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    WebBrowserEvents2 silent;
    EXPECT_EQ(silent.NavigateComplete2(L"https://h/"), S_OK);
}

TEST(WebBrowserEvents2, ListensToOneBrowserUntilItsEnd) {
    const auto browser = MakeObject<ScriptedBrowser>();
    RecordingEvents events;
    EXPECT_EQ(events.Uninit(), S_FALSE);
    EXPECT_EQ(events.Init(nullptr), E_INVALIDARG);
    ASSERT_EQ(events.Init(browser), S_OK);
    EXPECT_TRUE(FAILED(events.Init(MakeObject<ScriptedBrowser>())));
    EXPECT_EQ(browser->Complete(L"https://h/1"), S_FALSE) << "the first connection stays";
    EXPECT_EQ(events.heard, L"https://h/1");
    EXPECT_EQ(events.Uninit(), S_OK);
    EXPECT_TRUE(browser->sink.IsNull());
    EXPECT_EQ(events.Uninit(), S_FALSE);
    {
        RecordingEvents forgotten;
        ASSERT_EQ(forgotten.Init(browser), S_OK);
    }
    EXPECT_TRUE(browser->sink.IsNull()) << "a listener that is gone isn't told of anything";
}

} // namespace
