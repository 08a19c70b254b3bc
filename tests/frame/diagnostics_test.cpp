#include "frame/diagnostics/diagnostics.h"

#include <functional>
#include <new>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/values/kov_string.h"
#include "host/flag.h"
#include "platform/bstr.h"
#include "platform/errors.h"
#include "platform/text.h"
#include "tests/frame/log_recorder.h"

namespace Operations {

HRESULT refused = E_ACCESSDENIED;

HRESULT Inner(const wchar_t* name) {
    TRACE_ENTER(L"'{}', {}", name, 7);
    CHECK_OR_RETURN(name != nullptr && __uuidof(IUnknown) == __uuidof(IUnknown), E_POINTER);
    CHECK_OR_RETURN(SUCCEEDED(refused), 0x8007139F);
    TRACE_RETURN(S_OK);
}

HRESULT Outer(const wchar_t* name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(Inner(name));
    TRACE_LEAVE(L"{}", Masked(name));
    return S_OK;
}

void WithoutResult(bool condition) {
    CHECK_OR_RETURN_VALUE(condition, void(0));
    CHECK_CALL_OR_RETURN_VALUE(Inner(L"(IUnknown**)&x"), void(0));
}

HRESULT Guarded(const std::function<void()>& body, KOV::IString* out_error_details) {
    INTERFACE_TRY
    body();
    return S_OK;
    INTERFACE_CATCH(out_error_details)
}

HRESULT GuardedShort(const std::function<void()>& body, KOV::IString* out_error_details) {
    INTERFACE_TRY
    body();
    return S_OK;
    INTERFACE_CATCH_SHORT(out_error_details)
}

} // namespace Operations

namespace {

using testing::ElementsAre;

std::wstring Returned(const wchar_t* expression, HRESULT result) {
    return std::wstring(L"Expression: '") + expression + L"' caused returning '" + GetHResultString(result) + L"'";
}

class Flag : public cCoClassDispatchT<KOV::IKOV_Flag> {
public:
    HRESULT get_Value(VARIANT_BOOL* out_value) override {
        *out_value = value;
        return result;
    }
    HRESULT put_Value(VARIANT_BOOL new_value) override {
        value = new_value;
        return S_OK;
    }

    VARIANT_BOOL value = VARIANT_FALSE;
    HRESULT result = S_OK;
};

} // namespace

TEST(Diagnostics, AFailureLeavesOneLineForEachLevelOfTheCallInnermostFirst) {
    const LogRecorder recorder;
    EXPECT_EQ(Operations::Outer(nullptr), E_POINTER);
    EXPECT_THAT(recorder.Lines(),
                ElementsAre(LogLine{4, "Operations::Outer-->", L""}, LogLine{4, "Operations::Inner-->", L"'', 7"},
                            LogLine{1, "Operations::Inner",
                                    Returned(L"name != nullptr && __uuidof(IUnknown) == __uuidof(IUnknown)", E_POINTER)},
                            LogLine{1, "Operations::Outer", Returned(L"Inner(name)", E_POINTER)}));
}

TEST(Diagnostics, ASuccessLeavesEntryAndExitLines) {
    const LogRecorder recorder;
    Operations::refused = S_OK;
    EXPECT_EQ(Operations::Outer(L"https://Server7/A.pdf"), S_OK);
    Operations::refused = E_ACCESSDENIED;
    EXPECT_THAT(recorder.Lines(), ElementsAre(LogLine{4, "Operations::Outer-->", L""},
                                              LogLine{4, "Operations::Inner-->", L"'https://Server7/A.pdf', 7"},
                                              LogLine{4, "Operations::Inner<--", L"S_OK"},
                                              LogLine{4, "Operations::Outer<--", L"https://Xxxxxx1/X.xxx"}));
}

TEST(Diagnostics, SourceTextOfATestIsLoggedAsItWasWritten) {
    const LogRecorder recorder(LogLevel::error);
    EXPECT_EQ(Operations::Inner(L"x"), MakeHResult(0x8007139F));
    Operations::WithoutResult(false);
    Operations::WithoutResult(true);
    const std::wstring inner = Returned(L"SUCCEEDED(refused)", MakeHResult(0x8007139F));
    EXPECT_THAT(recorder.Messages(1),
                ElementsAre(inner, L"Expression: 'condition' caused returning 'void(0)'", inner,
                            L"Expression: 'Inner(L\"(IUnknown**)&x\")'='" + GetHResultString(MakeHResult(0x8007139F)) +
                                L"' caused returning 'void(0)'"));
}

TEST(Diagnostics, ThrowingMacrosLogTheMessageAndThrowTheExceptionItself) {
    const LogRecorder recorder;
    const auto check = [](int value) { CHECK_OR_THROW(value > 1, HResultException(E_CANCELED, L"a, b")); };
    EXPECT_NO_THROW(check(2));
    try {
        check(0);
        FAIL();
    } catch (const HResultException& exception) {
        EXPECT_EQ(exception.hr, E_CANCELED);
    }
    EXPECT_THROW(THROW_LOGGED(Exception(L"no {}")), Exception);
    EXPECT_THAT(recorder.Messages(1), ElementsAre(L"Expression 'value > 1' caused throwing 'a, b'", L"Throwing 'no {}'"));
}

TEST(Diagnostics, LoggingKeepsTheLastErrorAndExceptionsTakeItBefore) {
    const LogRecorder recorder;
    SetLastError(ERROR_DISK_FULL);
    TRACE_FORMAT(LogLevel::warning, L"opens the log");
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    try {
        THROW_LOGGED(ApiException());
        FAIL();
    } catch (const ApiException& exception) {
        EXPECT_EQ(exception.error, ERROR_DISK_FULL);
        EXPECT_EQ(exception.message, GetErrorString(ERROR_DISK_FULL));
    }
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
}

TEST(Diagnostics, ATraceThatIsOffEvaluatesNothing) {
    const LogRecorder recorder(LogLevel::warning);
    int evaluated = 0;
    const auto count = [&] { return ++evaluated; };
    TRACE_FORMAT(LogLevel::none, L"{}", count());
    TRACE_FORMAT(LogLevel::information, L"{}", count());
    TRACE_ENTER(L"{}", count());
    EXPECT_EQ(evaluated, 0);
    EXPECT_FALSE(std::filesystem::exists(recorder.Folder()));
    TRACE_FORMAT(LogLevel::warning, L"{}", count());
    EXPECT_EQ(evaluated, 1);
    EXPECT_THAT(recorder.Messages(2), ElementsAre(L"1"));
}

TEST(Diagnostics, OnlyAFormattedMessageIsCutAndNullTextsAreEmpty) {
    const LogRecorder recorder;
    const std::wstring name(20000, L'x');
    const wchar_t* const none = nullptr;
    TRACE_FORMAT(LogLevel::error, L"{}", name);
    TRACE_TEXT(LogLevel::error, name);
    TRACE_TEXT(LogLevel::error, L"{}\n" + std::wstring(L"body"));
    TRACE_FORMAT(LogLevel::error, L"[{}] [{}] [{}]", none, Masked(none), Bstr(L"b"));
    EXPECT_THAT(recorder.Messages(1), ElementsAre(std::wstring(10239, L'x'), name, L"{}\nbody", L"[] [] [b]"));
}

TEST(Diagnostics, LadderTurnsEachExceptionIntoItsResultTextAndLine) {
    const wchar_t* const caught = L"0";
    const struct {
        const char* name;
        std::function<void()> body;
        HRESULT result;
        std::wstring details;
        const wchar_t* expression;
        bool short_ladder_gives_details;
    } rows[] = {
        {"rule", [] { throw HResultException(E_CANCELED, L"stopped"); }, E_CANCELED, L"stopped", caught, true},
        {"rule without text", [] { throw HResultException(E_POINTER); }, E_POINTER, GetHResultString(E_POINTER), caught, true},
        {"rule that says success", [] { throw HResultException(S_FALSE, L"odd"); }, E_FAIL, L"odd", caught, true},
        {"system", [] { throw ApiException(5); }, E_ACCESSDENIED, GetErrorString(5), caught, true},
        {"system with a result", [] { throw ApiException(0x800704D5); }, E_SP_RETRY, GetErrorString(0x800704D5), caught, true},
        {"plain", [] { throw Exception(L"no JSON"); }, E_FAIL, L"no JSON", L"E_FAIL", false},
        {"conversion", [] { (void)WideFromUtf8("\xFF"); }, E_FAIL, L"bad conversion", L"E_FAIL", false},
        {"memory", [] { throw std::bad_alloc(); }, E_OUTOFMEMORY, L"", L"E_OUTOFMEMORY", false},
        {"unknown", [] { throw 7; }, E_FAIL, L"", L"E_FAIL", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const LogRecorder recorder(LogLevel::error);
        const auto details = MakeObject<Utility::KOVString>();
        Bstr text;
        EXPECT_EQ(Operations::Guarded(row.body, details), row.result);
        details->get_Value(&text);
        EXPECT_EQ(text.View(), row.details);

        details->Clear();
        EXPECT_EQ(Operations::GuardedShort(row.body, details), row.result);
        details->get_Value(&text);
        EXPECT_EQ(text.View(), row.short_ladder_gives_details ? row.details : L"");
        EXPECT_EQ(Operations::Guarded(row.body, nullptr), row.result);

        const std::wstring line = Returned(row.expression, row.result);
        EXPECT_THAT(recorder.Messages(1), ElementsAre(line, line, line));
        EXPECT_EQ(recorder.Lines().front().context, "Operations::Guarded");
    }
}

TEST(Diagnostics, ASystemFailureWithoutAnErrorStillReachesTheHostAsOne) {
    SetLastError(0);
    EXPECT_EQ(Operations::Guarded([] { throw ApiException(); }, nullptr), E_FAIL);
}

TEST(Diagnostics, CodesBecomeWords) {
    const struct {
        std::wstring actual;
        const wchar_t* expected;
    } rows[] = {
        {GetHResultString(E_ACCESSDENIED), L"HRESULT 0x80070005: Access is denied."},
        {GetHResultString(MakeHResult(0x8FFF1234)), L"HRESULT 0x8fff1234: <no system error information avaliable>"},
        {GetErrorString(5), L"System error code 5: Access is denied."},
        {GetErrorString(0x821704C7), L"Canceled"},
        {GetErrorString(12002), L"System error code 12002: The server did not answer in time."},
        {GetErrorString(4000000000), L"System error code 4000000000: <no system error information avaliable>"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.actual, row.expected);
    }
    SetLastError(0);
    EXPECT_EQ(GetErrorString(0), L"System error code 0: <no system error information avaliable>");
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(GetErrorString(0), L"System error code 5: Access is denied.");
}

TEST(Diagnostics, MaskingLeavesNothingThatTellsTheSite) {
    const struct {
        const wchar_t* text;
        const wchar_t* masked;
    } rows[] = {
        {L"", L""},
        {L"https://Server7/sites/A.pdf", L"https://Xxxxxx1/xxxxx/X.xxx"},
        {L"HTTP://a.b:8080/%20?x=Y#z", L"HTTP://x.x:1111/%11?x=X#x"},
        {L"\\\\host@SSL@443\\DavWWWRoot\\x", L"\\\\xxxx@SSL@111\\DavWWWRoot\\x"},
        {L"\\\\?\\unc\\host@ssl\\davwwwroot", L"\\\\?\\unc\\xxxx@ssl\\davwwwroot"},
        {L"/sites/http://x/https:/", L"/xxxxx/http://x/xxxxx:/"},
        {L"http:/DavWWWRoo", L"xxxx:/XxxXXXXxx"},
        {L"Größe_\x4E2D (1).pdf", L"Xxößx_\x4E2D (1).xxx"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MaskUrlForLog(row.text), row.masked);
    }
}

TEST(Diagnostics, OnlyASetFlagCancels) {
    const auto flag = MakeObject<Flag>();
    EXPECT_FALSE(IsCanceled(nullptr));
    EXPECT_FALSE(IsCanceled(flag));
    flag->put_Value(VARIANT_TRUE);
    EXPECT_TRUE(IsCanceled(flag));
    EXPECT_TRUE(Bits::Has(0x2005u, 0x2000u));
    EXPECT_FALSE(Bits::Has(0x2005u, 0x2u));
}
