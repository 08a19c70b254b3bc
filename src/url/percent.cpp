#include "url/percent.h"

#include <algorithm>

#include "frame/diagnostics/conversion.h"

namespace {

constexpr std::string_view hex_digits = "0123456789ABCDEF";

constexpr bool IsPlain(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("-_.~/").find(c) != std::string_view::npos;
}

/// -1 for what is no hexadecimal digit.
template <class Char>
constexpr int ValueOfDigit(Char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

} // namespace

std::wstring EncodeUrlPath(std::wstring_view text) {
    const std::string bytes = Utf8OrThrow(text);
    std::wstring encoded;
    encoded.reserve(bytes.size());
    for (const char c : bytes) {
        if (IsPlain(c)) {
            encoded += static_cast<wchar_t>(c);
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += L'%';
            encoded += static_cast<wchar_t>(hex_digits[byte >> 4]);
            encoded += static_cast<wchar_t>(hex_digits[byte & 0x0F]);
        }
    }
    return encoded;
}

std::string DecodeUrlPercent(const char* narrow_text) {
    constexpr std::size_t usual_size = 2084;
    std::string decoded;
    decoded.reserve(usual_size);
    for (const char* at = narrow_text; *at != '\0'; ++at) {
        // The second digit is looked at only behind a first one, so never behind the terminator.
        const int high = *at == '%' ? ValueOfDigit(at[1]) : -1;
        const int low = high >= 0 ? ValueOfDigit(at[2]) : -1;
        if (low >= 0) {
            decoded += static_cast<char>(high * 16 + low);
            at += 2;
        } else {
            decoded += *at;
        }
    }
    return decoded;
}

bool DecodeAsciiPercent(std::wstring& text) {
    for (const wchar_t* at = text.c_str(); at != text.c_str() + text.size(); ++at) {
        if (*at == 0 || static_cast<char32_t>(*at) > 0x7F ||
            (*at == L'%' && ValueOfDigit(at[1]) >= 8 && ValueOfDigit(at[2]) >= 0)) {
            return false;
        }
    }
    std::size_t size = std::min(text.find(L'%'), text.size());
    for (const wchar_t* at = text.c_str() + size; *at != 0; ++at) {
        const int high = *at == L'%' ? ValueOfDigit(at[1]) : -1;
        const int low = high >= 0 ? ValueOfDigit(at[2]) : -1;
        at += low >= 0 ? 2 : 0;
        text[size++] = low >= 0 ? static_cast<wchar_t>(high * 16 + low) : *at;
    }
    text.resize(size);
    return true;
}
