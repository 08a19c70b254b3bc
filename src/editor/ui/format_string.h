#pragma once

/// Texts for the user, out of the host's string tables and values.

#include <concepts>
#include <string>
#include <string_view>

#include "host/instance.h"
#include "platform/bstr.h"

namespace Ui {

/// A value as it stands in a text: texts as they are (null counts as empty), whole numbers with the separators of the user's
/// locale.
class FormatValue {
public:
    FormatValue(const wchar_t* text) : m_text(text == nullptr ? L"" : text) {}
    FormatValue(const std::wstring& text) : m_text(text) {}
    FormatValue(const Bstr& text) : m_text(text.View()) {}
    template <std::integral Number>
    requires(sizeof(Number) == 4) FormatValue(Number number) : m_text(NumberText(static_cast<std::int32_t>(number))) {}

    const std::wstring& Text() const noexcept { return m_text; }

private:
    static std::wstring NumberText(std::int32_t number);

    std::wstring m_text;
};

/// The text of `key` (with its namespace, without "$$$."), in which "%1" and "%2" stand for the values, "%s" for the first, and
/// "%%" for a percent sign. A placeholder whose value wasn't given shows nothing. A key without a text gives the key itself, a
/// null key nothing. Without values, without a placeholder, and where nothing would be left, the text comes as it stands in the
/// table.
std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key);
std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key, const FormatValue& value1);
std::wstring FormatString(KOV::IKOV_Inst* kov, LPCWSTR key, const FormatValue& value1, const FormatValue& value2);

} // namespace Ui
