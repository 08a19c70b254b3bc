#include "sharepoint/dates.h"

#include <charconv>
#include <string_view>

#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"
#include "platform/times.h"

namespace SharePoint2013::Utility {

namespace {

constexpr bool IsBlank(wchar_t c) noexcept { return c == L' ' || (L'\t' <= c && c <= L'\r'); }
constexpr bool IsDigit(wchar_t c) noexcept { return L'0' <= c && c <= L'9'; }
constexpr wchar_t Lower(wchar_t c) noexcept { return L'A' <= c && c <= L'Z' ? c + (L'a' - L'A') : c; }

/// A date that is read from left to right.
class Scanner {
public:
    explicit Scanner(const wchar_t* text) noexcept : m_at(text) {}

    void SkipBlanks() noexcept {
        while (IsBlank(*m_at)) {
            ++m_at;
        }
    }

    bool Skip(wchar_t c) noexcept {
        if (*m_at != c) {
            return false;
        }
        ++m_at;
        return true;
    }

    /// As `scanf` reads "%Nu": blanks in front don't count, a sign does. A negative number is none of a date, and stays out
    /// of every range.
    bool ReadField(int width, WORD& value) noexcept {
        SkipBlanks();
        const bool is_negative = *m_at == L'-';
        if (is_negative || *m_at == L'+') {
            ++m_at;
            --width;
        }
        unsigned number = 0;
        if (!ReadDigits(width, number)) {
            return false;
        }
        value = static_cast<WORD>(is_negative ? 0u - number : number);
        return true;
    }

    bool ReadDigits(int width, unsigned& number) noexcept {
        const wchar_t* const begin = m_at;
        number = 0;
        for (; width > 0 && IsDigit(*m_at); --width, ++m_at) {
            number = number * 10 + static_cast<unsigned>(*m_at - L'0');
        }
        return m_at != begin;
    }

    /// A fraction of a second begins with a point; "+02:00" is none. 0 when there is none.
    float ReadFraction() noexcept {
        char digits[32] = ".";
        std::size_t length = 1;
        if (*m_at == L'.') {
            for (++m_at; IsDigit(*m_at) && length < sizeof(digits); ++m_at) {
                digits[length++] = static_cast<char>(*m_at);
            }
        }
        float fraction = 0;
        std::from_chars(digits, digits + length, fraction);
        return fraction;
    }

    /// Reads one of the names, in full or its first three letters, and gives its index; -1 when none stands here.
    template <std::size_t count>
    int ReadName(const std::wstring_view (&names)[count]) noexcept {
        for (std::size_t index = 0; index < count; ++index) {
            if (SkipText(names[index].substr(0, 3))) {
                SkipText(names[index].substr(3));
                return static_cast<int>(index);
            }
        }
        return -1;
    }

    /// `text` is in small letters; letter case here doesn't count.
    bool SkipText(std::wstring_view text) noexcept {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (Lower(m_at[i]) != text[i]) {
                return false;
            }
        }
        m_at += text.size();
        return true;
    }

private:
    const wchar_t* m_at;
};

constexpr std::wstring_view days[] = {L"sunday", L"monday", L"tuesday", L"wednesday", L"thursday", L"friday", L"saturday"};
constexpr std::wstring_view months[] = {L"january", L"february", L"march",     L"april",   L"may",      L"june",
                                        L"july",    L"august",   L"september", L"october", L"november", L"december"};

std::uint64_t Ticks(const FILETIME& time) noexcept {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

bool ScanIso8601(Scanner& scanner, SYSTEMTIME& time) noexcept {
    return scanner.ReadField(4, time.wYear) && scanner.Skip(L'-') && scanner.ReadField(2, time.wMonth) && scanner.Skip(L'-') &&
           scanner.ReadField(2, time.wDay) && scanner.Skip(L'T') && scanner.ReadField(2, time.wHour) && scanner.Skip(L':') &&
           scanner.ReadField(2, time.wMinute) && scanner.Skip(L':') && scanner.ReadField(2, time.wSecond);
}

bool ScanNumber(Scanner& scanner, int width, WORD& value) noexcept {
    unsigned number = 0;
    const bool is_read = scanner.ReadDigits(width, number);
    value = static_cast<WORD>(number);
    return is_read;
}

bool ScanRfc1123(Scanner& scanner, SYSTEMTIME& time) noexcept {
    scanner.SkipBlanks();
    if (scanner.ReadName(days) < 0 || !scanner.Skip(L',')) {
        return false;
    }
    scanner.SkipBlanks();
    if (!ScanNumber(scanner, 2, time.wDay)) {
        return false;
    }
    scanner.SkipBlanks();
    const int month = scanner.ReadName(months);
    if (month < 0) {
        return false;
    }
    time.wMonth = static_cast<WORD>(month + 1);
    scanner.SkipBlanks();
    if (!ScanNumber(scanner, 4, time.wYear)) {
        return false;
    }
    scanner.SkipBlanks();
    if (!(ScanNumber(scanner, 2, time.wHour) && scanner.Skip(L':') && ScanNumber(scanner, 2, time.wMinute) &&
          scanner.Skip(L':') && ScanNumber(scanner, 2, time.wSecond))) {
        return false;
    }
    scanner.SkipBlanks();
    return scanner.SkipText(L"gmt");
}

} // namespace

std::uint64_t ParseDateTimeIso8601(const wchar_t* text, DWORD log_level) {
    Scanner scanner(text);
    SYSTEMTIME fields = {};
    if (!ScanIso8601(scanner, fields)) {
        TRACE_FORMAT(log_level, L"Failed to parse date-time ISO8601 from '{}'", text);
        return 0;
    }
    FILETIME time = {};
    if (!SystemTimeToFileTime(&fields, &time)) {
        TRACE_FORMAT(log_level, L"SystemTimeToFileTime failed. GetLastError={}", GetLastError());
        return 0;
    }
    return Ticks(time) + static_cast<std::uint64_t>((scanner.ReadFraction() + 0.00000005f) * 10000000.0f);
}

std::uint64_t ParseDateTimeRfc1123(const wchar_t* text) {
    Scanner scanner(text);
    SYSTEMTIME fields = {};
    FILETIME time = {};
    return ScanRfc1123(scanner, fields) && SystemTimeToFileTime(&fields, &time) ? Ticks(time) : 0;
}

} // namespace SharePoint2013::Utility
