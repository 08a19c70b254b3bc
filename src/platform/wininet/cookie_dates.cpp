#include <array>

#include "platform/wininet/cookies.h"
#include "platform/wininet/lines.h"

namespace wininet {
namespace {

constexpr std::array<std::string_view, 12> months = {"jan", "feb", "mar", "apr", "may", "jun",
                                                     "jul", "aug", "sep", "oct", "nov", "dec"};

struct Fields {
    int day = 0;
    int month = 0;
    int year = -1;
    int hour = -1;
    int minute = 0;
    int second = 0;
};

bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Everything but digits, letters and the colon of a time parts the tokens.
bool IsDelimiter(char c) noexcept {
    return !IsDigit(c) && c != ':' && !((c | 0x20) >= 'a' && (c | 0x20) <= 'z') && static_cast<unsigned char>(c) < 0x7F;
}

/// A run of `least` to `most` digits at the front, taken off; -1 when there is none or a longer one.
int TakeNumber(std::string_view& text, size_t least, size_t most) noexcept {
    size_t size = 0;
    int value = 0;
    while (size < text.size() && IsDigit(text[size])) {
        if (size == most) {
            return -1;
        }
        value = value * 10 + (text[size++] - '0');
    }
    text.remove_prefix(size);
    return size < least ? -1 : value;
}

bool TakeTime(std::string_view token, Fields& out) noexcept {
    const int hour = TakeNumber(token, 1, 2);
    if (hour < 0 || !token.starts_with(':')) {
        return false;
    }
    token.remove_prefix(1);
    const int minute = TakeNumber(token, 1, 2);
    if (minute < 0 || !token.starts_with(':')) {
        return false;
    }
    token.remove_prefix(1);
    const int second = TakeNumber(token, 1, 2);
    if (second < 0) {
        return false;
    }
    out.hour = hour;
    out.minute = minute;
    out.second = second;
    return true;
}

int MonthOf(std::string_view token) noexcept {
    for (size_t i = 0; i < months.size(); ++i) {
        if (SameName(token.substr(0, 3), months[i])) {
            return static_cast<int>(i) + 1;
        }
    }
    return 0;
}

void TakeToken(std::string_view token, Fields& out) noexcept {
    if (out.hour < 0 && TakeTime(token, out)) {
        return;
    }
    const size_t digits = std::min(token.find_first_not_of("0123456789"), token.size());
    std::string_view rest = token;
    if (out.day == 0 && digits >= 1 && digits <= 2) {
        out.day = TakeNumber(rest, 1, 2);
    } else if (out.month == 0 && digits == 0) {
        out.month = MonthOf(token);
    } else if (out.year < 0 && digits >= 2 && digits <= 4) {
        out.year = TakeNumber(rest, 2, 4);
        if (digits == 2) {
            out.year += out.year < 70 ? 2000 : 1900;
        }
    }
}

/// Days since 1970-01-01 in the Gregorian calendar.
std::int64_t DaysFromCivil(int year, int month, int day) noexcept {
    year -= month <= 2 ? 1 : 0;
    const int era = (year >= 0 ? year : year - 399) / 400;
    const int year_of_era = year - era * 400;
    const int day_of_year = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int day_of_era = year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    return static_cast<std::int64_t>(era) * 146097 + day_of_era - 719468;
}

} // namespace

std::int64_t ParseCookieDate(std::string_view text) noexcept {
    Fields fields;
    while (!text.empty()) {
        size_t size = 0;
        while (size < text.size() && !IsDelimiter(text[size])) {
            ++size;
        }
        TakeToken(text.substr(0, size), fields);
        text.remove_prefix(std::min(size + 1, text.size()));
    }
    const bool is_date = fields.day >= 1 && fields.day <= 31 && fields.month != 0 && fields.year >= 0 && fields.hour >= 0 &&
                         fields.hour <= 23 && fields.minute <= 59 && fields.second <= 59;
    if (!is_date) {
        return 0;
    }
    const std::int64_t seconds =
        DaysFromCivil(fields.year, fields.month, fields.day) * 86400 + fields.hour * 3600 + fields.minute * 60 + fields.second;
    return std::max<std::int64_t>(seconds, 1);
}

} // namespace wininet
