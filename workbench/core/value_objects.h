#pragma once

/// Small objects that a host passes into the module's operations.

#include <atomic>
#include <string>

#include "host/flag.h"
#include "host/object_bases.h"
#include "host/string.h"

/// A text, such as `out_error_details`. One call at a time.
class StringObject final : public cCoClassDispatchT<KOV::IString> {
public:
    StringObject() = default;
    explicit StringObject(std::wstring text) : m_text(std::move(text)) {}

    HRESULT get_Value(BSTR* o_value) override;
    HRESULT put_Value(LPCWSTR value) override;
    HRESULT get_IsEmpty(VARIANT_BOOL* o_value) override;
    HRESULT Clear() override;
    HRESULT get_Length(UINT* o_value) override;
    HRESULT SetValue(LPCWSTR value, UINT length) override;

private:
    std::wstring m_text;
};

/// A cancel flag. Any thread; `Set` is safe in a signal handler.
class FlagObject final : public cCoClassDispatchT<KOV::IKOV_Flag> {
public:
    explicit FlagObject(bool value = false) : m_value(value) {}

    HRESULT get_Value(VARIANT_BOOL* out_value) override;
    HRESULT put_Value(VARIANT_BOOL value) override;

    void Set(bool value) noexcept { m_value.store(value); }
    bool IsSet() const noexcept { return m_value.load(); }

private:
    std::atomic<bool> m_value;
};

/// The text of a text object; empty for null.
std::wstring TextOf(KOV::IString* text);
/// Is the flag set? A null flag isn't.
bool IsSet(KOV::IKOV_Flag* flag);
