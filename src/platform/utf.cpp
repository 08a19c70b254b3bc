#include <stdexcept>
#include <type_traits>

#include "platform/text.h"

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t highest = 0x10FFFF;

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }
constexpr bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }
constexpr char32_t Joined(char32_t high, char32_t low) { return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00); }

[[noreturn]] void ThrowBadConversion() { throw std::range_error("bad conversion"); }

/// The code point at `position`, which moves behind it; a pair of surrogates is one.
char32_t NextCodePoint(std::wstring_view text, std::size_t& position) {
    const auto c = static_cast<char32_t>(text[position++]);
    if (IsHighSurrogate(c) && position < text.size() && IsLowSurrogate(static_cast<char32_t>(text[position]))) {
        return Joined(c, static_cast<char32_t>(text[position++]));
    }
    return c;
}

struct Lead {
    int following;
    char32_t bits;
    char32_t least;
};

Lead LeadOf(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1, byte & 0x1Fu, 0x80};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, byte & 0x0Fu, 0x800};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, byte & 0x07u, 0x10000};
    }
    ThrowBadConversion();
}

char32_t DecodeSequence(std::string_view text, std::size_t& position) {
    const Lead lead = LeadOf(static_cast<unsigned char>(text[position++]));
    char32_t value = lead.bits;
    for (int i = 0; i < lead.following; ++i) {
        if (position == text.size() || (static_cast<unsigned char>(text[position]) & 0xC0) != 0x80) {
            ThrowBadConversion();
        }
        value = (value << 6) | (static_cast<unsigned char>(text[position++]) & 0x3Fu);
    }
    if (value < lead.least || value > highest || IsSurrogate(value)) {
        ThrowBadConversion();
    }
    return value;
}

void AppendUtf8(char32_t c, std::string& out) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += {static_cast<char>(0xC0 | (c >> 6)), static_cast<char>(0x80 | (c & 0x3F))};
    } else if (c < 0x10000) {
        out += {static_cast<char>(0xE0 | (c >> 12)), static_cast<char>(0x80 | ((c >> 6) & 0x3F)),
                static_cast<char>(0x80 | (c & 0x3F))};
    } else {
        out += {static_cast<char>(0xF0 | (c >> 18)), static_cast<char>(0x80 | ((c >> 12) & 0x3F)),
                static_cast<char>(0x80 | ((c >> 6) & 0x3F)), static_cast<char>(0x80 | (c & 0x3F))};
    }
}

/// Without an early end, so that the compiler looks at several characters at once.
template <typename Character>
bool IsAscii(std::basic_string_view<Character> text) noexcept {
    std::make_unsigned_t<Character> all = 0;
    for (const Character c : text) {
        all |= static_cast<std::make_unsigned_t<Character>>(c);
    }
    return all < 0x80;
}

void AppendUnit(char32_t unit, std::string& out) {
    out += static_cast<char>(unit & 0xFF);
    out += static_cast<char>((unit >> 8) & 0xFF);
}

} // namespace

std::wstring WideFromUtf8(std::string_view text) {
    if (IsAscii(text)) {
        return std::wstring(text.begin(), text.end());
    }
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const auto byte = static_cast<unsigned char>(text[position]);
        if (byte < 0x80) {
            wide += static_cast<wchar_t>(byte);
            ++position;
        } else {
            wide += static_cast<wchar_t>(DecodeSequence(text, position));
        }
    }
    return wide;
}

std::string Utf8FromWide(std::wstring_view text) {
    if (IsAscii(text)) {
        return std::string(text.begin(), text.end());
    }
    std::string utf8;
    utf8.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const char32_t c = NextCodePoint(text, position);
        if (IsSurrogate(c) || c > highest) {
            ThrowBadConversion();
        }
        AppendUtf8(c, utf8);
    }
    return utf8;
}

void JoinSurrogates(std::wstring& text) {
    std::size_t target = 0;
    for (std::size_t position = 0; position < text.size();) {
        text[target++] = static_cast<wchar_t>(NextCodePoint(text, position));
    }
    text.resize(target);
}

void AppendUtf16Le(std::wstring_view text, std::string& out_bytes) {
    out_bytes.reserve(out_bytes.size() + text.size() * 2);
    for (std::size_t position = 0; position < text.size();) {
        char32_t c = NextCodePoint(text, position);
        if (IsSurrogate(c) || c > highest) {
            c = replacement;
        }
        if (c < 0x10000) {
            AppendUnit(c, out_bytes);
        } else {
            AppendUnit(0xD800 + ((c - 0x10000) >> 10), out_bytes);
            AppendUnit(0xDC00 + ((c - 0x10000) & 0x3FF), out_bytes);
        }
    }
}
