#pragma once

#include "platform/com.h"

namespace KOV {

/// A truth value that one thread sets and another reads, such as "the user wants this to end". Any thread.
struct IKOV_Flag : IDispatch {
    virtual HRESULT get_Value(VARIANT_BOOL* out_value) = 0;
    virtual HRESULT put_Value(VARIANT_BOOL value) = 0;

protected:
    ~IKOV_Flag() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IKOV_Flag, "{04BAF7D1-AB4C-4268-8404-3CFB7A5746F7}");
