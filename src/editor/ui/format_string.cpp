#include "editor/ui/format_string.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>

#include "platform/text.h"

namespace {

constexpr std::size_t max_placeholder_digits = 31;

/// Texts of one host use "%s" for their only value.
void NumberPlainPlaceholders(std::wstring& text) {
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == L'%') {
            ++i;
            if (text[i] == L's') {
                text[i] = L'1';
            }
        }
    }
}

bool IsDigit(wchar_t character) { return L'0' <= character && character <= L'9'; }

/// Walks over a text once and puts it together with the values in it.
class Renderer {
public:
    Renderer(std::wstring_view text, std::initializer_list<const Ui::FormatValue*> values) : m_rest(text), m_values(values) {
        while (!m_rest.empty()) {
            AddLiteral();
            AddSigns();
        }
    }

    bool HasPlaceholder() const { return m_has_placeholder; }
    const std::wstring& Result() const { return m_result; }

private:
    void AddLiteral() {
        const std::size_t length = std::min(m_rest.find(L'%'), m_rest.size());
        m_result += m_rest.substr(0, length);
        m_rest.remove_prefix(length);
    }

    /// Two signs stand for one; an odd one begins a placeholder.
    void AddSigns() {
        const std::size_t count = std::min(m_rest.find_first_not_of(L'%'), m_rest.size());
        m_rest.remove_prefix(count);
        m_result.append(count / 2, L'%');
        if (count % 2 == 1) {
            AddPlaceholder();
        }
    }

    void AddPlaceholder() {
        std::size_t number = 0;
        std::size_t digits = 0;
        for (; digits < std::min(m_rest.size(), max_placeholder_digits) && IsDigit(m_rest[digits]); ++digits) {
            // Past the last value it no longer matters which number it is, only that it doesn't wrap round.
            number = std::min<std::size_t>(number * 10 + static_cast<std::size_t>(m_rest[digits] - L'0'), 1000);
        }
        m_rest.remove_prefix(digits);
        m_has_placeholder = m_has_placeholder || digits > 0;
        if (1 <= number && number <= m_values.size()) {
            m_result += m_values.begin()[number - 1]->Text();
        }
    }

    std::wstring_view m_rest;
    std::initializer_list<const Ui::FormatValue*> m_values;
    std::wstring m_result;
    bool m_has_placeholder = false;
};

std::wstring Format(KOV::IKOV_Inst* kov, LPCWSTR key, std::initializer_list<const Ui::FormatValue*> values) {
    if (key == nullptr || *key == 0) {
        return {};
    }
    Bstr local_text;
    if (FAILED(kov->GetLocalStr(key, &local_text))) {
        return key;
    }
    std::wstring text = local_text.Text();
    NumberPlainPlaceholders(text);
    if (values.size() == 0) {
        return text;
    }
    const Renderer renderer(text, values);
    return renderer.HasPlaceholder() && !renderer.Result().empty() ? renderer.Result() : text;
}

std::wstring LocaleText(LCTYPE type) {
    std::array<wchar_t, 16> buffer{};
    return GetLocaleInfoW(LOCALE_USER_DEFAULT, type, buffer.data(), buffer.size()) > 0 ? std::wstring(buffer.data())
                                                                                       : std::wstring();
}

/// "3;0" is 3 and "3;2;0" 32: a final 0 says that the last group repeats. Without it the last group stands once, which is 30.
UINT GroupingDigits(std::wstring_view grouping) {
    UINT digits = 0;
    for (const wchar_t character : grouping) {
        if (IsDigit(character)) {
            digits = digits * 10 + static_cast<UINT>(character - L'0');
        }
    }
    return digits % 10 == 0 ? digits / 10 : digits * 10;
}

} // namespace

namespace Ui {

std::wstring LiteralText(std::wstring_view text) {
    constexpr std::wstring_view tag_rests[] = {L"b>", L"/b>"};
    constexpr wchar_t word_joiner = L'\u2060';
    std::wstring result;
    result.reserve(text.size());
    while (!text.empty()) {
        const wchar_t character = text.front();
        const std::size_t length = text.starts_with(L"\r\n") ? 2 : 1;
        text.remove_prefix(length);
        result += character == L'\r' || character == L'\n' ? L' ' : character;
        if (character == L'<' && std::any_of(std::begin(tag_rests), std::end(tag_rests),
                                             [&](std::wstring_view rest) { return text.starts_with(rest); })) {
            result += word_joiner;
        }
    }
    return result;
}

std::wstring FormatValue::NumberText(std::int32_t number) {
    const std::wstring plain = std::to_wstring(number);
    std::wstring decimal = LocaleText(LOCALE_SDECIMAL);
    std::wstring thousand = LocaleText(LOCALE_STHOUSAND);
    const NUMBERFMTW format{.NumDigits = 0,
                            .LeadingZero = 1,
                            .Grouping = GroupingDigits(LocaleText(LOCALE_SGROUPING)),
                            .lpDecimalSep = decimal.data(),
                            .lpThousandSep = thousand.data(),
                            .NegativeOrder = 1};
    std::array<wchar_t, 64> buffer{};
    const int length = GetNumberFormatW(LOCALE_USER_DEFAULT, 0, plain.c_str(), &format, buffer.data(), buffer.size());
    return length > 0 ? std::wstring(buffer.data()) : plain;
}

std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key) { return Format(kov, key, {}); }

std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key, const FormatValue& value1) { return Format(kov, key, {&value1}); }

std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key, const FormatValue& value1, const FormatValue& value2) {
    return Format(kov, key, {&value1, &value2});
}

} // namespace Ui
