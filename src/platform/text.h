#pragma once

/// Wide texts: the one pair of UTF conversions, comparison, and numbers as the user writes them. A wide character is a
/// code point here; pairs of surrogates that others leave in a text are joined on its way through a conversion.

#include <string>
#include <string_view>

#include "platform/types.h"

using LCID = DWORD;
using LCTYPE = DWORD;

constexpr LCID LOCALE_INVARIANT = 0x7F;
constexpr LCID LOCALE_USER_DEFAULT = 0x400;

/// UTF-8 to wide (RFC 3629). Throws `std::range_error` "bad conversion" for anything but well-formed UTF-8: overlong or
/// cut sequences, surrogates, values above U+10FFFF.
KOV_PLATFORM_API std::wstring WideFromUtf8(std::string_view text);

/// Wide to UTF-8. A pair of surrogates goes out as its one code point; a lone surrogate or a value above U+10FFFF throws
/// `std::range_error` "bad conversion".
KOV_PLATFORM_API std::string Utf8FromWide(std::wstring_view text);

/// Replaces each pair of surrogates by its one code point, in place; lone ones stay.
KOV_PLATFORM_API void JoinSurrogates(std::wstring& text);

/// Appends the UTF-16LE bytes of `text` (RFC 2781). Never refuses: lone surrogates and values above U+10FFFF become U+FFFD.
/// Throws only `std::bad_alloc`.
KOV_PLATFORM_API void AppendUtf16Le(std::wstring_view text, std::string& out_bytes);

constexpr DWORD NORM_IGNORECASE = 1;
constexpr int CSTR_LESS_THAN = 1;
constexpr int CSTR_EQUAL = 2;
constexpr int CSTR_GREATER_THAN = 3;

/// Compares code point by code point; with `NORM_IGNORECASE` after simple case folding, which keeps lengths (so "ss" differs
/// from "ß"). No collation: the order is that of the folded code points. A negative length stands for a zero-terminated
/// text. `locale` is `LOCALE_INVARIANT`, `flags` 0 or `NORM_IGNORECASE`. 0 is failure: 87 for a null text or another
/// locale, 1004 for other flags. Allocates nothing, any thread.
extern "C" KOV_PLATFORM_API int CompareStringW(LCID locale, DWORD flags, LPCWSTR text1, int length1, LPCWSTR text2, int length2);

/// The order in which people expect names: letter case ignored, runs of digits by their number ("a2" before "a10"), else by
/// the user's collation. Negative, 0 or positive. Null counts as empty.
extern "C" KOV_PLATFORM_API int StrCmpLogicalW(LPCWSTR text1, LPCWSTR text2);

constexpr DWORD SORT_DIGITSASNUMBERS = 8;
constexpr DWORD LCMAP_SORTKEY = 0x400;

/// A key of bytes, of which `memcmp` tells the order of the texts: many comparisons of one text cost one look at the tables.
/// `LOCALE_USER_DEFAULT` with `LCMAP_SORTKEY | NORM_IGNORECASE | SORT_DIGITSASNUMBERS` gives that of `StrCmpLogicalW`,
/// `LOCALE_INVARIANT` with `LCMAP_SORTKEY | NORM_IGNORECASE` that of `CompareStringW`. A negative length stands for a
/// zero-terminated text. `key` takes `size` bytes. Gives the key's length in bytes, with the zero at its end, also for `size` 0,
/// which stores nothing; 0 is failure: 122 for a short buffer, 1004 for other flags, 87 for anything else. Any thread.
extern "C" KOV_PLATFORM_API int LCMapStringW(LCID locale, DWORD flags, LPCWSTR text, int length, LPWSTR key, int size);

struct NUMBERFMTW {
    UINT NumDigits;
    UINT LeadingZero;
    /// Sizes of the groups as decimal digits: 3 for 1,234,567; 32 for 12,34,567; 0 for none.
    UINT Grouping;
    LPWSTR lpDecimalSep;
    LPWSTR lpThousandSep;
    /// 0 "(1.1)", 1 "-1.1", 2 "- 1.1", 3 "1.1-", 4 "1.1 -".
    UINT NegativeOrder;
};

constexpr LCTYPE LOCALE_SDECIMAL = 0x0E;
constexpr LCTYPE LOCALE_STHOUSAND = 0x0F;
constexpr LCTYPE LOCALE_SGROUPING = 0x10;

/// One property of the user's locale as text: the separators, or the grouping as "3;0" or "3;2;0". Gives the length with NUL,
/// also for `size` 0, which stores nothing; 0 is failure: 122 for a short buffer, 1004 for another property, 87 else.
extern "C" KOV_PLATFORM_API int GetLocaleInfoW(LCID locale, LCTYPE type, LPWSTR buffer, int size);

/// `value`, decimal digits with an optional "-" and an optional fraction behind ".", as `format` says; with a null `format` as
/// the user's locale has it, with two fraction digits. Rounds halves away from zero. `flags` is 0. Gives the length with
/// NUL, also for `size` 0, which stores nothing; 0 is failure: 122 for a short buffer, 87 for anything else.
extern "C" KOV_PLATFORM_API int GetNumberFormatW(LCID locale, DWORD flags, LPCWSTR value, const NUMBERFMTW* format, LPWSTR buffer,
                                                 int size);
