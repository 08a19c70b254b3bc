#include "platform/text.h"

#include <cstdlib>
#include <string_view>

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/errors_detail.h"

namespace {

/// Simple folding keeps the length; most texts are ASCII and never reach the tables.
char32_t Folded(wchar_t c) {
    const auto code = static_cast<char32_t>(c);
    if (code < 0x80) {
        return code >= U'A' && code <= U'Z' ? code + 32 : code;
    }
    return code > 0x10FFFF ? code : static_cast<char32_t>(u_foldCase(static_cast<UChar32>(code), U_FOLD_CASE_DEFAULT));
}

std::size_t LengthOf(LPCWSTR text, int length) {
    return length < 0 ? std::char_traits<wchar_t>::length(text) : static_cast<std::size_t>(length);
}

int Order(char32_t a, char32_t b) { return a < b ? CSTR_LESS_THAN : CSTR_GREATER_THAN; }

} // namespace

int CompareStringW(LCID locale, DWORD flags, LPCWSTR text1, int length1, LPCWSTR text2, int length2) {
    if (text1 == nullptr || text2 == nullptr || locale != LOCALE_INVARIANT) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~NORM_IGNORECASE) != 0) {
        return FailWith(ERROR_INVALID_FLAGS);
    }
    const std::size_t count1 = LengthOf(text1, length1);
    const std::size_t count2 = LengthOf(text2, length2);
    const std::size_t shared = count1 < count2 ? count1 : count2;
    for (std::size_t i = 0; i < shared; ++i) {
        if (text1[i] == text2[i]) {
            continue;
        }
        const char32_t a = flags != 0 ? Folded(text1[i]) : static_cast<char32_t>(text1[i]);
        const char32_t b = flags != 0 ? Folded(text2[i]) : static_cast<char32_t>(text2[i]);
        if (a != b) {
            return Order(a, b);
        }
    }
    return count1 == count2 ? CSTR_EQUAL : count1 < count2 ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
}

namespace {

const icu::Collator* NumericCollator() {
    static const std::unique_ptr<icu::Collator> collator = [] {
        UErrorCode status = U_ZERO_ERROR;
        const icu::Locale& person = icu::Locale::getDefault();
        // The locale of a machine without a language orders by code point: capital letters before all others.
        const bool has_language = std::string_view(person.getVariant()) != "POSIX";
        std::unique_ptr<icu::Collator> made(
            icu::Collator::createInstance(has_language ? person : icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) {
            return std::unique_ptr<icu::Collator>();
        }
        made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        made->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
        return made;
    }();
    return collator.get();
}

icu::UnicodeString Unicode(LPCWSTR text, std::size_t length) {
    return icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(text), static_cast<int32_t>(length));
}

/// Four bytes a code point, the highest first.
int FoldedKey(LPCWSTR text, std::size_t length, BYTE* key, std::size_t size) {
    const std::size_t needed = length * 4 + 1;
    if (size != 0) {
        if (size < needed) {
            return FailWith(ERROR_INSUFFICIENT_BUFFER);
        }
        for (std::size_t i = 0; i < length; ++i) {
            const char32_t folded = Folded(text[i]);
            for (const int shift : {24, 16, 8, 0}) {
                *key++ = static_cast<BYTE>(folded >> shift);
            }
        }
        *key = 0;
    }
    return static_cast<int>(needed);
}

int CollationKey(const icu::Collator& collator, LPCWSTR text, std::size_t length, BYTE* key, std::size_t size) {
    const int32_t needed = collator.getSortKey(Unicode(text, length), key, static_cast<int32_t>(size));
    return size != 0 && needed > static_cast<int32_t>(size) ? FailWith(ERROR_INSUFFICIENT_BUFFER) : needed;
}

} // namespace

int StrCmpLogicalW(LPCWSTR text1, LPCWSTR text2) {
    const wchar_t* const a = text1 == nullptr ? L"" : text1;
    const wchar_t* const b = text2 == nullptr ? L"" : text2;
    const icu::Collator* const collator = NumericCollator();
    if (collator == nullptr) {
        return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a, -1, b, -1) - CSTR_EQUAL;
    }
    UErrorCode status = U_ZERO_ERROR;
    return collator->compare(Unicode(a, LengthOf(a, -1)), Unicode(b, LengthOf(b, -1)), status);
}

int LCMapStringW(LCID locale, DWORD flags, LPCWSTR text, int length, LPWSTR key, int size) {
    constexpr DWORD folded = LCMAP_SORTKEY | NORM_IGNORECASE;
    if (text == nullptr || size < 0 || (size > 0 && key == nullptr) ||
        (locale != LOCALE_INVARIANT && locale != LOCALE_USER_DEFAULT)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    if (flags != (locale == LOCALE_INVARIANT ? folded : folded | SORT_DIGITSASNUMBERS)) {
        return FailWith(ERROR_INVALID_FLAGS);
    }
    auto* const bytes = reinterpret_cast<BYTE*>(key);
    const icu::Collator* const collator = locale == LOCALE_INVARIANT ? nullptr : NumericCollator();
    return collator == nullptr ? FoldedKey(text, LengthOf(text, length), bytes, static_cast<std::size_t>(size))
                               : CollationKey(*collator, text, LengthOf(text, length), bytes, static_cast<std::size_t>(size));
}
