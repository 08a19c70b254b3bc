#include "platform/text.h"

#include <cstdlib>

#include <unicode/coll.h>
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
        std::unique_ptr<icu::Collator> made(icu::Collator::createInstance(status));
        if (U_FAILURE(status)) {
            return std::unique_ptr<icu::Collator>();
        }
        made->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        made->setAttribute(UCOL_STRENGTH, UCOL_SECONDARY, status);
        return made;
    }();
    return collator.get();
}

} // namespace

int StrCmpLogicalW(LPCWSTR text1, LPCWSTR text2) {
    const wchar_t* const a = text1 == nullptr ? L"" : text1;
    const wchar_t* const b = text2 == nullptr ? L"" : text2;
    const icu::Collator* const collator = NumericCollator();
    if (collator == nullptr) {
        return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a, -1, b, -1) - CSTR_EQUAL;
    }
    const auto unicode = [](const wchar_t* text) {
        return icu::UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(text),
                                             static_cast<int32_t>(std::char_traits<wchar_t>::length(text)));
    };
    UErrorCode status = U_ZERO_ERROR;
    return collator->compare(unicode(a), unicode(b), status);
}
