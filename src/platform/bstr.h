#pragma once

/// Texts that cross interfaces: zero-terminated wide texts with their length in front, allocated and freed by these
/// functions alone, so that one side may free what the other allocated. The functions never throw.

#include <string>
#include <string_view>
#include <utility>

#include "platform/com.h"

/// A copy of a zero-terminated text; null for null, or when there is no memory.
extern "C" KOV_PLATFORM_API BSTR SysAllocString(const wchar_t* text);
/// A copy of `length` characters, which may hold NUL; with a null `text` they are NUL. Null when there is no memory.
extern "C" KOV_PLATFORM_API BSTR SysAllocStringLen(const wchar_t* text, UINT length);
/// Null is allowed.
extern "C" KOV_PLATFORM_API void SysFreeString(BSTR text);
/// The length in characters; 0 for null.
extern "C" KOV_PLATFORM_API UINT SysStringLen(BSTR text);

/// Owns a `BSTR`. Null counts as the empty text.
class Bstr {
public:
    Bstr() noexcept = default;
    explicit Bstr(const wchar_t* text) : m_str(SysAllocString(text)) {}
    explicit Bstr(std::wstring_view text) : m_str(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    Bstr(const Bstr& other) : m_str(other.m_str == nullptr ? nullptr : SysAllocStringLen(other.m_str, other.Length())) {}
    Bstr(Bstr&& other) noexcept : m_str(std::exchange(other.m_str, nullptr)) {}
    ~Bstr() { SysFreeString(m_str); }
    Bstr& operator=(Bstr other) noexcept {
        std::swap(m_str, other.m_str);
        return *this;
    }

    UINT Length() const noexcept { return SysStringLen(m_str); }
    std::wstring_view View() const noexcept { return {m_str == nullptr ? L"" : m_str, Length()}; }
    std::wstring Text() const { return std::wstring(View()); }
    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }
    operator BSTR() const noexcept { return m_str; }
    /// Frees what is held and gives the address, for out-parameters.
    BSTR* operator&() noexcept {
        SysFreeString(std::exchange(m_str, nullptr));
        return &m_str;
    }

    BSTR m_str = nullptr;
};
