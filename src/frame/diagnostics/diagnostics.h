#pragma once

/// Traces, tests and the border to the host. Every operation announces itself, tests each step that can fail with a macro
/// that logs the source text of the test, and hands failure on as an exception inside and as an HRESULT at the host:
///
///     HRESULT FileSystem::Delete(IAFS_Name* name, KOV::IKOV_Flag* cancel_flag, KOV::IString* out_error_details) {
///         TRACE_ENTER();
///         INTERFACE_TRY
///         CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
///         CHECK_OR_RETURN(name->get_Count(&count));
///         TRACE_FORMAT(LogLevel::information, L"deleting '{}'", Masked(url));
///         TRACE_LEAVE(L"S_OK");
///         return S_OK;
///         INTERFACE_CATCH(out_error_details)
///     }
///
/// Formats are those of fmt, checked by the compiler. Arguments are evaluated only when the line is written; URLs and paths
/// go through Masked(). Wide C strings may be null. A `bool` is written as a word, with `{:d}` as 0 or 1. Any thread.

#include "frame/diagnostics/cancel.h"
#include "frame/diagnostics/diagnostics_detail.h"
#include "frame/diagnostics/error_text.h"
#include "frame/diagnostics/exceptions.h"
#include "frame/diagnostics/log_file.h"
#include "frame/diagnostics/mask_url.h"

/// First statement of an operation: the line `X::Y-->`, with an optional format and its arguments.
#define TRACE_ENTER(...) KOV_TRACE(LogLevel::verbose, Diagnostics::Mark::enter __VA_OPT__(, ) __VA_ARGS__)

/// Last statement before the return of the success path: the line `X::Y<--`, with the result as a format and arguments.
#define TRACE_LEAVE(...) KOV_TRACE(LogLevel::verbose, Diagnostics::Mark::leave __VA_OPT__(, ) __VA_ARGS__)

/// `TRACE_LEAVE` with the source text of `result`, and the return: TRACE_RETURN(S_OK).
#define TRACE_RETURN(result)                                                                                                     \
    do {                                                                                                                         \
        if (IsLogLevelEnabled(LogLevel::verbose)) [[unlikely]] {                                                                 \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::TraceText(LogLevel::verbose, kov_function.text, Diagnostics::Mark::leave, L"" #result);                 \
        }                                                                                                                        \
        return result;                                                                                                           \
    } while (false)

/// A line of the given level: TRACE_FORMAT(LogLevel::warning, L"Need retry, {} left", count).
#define TRACE_FORMAT(level, ...) KOV_TRACE(level, Diagnostics::Mark::none, __VA_ARGS__)

/// A line of the given level whose message is a text as it stands and of any length, such as a body: TRACE_TEXT(level, text).
#define TRACE_TEXT(level, ...)                                                                                                   \
    do {                                                                                                                         \
        if (IsLogLevelEnabled(level)) [[unlikely]] {                                                                             \
            KOV_FUNCTION_NAME;                                                                                                   \
            WriteLog(level, kov_function.text, __VA_ARGS__);                                                                     \
        }                                                                                                                        \
    } while (false)

/// CHECK_OR_RETURN(condition, hr): when the condition is false, logs that and returns `hr`.
/// CHECK_OR_RETURN(call): when the HRESULT of the call is negative, logs that and returns it.
#define CHECK_OR_RETURN(expression, ...)                                                                                         \
    KOV_FIRST(__VA_OPT__(KOV_RETURN_IF_FALSE, ) KOV_RETURN_IF_FAILED, )                                                          \
    (L"Expression: '" #expression L"' caused returning '", expression __VA_OPT__(, ) __VA_ARGS__)

/// For functions that give no HRESULT: the source text of the value is logged. `void(0)` returns nothing.
#define CHECK_OR_RETURN_VALUE(condition, ...)                                                                                    \
    do {                                                                                                                         \
        if (!(condition)) [[unlikely]] {                                                                                         \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::LogReturning(kov_function.text, L"Expression: '" #condition L"' caused returning '", L"" #__VA_ARGS__); \
            return __VA_ARGS__;                                                                                                  \
        }                                                                                                                        \
    } while (false)

/// The same for a call that gives an HRESULT, inside a function that doesn't; the line holds both.
#define CHECK_CALL_OR_RETURN_VALUE(call, ...)                                                                                    \
    do {                                                                                                                         \
        if (const HRESULT kov_result = (call); FAILED(kov_result)) [[unlikely]] {                                                \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::LogReturning(kov_function.text, L"Expression: '" #call L"'='", kov_result, L"" #__VA_ARGS__);           \
            return __VA_ARGS__;                                                                                                  \
        }                                                                                                                        \
    } while (false)

/// When the condition is false, builds the exception, logs its message, and throws it.
#define CHECK_OR_THROW(condition, ...)                                                                                           \
    do {                                                                                                                         \
        if (!(condition)) [[unlikely]] {                                                                                         \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::Throw(kov_function.text, L"Expression '" #condition L"' caused throwing '", __VA_ARGS__);               \
        }                                                                                                                        \
    } while (false)

/// Builds the exception, logs its message, and throws it.
#define THROW_LOGGED(...)                                                                                                        \
    do {                                                                                                                         \
        KOV_FUNCTION_NAME;                                                                                                       \
        Diagnostics::Throw(kov_function.text, L"Throwing '", __VA_ARGS__);                                                       \
    } while (false)

/// Around the body of an operation of the host's interfaces. The argument of the closing macro is the operation's
/// `out_error_details`, or nullptr where it has none.
#define INTERFACE_TRY try {
#define INTERFACE_CATCH(out_error_details) KOV_INTERFACE_CATCH(Diagnostics::Ladder::full, out_error_details)
/// Without the text of an `Exception`; for operations that promise codes only.
#define INTERFACE_CATCH_SHORT(out_error_details) KOV_INTERFACE_CATCH(Diagnostics::Ladder::brief, out_error_details)

// What the macros above are made of.

#define KOV_FIRST(first, ...) first

#define KOV_FUNCTION_NAME                                                                                                        \
    static constexpr Diagnostics::FunctionName<Diagnostics::FunctionNameLength(__PRETTY_FUNCTION__)> kov_function(               \
        __PRETTY_FUNCTION__)

#define KOV_TRACE(level, ...)                                                                                                    \
    do {                                                                                                                         \
        if (IsLogLevelEnabled(level)) [[unlikely]] {                                                                             \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::Trace(level, kov_function.text, __VA_ARGS__);                                                           \
        }                                                                                                                        \
    } while (false)

#define KOV_RETURN_IF_FALSE(sentence, condition, ...)                                                                            \
    do {                                                                                                                         \
        if (!(condition)) [[unlikely]] {                                                                                         \
            KOV_FUNCTION_NAME;                                                                                                   \
            return Diagnostics::Returning(kov_function.text, sentence, __VA_ARGS__);                                             \
        }                                                                                                                        \
    } while (false)

#define KOV_RETURN_IF_FAILED(sentence, ...)                                                                                      \
    do {                                                                                                                         \
        if (const HRESULT kov_result = (__VA_ARGS__); FAILED(kov_result)) [[unlikely]] {                                         \
            KOV_FUNCTION_NAME;                                                                                                   \
            return Diagnostics::Returning(kov_function.text, sentence, kov_result);                                              \
        }                                                                                                                        \
    } while (false)

#define KOV_INTERFACE_CATCH(ladder, out_error_details)                                                                           \
    }                                                                                                                            \
    catch (...) {                                                                                                                \
        KOV_FUNCTION_NAME;                                                                                                       \
        return Diagnostics::ResultOfException(ladder, kov_function.text, out_error_details);                                     \
    }
