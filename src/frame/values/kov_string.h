#pragma once

#include <string>

#include "host/object_bases.h"
#include "host/string.h"

namespace Utility {

/// A text that a called operation can fill, such as the words about its failure. Made with MakeObject, and empty then.
/// Belongs to the one call that it was made for: no lock.
class KOVString : public cCoClassDispatchT<KOV::IString> {
public:
    HRESULT get_Value(BSTR* o_value) override;
    HRESULT put_Value(LPCWSTR value) override;
    HRESULT get_IsEmpty(VARIANT_BOOL* o_value) override;
    HRESULT Clear() override;
    HRESULT get_Length(UINT* o_value) override;
    HRESULT SetValue(LPCWSTR value, UINT length) override;

private:
    std::wstring m_value;
};

} // namespace Utility
