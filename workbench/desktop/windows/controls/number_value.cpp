#include "workbench/desktop/windows/controls/number_value.h"

#include <algorithm>
#include <cmath>

#include <QLocale>

#include "workbench/desktop/objects/text.h"

HRESULT NumberValue::put_AllowedChars(LPCWSTR characters) {
    m_allowed = characters == nullptr ? L"" : characters;
    return S_OK;
}

HRESULT NumberValue::SetRange(LONG decimals, LONG, LPCWSTR unit, double least, double most, double step, double large_step) {
    if (decimals < 0 || decimals > 9 || !std::isfinite(least) || !std::isfinite(most) || least > most || !(step >= 0) ||
        !(large_step >= 0)) {
        return E_INVALIDARG;
    }
    m_decimals = decimals;
    m_unit = unit == nullptr ? L"" : unit;
    m_least = least;
    m_most = most;
    m_step = step;
    m_large_step = large_step;
    return put_Value(m_value);
}

HRESULT NumberValue::put_Value(double value) {
    if (!std::isfinite(value)) {
        return E_INVALIDARG;
    }
    m_value = std::clamp(value, m_least, m_most);
    if (on_change) {
        on_change();
    }
    return S_OK;
}

HRESULT NumberValue::get_Value(double* out_value) {
    if (out_value == nullptr) {
        return E_POINTER;
    }
    *out_value = m_value;
    return S_OK;
}

std::wstring NumberValue::Text() const { return ToWide(QString::number(m_value, 'f', static_cast<int>(m_decimals))) + m_unit; }

NumberValue::Verdict NumberValue::Judge(const std::wstring& text, double& out_value) const {
    std::wstring digits = text;
    if (!m_unit.empty() && digits.ends_with(m_unit)) {
        digits.resize(digits.size() - m_unit.size());
    }
    const auto is_allowed = [&](wchar_t letter) { return m_allowed.empty() || m_allowed.find(letter) != std::wstring::npos; };
    if (!std::all_of(digits.begin(), digits.end(), is_allowed)) {
        return Verdict::refused;
    }
    if (digits.empty() || digits == L"-") {
        return Verdict::unfinished;
    }
    bool is_number = false;
    const double value = QLocale::c().toDouble(ToQString(digits), &is_number);
    const std::size_t point = digits.find(L'.');
    const bool is_too_fine = point != std::wstring::npos && digits.size() - point - 1 > static_cast<std::size_t>(m_decimals);
    if (!is_number || is_too_fine || value > m_most) {
        return Verdict::refused;
    }
    if (value < m_least) {
        return Verdict::unfinished;
    }
    out_value = value;
    return Verdict::good;
}
