#include "frame/diagnostics/mask_url.h"

#include <algorithm>

namespace {

// What may be read in a log: how a location is written says nothing about whose it is.
constexpr std::wstring_view tokens[] = {L"http://", L"https://", L"\\UNC\\", L"@SSL", L"DavWWWRoot"};

constexpr bool IsCapital(wchar_t c) { return c >= L'A' && c <= L'Z'; }
constexpr bool IsSmall(wchar_t c) { return c >= L'a' && c <= L'z'; }
constexpr bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
constexpr wchar_t Lower(wchar_t c) { return IsCapital(c) ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }

bool BeginsWith(std::wstring_view text, std::wstring_view token) {
    return text.size() >= token.size() &&
           std::equal(token.begin(), token.end(), text.begin(), [](wchar_t a, wchar_t b) { return Lower(a) == Lower(b); });
}

std::size_t TokenLength(std::wstring_view text) {
    for (const std::wstring_view token : tokens) {
        if (BeginsWith(text, token)) {
            return token.size();
        }
    }
    return 0;
}

constexpr wchar_t MaskedCharacter(wchar_t c) { return IsCapital(c) ? L'X' : IsSmall(c) ? L'x' : IsDigit(c) ? L'1' : c; }

} // namespace

std::wstring MaskUrlForLog(std::wstring_view text) {
    std::wstring masked(text);
    for (std::size_t i = 0; i < text.size();) {
        if (const std::size_t length = TokenLength(text.substr(i)); length != 0) {
            i += length;
        } else {
            masked[i] = MaskedCharacter(text[i]);
            ++i;
        }
    }
    return masked;
}

fmt::buffer_context<wchar_t>::iterator fmt::formatter<MaskedText, wchar_t>::format(const MaskedText& masked,
                                                                                   fmt::buffer_context<wchar_t>& context) const {
    const std::wstring text = MaskUrlForLog(masked.text);
    return std::copy(text.begin(), text.end(), context.out());
}
