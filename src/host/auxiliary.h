#pragma once

#include "host/cab.h"
#include "host/string.h"

namespace KOV {

struct IKOV_CryptKey;

/// The auxiliary services extension, "AUX". Any thread.
struct IAUX_Inst : IUnknown {
    /// A new text object; `value` may be null.
    virtual HRESULT CreateString(LPCWSTR value, IString** out_string) = 0;
    /// A new, empty cab that lives as long as its references.
    virtual HRESULT CreateCab(IAUX_Cab** out_cab) = 0;
    /// Enciphers a text into a new text object.
    virtual HRESULT EncryptString(IKOV_CryptKey* key, IString* plain, IString** out_enciphered) = 0;
    /// The reverse. `E_INVALIDARG` for a text that `EncryptString` didn't make; another failure for one that it made and that
    /// can't be read with this key.
    virtual HRESULT DecryptString(IKOV_CryptKey* key, IString* enciphered, IString** out_plain) = 0;
    /// Whether a result means that the user gave up.
    virtual HRESULT IsCancelResult(HRESULT result, VARIANT_BOOL* out_is_cancel) = 0;

protected:
    ~IAUX_Inst() = default;
};

} // namespace KOV
KOV_INTERFACE_ID(KOV::IAUX_Inst, "{336761B3-9F14-479E-85F4-AD9CFD1E2A5F}");
