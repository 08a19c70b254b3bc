#include <algorithm>
#include <string>
#include <string_view>

#include <unicode/dcfmtsym.h>
#include <unicode/decimfmt.h>
#include <unicode/numfmt.h>

#include "platform/errors_detail.h"
#include "platform/text.h"

namespace {

std::wstring Wide(const icu::UnicodeString& text) {
    std::wstring wide;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        wide += static_cast<wchar_t>(text.char32At(i));
    }
    return wide;
}

struct UserFormat {
    std::wstring decimal_separator = L".";
    std::wstring thousand_separator = L",";
    /// Digits of each group from the right, the last one repeating; "3" for 1,234,567, "32" for 12,34,567.
    std::wstring grouping = L"3";
};

UserFormat ReadUserFormat() {
    UserFormat user;
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberFormat> format(icu::NumberFormat::createInstance(status));
    const auto* const decimal = dynamic_cast<const icu::DecimalFormat*>(format.get());
    if (U_FAILURE(status) || decimal == nullptr) {
        return user;
    }
    const icu::DecimalFormatSymbols* const symbols = decimal->getDecimalFormatSymbols();
    user.decimal_separator = Wide(symbols->getConstSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol));
    user.thousand_separator = Wide(symbols->getConstSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol));
    if (!decimal->isGroupingUsed()) {
        user.grouping = L"0";
    } else {
        user.grouping = std::to_wstring(decimal->getGroupingSize());
        if (const int second = decimal->getSecondaryGroupingSize(); second > 0 && second != decimal->getGroupingSize()) {
            user.grouping += std::to_wstring(second);
        }
    }
    return user;
}

const UserFormat& User() {
    static const UserFormat user = ReadUserFormat();
    return user;
}

struct Digits {
    bool is_negative = false;
    std::wstring whole;
    std::wstring fraction;
};

bool AllDigits(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

bool Parse(std::wstring_view text, Digits& out) {
    out.is_negative = text.starts_with(L'-');
    text.remove_prefix(out.is_negative ? 1 : 0);
    const std::size_t point = text.find(L'.');
    out.whole = text.substr(0, point);
    out.fraction = point == std::wstring_view::npos ? std::wstring_view() : text.substr(point + 1);
    return !(out.whole.empty() && out.fraction.empty()) && AllDigits(out.whole) && AllDigits(out.fraction);
}

/// Adds one to a number in decimal digits.
void Increase(std::wstring& digits) {
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
        if (*digit != L'9') {
            ++*digit;
            return;
        }
        *digit = L'0';
    }
    digits.insert(digits.begin(), L'1');
}

void Round(Digits& number, std::size_t fraction_digits) {
    const bool rounds_up = number.fraction.size() > fraction_digits && number.fraction[fraction_digits] >= L'5';
    number.fraction.resize(fraction_digits, L'0');
    if (rounds_up) {
        std::wstring all = number.whole + number.fraction;
        Increase(all);
        number.whole = all.substr(0, all.size() - fraction_digits);
        number.fraction = all.substr(all.size() - fraction_digits);
    }
    number.whole.erase(0, std::min(number.whole.find_first_not_of(L'0'), number.whole.size()));
    if (number.whole.empty() && number.fraction.find_first_not_of(L'0') == std::wstring::npos) {
        number.is_negative = false;
    }
}

std::wstring Grouped(const std::wstring& whole, UINT grouping, const std::wstring& separator) {
    const std::wstring sizes = std::to_wstring(grouping);
    std::wstring result;
    std::size_t end = whole.size();
    for (std::size_t i = 0; end > 0; ++i) {
        const auto size = static_cast<std::size_t>(sizes[std::min(i, sizes.size() - 1)] - L'0');
        const std::size_t start = size == 0 || size >= end ? 0 : end - size;
        result = whole.substr(start, end - start) + (result.empty() ? L"" : separator + result);
        end = start;
    }
    return result;
}

std::wstring Signed(const std::wstring& text, bool is_negative, UINT order) {
    if (!is_negative) {
        return text;
    }
    switch (order) {
    case 0:
        return L"(" + text + L")";
    case 2:
        return L"- " + text;
    case 3:
        return text + L"-";
    case 4:
        return text + L" -";
    default:
        return L"-" + text;
    }
}

int Store(const std::wstring& text, LPWSTR buffer, int size) {
    const int needed = static_cast<int>(text.size()) + 1;
    if (size == 0) {
        return needed;
    }
    if (size < needed) {
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    }
    std::char_traits<wchar_t>::copy(buffer, text.c_str(), text.size() + 1);
    return needed;
}

} // namespace

int GetLocaleInfoW(LCID locale, LCTYPE type, LPWSTR buffer, int size) {
    if (locale != LOCALE_USER_DEFAULT || size < 0 || (size > 0 && buffer == nullptr)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    switch (type) {
    case LOCALE_SDECIMAL:
        return Store(User().decimal_separator, buffer, size);
    case LOCALE_STHOUSAND:
        return Store(User().thousand_separator, buffer, size);
    case LOCALE_SGROUPING: {
        std::wstring text;
        for (const wchar_t digit : User().grouping) {
            text += digit;
            text += L';';
        }
        return Store(text + L"0", buffer, size);
    }
    default:
        return FailWith(ERROR_INVALID_FLAGS);
    }
}

int GetNumberFormatW(LCID locale, DWORD flags, LPCWSTR value, const NUMBERFMTW* format, LPWSTR buffer, int size) {
    Digits number;
    if (locale != LOCALE_USER_DEFAULT || flags != 0 || value == nullptr || size < 0 || (size > 0 && buffer == nullptr) ||
        !Parse(value, number)) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    UserFormat user = User();
    const NUMBERFMTW standard{
        2, 1, static_cast<UINT>(std::stoul(user.grouping)), user.decimal_separator.data(), user.thousand_separator.data(), 1};
    const NUMBERFMTW& used = format == nullptr ? standard : *format;
    if (used.NumDigits > 9 || used.lpDecimalSep == nullptr || used.lpThousandSep == nullptr) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    Round(number, used.NumDigits);
    std::wstring text = Grouped(number.whole, used.Grouping, used.lpThousandSep);
    if (text.empty() && used.LeadingZero != 0) {
        text = L"0";
    }
    if (used.NumDigits > 0) {
        text += used.lpDecimalSep + number.fraction;
    }
    return Store(Signed(text, number.is_negative, used.NegativeOrder), buffer, size);
}
