#pragma once

/// Identities of interfaces and objects.

#include <array>
#include <compare>

#include "platform/types.h"

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::array<std::uint8_t, 8> Data4;

    friend constexpr bool operator==(const GUID&, const GUID&) noexcept = default;
    friend constexpr auto operator<=>(const GUID&, const GUID&) noexcept = default;
};

using IID = GUID;
using REFIID = const IID&;
using REFGUID = const GUID&;
using CLSID = GUID;
using REFCLSID = const CLSID&;

namespace guid_detail {

constexpr std::uint64_t HexValue(const char* digits, int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) {
        const char c = digits[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                                 : throw "not a hexadecimal digit";
        value = value * 16 + static_cast<std::uint64_t>(digit);
    }
    return value;
}

} // namespace guid_detail

/// An identity from its registry spelling, "{3077CBDA-34BB-4DBE-BE4D-4DA035CB49BA}"; checked at compile time.
constexpr GUID MakeGuid(const char (&text)[39]) {
    using guid_detail::HexValue;
    if (text[0] != '{' || text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-' || text[37] != '}') {
        throw "not the spelling of an identity";
    }
    GUID guid{static_cast<std::uint32_t>(HexValue(text + 1, 8)), static_cast<std::uint16_t>(HexValue(text + 10, 4)),
              static_cast<std::uint16_t>(HexValue(text + 15, 4)), {}};
    guid.Data4[0] = static_cast<std::uint8_t>(HexValue(text + 20, 2));
    guid.Data4[1] = static_cast<std::uint8_t>(HexValue(text + 22, 2));
    for (int i = 0; i < 6; ++i) {
        guid.Data4[2 + i] = static_cast<std::uint8_t>(HexValue(text + 25 + 2 * i, 2));
    }
    return guid;
}

constexpr GUID GUID_NULL{};
