#pragma once

#include <functional>
#include <string>

#include "host/controls.h"
#include "host/object_bases.h"

/// A number with the range and the characters that may be typed for it. Main thread.
class NumberValue final : public cCoClassUnknownT<KOV::IUIX_NumberValue> {
public:
    HRESULT put_AllowedChars(LPCWSTR characters) override;
    /// `decimals` 0 to 9. `E_INVALIDARG` when `least` is above `most`. A value outside is moved to the nearer end.
    HRESULT SetRange(LONG decimals, LONG reserved, LPCWSTR unit, double least, double most, double step,
                     double large_step) override;
    HRESULT put_Value(double value) override;
    HRESULT get_Value(double* out_value) override;

    /// As it is shown.
    std::wstring Text() const;
    enum class Verdict { good, unfinished, refused };
    /// What to think of a typed text; `out_value` is set for a good one.
    Verdict Judge(const std::wstring& text, double& out_value) const;
    double Step() const noexcept { return m_step; }
    double LargeStep() const noexcept { return m_large_step; }
    double Most() const noexcept { return m_most; }

    /// Called after each change of the value or the range; empty ends it.
    std::function<void()> on_change;

private:
    ~NumberValue() override = default;

    std::wstring m_allowed;
    LONG m_decimals = 0;
    std::wstring m_unit;
    double m_least = 0;
    double m_most = 1e15;
    double m_step = 1;
    double m_large_step = 10;
    double m_value = 0;
};
