#include "workbench/core/file_types.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include <fmt/xchar.h>

#include "platform/text.h"

namespace {

struct FileType {
    std::wstring_view token;
    std::wstring_view title;
    std::wstring_view patterns;
};

/// PDF stands last: it is what is left of the supported types where the others are taken out of a filter.
constexpr FileType supported_types[] = {
    {L"<doc>", L"Word documents", L"*.doc;*.docx"},
    {L"<xls>", L"Excel workbooks", L"*.xls;*.xlsx"},
    {L"<ppt>", L"PowerPoint presentations", L"*.ppt;*.pptx"},
    {L"<vsd>", L"Visio drawings", L"*.vsd;*.vsdx"},
    {L"<pdf>", L"PDF documents", L"*.pdf"},
};

constexpr std::wstring_view units[] = {L"bytes", L"KB", L"MB", L"GB", L"TB"};

std::wstring FilterText(std::wstring_view title, std::wstring_view patterns) { return fmt::format(L"{}|{}|", title, patterns); }

std::wstring AllSupported(bool whole) {
    std::wstring patterns;
    std::wstring each;
    for (const FileType& type : supported_types) {
        patterns += (patterns.empty() ? L"" : L";") + std::wstring(type.patterns);
        each += FilterText(type.title, type.patterns);
    }
    return FilterText(L"All supported files", patterns) + (whole ? each : std::wstring());
}

std::wstring NumberText(double value, UINT digits) {
    wchar_t decimal[8] = L".";
    wchar_t thousand[8] = L",";
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, decimal, std::size(decimal));
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_STHOUSAND, thousand, std::size(thousand));
    const NUMBERFMTW format{digits, 1, 3, decimal, thousand, 1};
    const std::wstring plain = fmt::format(L"{:.{}f}", value, digits);
    wchar_t text[64];
    return GetNumberFormatW(LOCALE_USER_DEFAULT, 0, plain.c_str(), &format, text, std::size(text)) != 0 ? text : plain;
}

} // namespace

std::wstring FileFilterOf(std::wstring_view token, bool whole) {
    if (token == L"<all>") {
        return FilterText(L"All files", L"*.*");
    }
    if (token == L"<allSupp>") {
        return AllSupported(whole);
    }
    const auto* const found = std::find_if(std::begin(supported_types), std::end(supported_types),
                                           [&](const FileType& type) { return type.token == token; });
    return found != std::end(supported_types) ? FilterText(found->title, found->patterns) : std::wstring();
}

std::wstring FileSizeText(ULONGLONG size, LONG unit) {
    constexpr LONG last = std::size(units) - 1;
    if (unit < 0 || unit > last) {
        for (unit = 0; unit < last && size >> (10 * (unit + 1)) != 0; ++unit) {
        }
    }
    if (unit == 0) {
        return size == 1 ? L"1 byte" : fmt::format(L"{} {}", NumberText(static_cast<double>(size), 0), units[0]);
    }
    const double value = static_cast<double>(size) / std::ldexp(1.0, 10 * static_cast<int>(unit));
    return fmt::format(L"{} {}", NumberText(value, value < 100 ? 1 : 0), units[unit]);
}
