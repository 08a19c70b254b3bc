#include "frame/diagnostics/diagnostics_detail.h"

#include <fmt/xchar.h>

#include <new>
#include <stdexcept>
#include <string>

#include "frame/diagnostics/error_text.h"
#include "frame/diagnostics/exceptions.h"
#include "frame/diagnostics/last_error_detail.h"
#include "frame/diagnostics/log_file.h"
#include "host/string.h"

namespace Diagnostics {

namespace {

constexpr std::size_t max_message_length = 10239;

std::string Context(const char* function, Mark mark) {
    return std::string(function) + (mark == Mark::enter ? "-->" : mark == Mark::leave ? "<--" : "");
}

// Runs what makes a line and writes it. Nothing of a log may surface: neither an exception nor a changed last error.
template <class Action>
void InSilence(Action action) noexcept {
    const LastErrorKeeper keeper;
    try {
        action();
    } catch (...) { // the line is lost
    }
}

void LogFailure(const char* function, std::wstring_view begin, std::wstring_view reason) {
    std::wstring message(begin);
    message += reason;
    message += L'\'';
    WriteLog(LogLevel::error, function, message);
}

struct Outcome {
    HRESULT result;
    const wchar_t* line; // the log's sentence up to the result
};

constexpr wchar_t caught_line[] = L"Expression: '0' caused returning '";
constexpr wchar_t fail_line[] = L"Expression: 'E_FAIL' caused returning '";
constexpr wchar_t memory_line[] = L"Expression: 'E_OUTOFMEMORY' caused returning '";

void PutDetails(KOV::IString* out_error_details, const wchar_t* message) {
    if (out_error_details != nullptr) {
        (void)out_error_details->put_Value(message);
    }
}

Outcome OutcomeOfException(Ladder ladder, KOV::IString* out_error_details) {
    try {
        throw;
    } catch (const HResultException& exception) {
        PutDetails(out_error_details, exception.message.c_str());
        return {exception.hr, caught_line};
    } catch (const ApiException& exception) {
        PutDetails(out_error_details, exception.message.c_str());
        return {HRESULT_FROM_WIN32(exception.error), caught_line};
    } catch (const Exception& exception) {
        if (ladder == Ladder::full) {
            PutDetails(out_error_details, exception.message.c_str());
        }
        return {E_FAIL, fail_line};
    } catch (const std::range_error& error) { // a text that is no UTF; what() is ASCII
        if (ladder == Ladder::full) {
            const std::string_view text = error.what();
            PutDetails(out_error_details, std::wstring(text.begin(), text.end()).c_str());
        }
        return {E_FAIL, fail_line};
    } catch (const std::bad_alloc&) {
        return {E_OUTOFMEMORY, memory_line};
    } catch (...) {
        return {E_FAIL, fail_line};
    }
}

} // namespace

void TraceText(DWORD level, const char* function, Mark mark, const wchar_t* text) noexcept {
    InSilence([=] { WriteLog(level, Context(function, mark), text); });
}

void TraceFormatted(DWORD level, const char* function, Mark mark, std::wstring_view format, FormatArguments arguments) noexcept {
    InSilence([=] {
        wchar_t buffer[max_message_length];
        const auto formatted =
            fmt::vformat_to_n(buffer, max_message_length, fmt::wstring_view(format.data(), format.size()), arguments);
        WriteLog(level, Context(function, mark), {buffer, static_cast<std::size_t>(formatted.out - buffer)});
    });
}

HRESULT Returning(const char* function, const wchar_t* text, HRESULT result) noexcept {
    if (IsLogLevelEnabled(LogLevel::error)) {
        InSilence([=] { LogFailure(function, text, GetHResultString(result)); });
    }
    return result;
}

void LogReturning(const char* function, const wchar_t* text, const wchar_t* value) noexcept {
    if (IsLogLevelEnabled(LogLevel::error)) {
        InSilence([=] { LogFailure(function, text, value); });
    }
}

void LogReturning(const char* function, const wchar_t* call, HRESULT result, const wchar_t* value) noexcept {
    if (IsLogLevelEnabled(LogLevel::error)) {
        InSilence([=] { LogFailure(function, call + GetHResultString(result) + L"' caused returning '", value); });
    }
}

void LogThrowing(const char* function, const wchar_t* text, std::wstring_view message) noexcept {
    if (IsLogLevelEnabled(LogLevel::error)) {
        InSilence([=] { LogFailure(function, text, message); });
    }
}

HRESULT ResultOfException(Ladder ladder, const char* function, KOV::IString* out_error_details) noexcept {
    Outcome outcome = {E_OUTOFMEMORY, memory_line};
    InSilence([&] { outcome = OutcomeOfException(ladder, out_error_details); });
    // A failure must reach the host as one, also when a system function left no error behind.
    if (SUCCEEDED(outcome.result)) {
        outcome.result = E_FAIL;
    }
    return Returning(function, outcome.line, outcome.result);
}

} // namespace Diagnostics
