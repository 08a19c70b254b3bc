#pragma once

/// URLs and paths stand in the log only with everything blanked out that could tell a user's site.

#include <fmt/core.h>

#include <string>
#include <string_view>

/// ASCII capitals become `X`, small letters `x`, digits `1`; "http://", "https://", "\UNC\", "@SSL" and "DavWWWRoot" stay,
/// in any letter case, and so does every other character.
std::wstring MaskUrlForLog(std::wstring_view text);

/// A text that a trace masks when, and only when, its line is written. Looks at the text; doesn't own it.
struct MaskedText {
    std::wstring_view text;
};

inline MaskedText Masked(std::wstring_view text) noexcept { return {text}; }
/// Null counts as the empty text.
inline MaskedText Masked(const wchar_t* text) noexcept { return {text == nullptr ? std::wstring_view() : text}; }

template <>
struct fmt::formatter<MaskedText, wchar_t> {
    constexpr auto parse(fmt::basic_format_parse_context<wchar_t>& context) { return context.begin(); }
    fmt::buffer_context<wchar_t>::iterator format(const MaskedText& masked, fmt::buffer_context<wchar_t>& context) const;
};
