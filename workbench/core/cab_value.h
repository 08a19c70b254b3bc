#pragma once

/// One value of a cab, with its type.

#include <cstdint>
#include <string>

#include "host/cab.h"

struct CabValue {
    KOV::CabItemType type = KOV::CabItemType_Unset;
    /// Bool (0 or 1), Int and Int64.
    std::int64_t integer = 0;
    double real = 0;
    std::wstring text;
    ComPtr<IUnknown> object;

    static CabValue Bool(bool value) { return {KOV::CabItemType_Bool, value ? 1 : 0}; }
    static CabValue Int(std::int32_t value) { return {KOV::CabItemType_Int, value}; }
    static CabValue Int64(std::int64_t value) { return {KOV::CabItemType_Int64, value}; }
    static CabValue Double(double value) { return {KOV::CabItemType_Double, 0, value}; }
    static CabValue String(std::wstring value) { return {KOV::CabItemType_String, 0, 0, std::move(value)}; }
    static CabValue Object(IUnknown* value) { return {KOV::CabItemType_IUnknown, 0, 0, {}, value}; }
    static CabValue Container(KOV::CabItemType type) { return {type}; }

    bool IsContainer() const noexcept { return type == KOV::CabItemType_Dictionary || type == KOV::CabItemType_Array; }
};
