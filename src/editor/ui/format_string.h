#pragma once

/// Texts for the user, out of the host's string tables and values.

#include <concepts>
#include <string>
#include <string_view>

#include "host/instance.h"
#include "platform/bstr.h"

namespace Ui {

/// `text` for a place in a text for the user, where tags and line breaks mean something: names and the words of a server are
/// shown as they are. A line break becomes a blank, and a word joiner, which nobody sees, parts "<" from "b>" and "/b>".
std::wstring LiteralText(std::wstring_view text);

/// A value as it stands in a text: texts literally (null counts as empty), whole numbers with the separators of the user's
/// locale.
class FormatValue {
public:
    FormatValue(const wchar_t* text) : m_text(LiteralText(text == nullptr ? L"" : text)) {}
    FormatValue(const std::wstring& text) : m_text(LiteralText(text)) {}
    FormatValue(const Bstr& text) : m_text(LiteralText(text.View())) {}
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
