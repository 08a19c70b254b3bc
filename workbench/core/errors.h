#pragma once

/// Failures of the host, and the words for them.

#include <stdexcept>
#include <string>
#include <string_view>

#include "host/string.h"
#include "platform/types.h"

/// The user, or whoever holds the cancel flag, gave up.
constexpr HRESULT UserCanceled = MakeHResult(0x821704C7);
/// The server wants the same upload once more.
constexpr HRESULT RunAgain = MakeHResult(0x800704D5);
/// A callback's end of file.
constexpr HRESULT EndOfFile = MakeHResult(0x80070026);

/// Was this result the user's own wish? Both codes for it are in use.
constexpr bool IsCanceledResult(HRESULT result) noexcept { return result == UserCanceled || result == MakeHResult(0x800704C7); }

/// What the host itself could not do, with a sentence for the user in UTF-8. Its operations translate it to `Result()` where
/// they are called through an interface.
class HostException : public std::runtime_error {
public:
    HostException(HRESULT result, const std::string& text) : std::runtime_error(text), m_result(result) {}
    HRESULT Result() const noexcept { return m_result; }

private:
    HRESULT m_result;
};

/// The result code of `errno` after a failed call on a file.
HRESULT ResultOfErrno(int error) noexcept;
/// Throws for a failed call on a file: `what` could not be done to `path`, and why.
[[noreturn]] void ThrowErrno(const std::string& what, const std::string& path, int error);

/// The words for a failure: `details` when somebody filled it, else the system's text of the code, else the code itself.
/// `details` may be null.
std::wstring FailureText(HRESULT result, KOV::IString* details);

/// Fills `details`, which may be null, with UTF-8.
void PutDetails(KOV::IString* details, std::string_view text);

/// Runs `body` where an exception must not pass: gives its result, or the code of what it threw, whose text goes to `details`.
template <class Body>
HRESULT AtBorder(KOV::IString* details, Body&& body) noexcept;

HRESULT TranslateException(KOV::IString* details) noexcept;

template <class Body>
HRESULT AtBorder(KOV::IString* details, Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return TranslateException(details);
    }
}
