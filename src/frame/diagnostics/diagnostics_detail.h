#pragma once

/// What the macros of diagnostics.h call. Nothing else includes this header.

#include <fmt/core.h>

#include <string_view>
#include <type_traits>
#include <utility>

#include "frame/diagnostics/function_name.h"
#include "platform/types.h"

namespace KOV {
struct IString;
}

namespace Diagnostics {

/// What follows the function's name in the context of a line: nothing, "-->" or "<--".
enum class Mark { none, enter, leave };

using FormatArguments = fmt::basic_format_args<fmt::buffer_context<wchar_t>>;

/// Writes a line whose message is the text as it stands, or empty.
void TraceText(DWORD level, const char* function, Mark mark, const wchar_t* text) noexcept;
inline void Trace(DWORD level, const char* function, Mark mark) noexcept { TraceText(level, function, mark, L""); }
/// Writes a line; the message is cut at 10,239 characters.
void TraceFormatted(DWORD level, const char* function, Mark mark, std::wstring_view format, FormatArguments arguments) noexcept;

/// How a value is handed to the formatter: null texts count as empty, owners of texts as what they hold.
template <class T>
decltype(auto) Printable(const T& value) noexcept {
    if constexpr (std::is_convertible_v<const T&, std::wstring_view> && std::is_pointer_v<std::decay_t<T>>) {
        const wchar_t* const text = value;
        return text == nullptr ? std::wstring_view() : std::wstring_view(text);
    } else if constexpr (requires { std::wstring_view(value.View()); }) {
        return std::wstring_view(value.View());
    } else {
        return (value);
    }
}

template <class T>
using PrintableType = std::remove_cvref_t<decltype(Printable(std::declval<const T&>()))>;

template <class... Arguments>
using Format = fmt::basic_format_string<wchar_t, PrintableType<std::type_identity_t<Arguments>>...>;

template <class... Arguments>
void Trace(DWORD level, const char* function, Mark mark, std::type_identity_t<Format<Arguments...>> format,
           const Arguments&... arguments) noexcept {
    const fmt::basic_string_view<wchar_t> text = format;
    TraceFormatted(level, function, mark, {text.data(), text.size()},
                   fmt::make_format_args<fmt::buffer_context<wchar_t>>(Printable(arguments)...));
}

/// Logs a failed test whose text ends in "caused returning '", and gives the result back.
HRESULT Returning(const char* function, const wchar_t* text, HRESULT result) noexcept;
/// The same for what isn't an HRESULT: the source text of the value stands in the line.
void LogReturning(const char* function, const wchar_t* text, const wchar_t* value) noexcept;
/// The same for a failed call: its result stands in the line, and the source text of the value that is returned.
void LogReturning(const char* function, const wchar_t* call, HRESULT result, const wchar_t* value) noexcept;
void LogThrowing(const char* function, const wchar_t* text, std::wstring_view message) noexcept;

/// Throws what was built before the call, so before anything is logged.
template <class E>
[[noreturn]] void Throw(const char* function, const wchar_t* text, E&& exception) {
    LogThrowing(function, text, exception.message);
    throw std::forward<E>(exception);
}

/// Which exceptions hand their text to the host: with the short ladder an `Exception` counts as unknown.
enum class Ladder { full, brief };

/// The one place where an exception becomes a result. To be called inside a catch block: logs the exception in flight,
/// writes its text to `out_error_details` (null is allowed), and gives a result that is always negative.
HRESULT ResultOfException(Ladder ladder, const char* function, KOV::IString* out_error_details) noexcept;

} // namespace Diagnostics
