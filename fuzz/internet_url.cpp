// Canonicalising and cracking any text: nothing is read or written out of bounds, and a canonical URL is its own canonical
// spelling with parts that lie inside it.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/wininet.h"

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void CrackInside(const std::wstring& url) {
    URL_COMPONENTSW parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUserNameLength = parts.dwPasswordLength = parts.dwUrlPathLength = parts.dwExtraInfoLength =
        1;
    if (!InternetCrackUrlW(url.c_str(), 0, 0, &parts)) {
        return;
    }
    Require(parts.dwHostNameLength > 0 && parts.lpszHostName >= url.c_str());
    Require(parts.lpszExtraInfo + parts.dwExtraInfoLength == url.c_str() + url.size());
    Require(parts.lpszUrlPath + parts.dwUrlPathLength == parts.lpszExtraInfo);
}

void CheckCanonical(const std::wstring& text, DWORD flags) {
    wchar_t first[INTERNET_MAX_URL_LENGTH];
    wchar_t second[INTERNET_MAX_URL_LENGTH];
    DWORD size = INTERNET_MAX_URL_LENGTH;
    if (!InternetCanonicalizeUrlW(text.c_str(), first, &size, flags)) {
        return;
    }
    const std::wstring canonical(first, size);
    CrackInside(canonical);
    size = INTERNET_MAX_URL_LENGTH;
    // Behind a decoding the text is another one, and blanks at its end may go.
    if ((flags & ICU_DECODE) == 0) {
        Require(InternetCanonicalizeUrlW(canonical.c_str(), second, &size, flags) != 0);
        Require(std::wstring(second, size) == canonical);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        text.push_back(data[i] == 0xFF && i + 1 < size ? static_cast<wchar_t>(0x100 + data[++i]) : static_cast<wchar_t>(data[i]));
    }
    text = text.c_str();
    CrackInside(text);
    CheckCanonical(text, ICU_BROWSER_MODE | ICU_NO_ENCODE);
    CheckCanonical(text, ICU_BROWSER_MODE | ICU_NO_ENCODE | ICU_DECODE);
    return 0;
}
