#include "platform/errors.h"
#include "workbench/core/cab.h"
#include "workbench/core/errors.h"
#include "workbench/core/extensions.h"
#include "workbench/core/value_objects.h"

namespace {

/// How the extension knows its own key objects behind the interface, which shows nothing of a key.
struct ICipherKey : IUnknown {
    virtual const Cipher& KeyCipher() const = 0;

protected:
    ~ICipherKey() = default;
};

} // namespace
KOV_INTERFACE_ID(ICipherKey, "{5B1D0D0E-4E0F-4B70-9A3C-0E3C8B6E0F11}");

namespace {

class CryptKey final : public cCoClassUnknownT<KOV::IKOV_CryptKey, ICipherKey> {
public:
    explicit CryptKey(std::shared_ptr<Cipher> cipher) : m_cipher(std::move(cipher)) {}
    const Cipher& KeyCipher() const override { return *m_cipher; }

private:
    const std::shared_ptr<Cipher> m_cipher;
};

class AuxExtension final : public cCoClassUnknownT<KOV::IAUX_Inst> {
public:
    HRESULT CreateString(LPCWSTR value, KOV::IString** out_string) override {
        return Give(out_string, [&] { return std::wstring(value != nullptr ? value : L""); });
    }
    HRESULT CreateCab(KOV::IAUX_Cab** out_cab) override {
        if (out_cab == nullptr) {
            return E_POINTER;
        }
        return AtBorder(nullptr, [&] {
            *out_cab = MakeTransientCab().Detach();
            return *out_cab != nullptr ? S_OK : E_OUTOFMEMORY;
        });
    }
    HRESULT EncryptString(KOV::IKOV_CryptKey* key, KOV::IString* plain, KOV::IString** out_enciphered) override {
        if (plain == nullptr) {
            return E_POINTER;
        }
        return Give(out_enciphered, [&] { return CipherOf(key)->KeyCipher().Encrypt(TextOf(plain)); });
    }
    HRESULT DecryptString(KOV::IKOV_CryptKey* key, KOV::IString* enciphered, KOV::IString** out_plain) override {
        if (enciphered == nullptr) {
            return E_POINTER;
        }
        return Give(out_plain, [&] { return CipherOf(key)->KeyCipher().Decrypt(TextOf(enciphered)); });
    }

    HRESULT IsCancelResult(HRESULT result, VARIANT_BOOL* out_is_cancel) override {
        if (out_is_cancel == nullptr) {
            return E_POINTER;
        }
        // The host's own code for it, and the system's.
        constexpr HRESULT canceled = MakeHResult(0x821704C7);
        *out_is_cancel = result == canceled || result == HRESULT_FROM_WIN32(ERROR_CANCELLED) ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }

private:
    static ComPtr<ICipherKey> CipherOf(KOV::IKOV_CryptKey* key) {
        ComPtr<ICipherKey> cipher;
        if (key == nullptr || FAILED(key->QueryInterface(&cipher))) {
            // Not E_INVALIDARG: that would say of the text that it never was enciphered.
            throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE), "The key isn't one of this host");
        }
        return cipher;
    }

    template <class Body>
    HRESULT Give(KOV::IString** out_string, Body&& body) {
        if (out_string == nullptr) {
            return E_POINTER;
        }
        *out_string = nullptr;
        return AtBorder(nullptr, [&] {
            *out_string = MakeObject<StringObject>(body()).Detach();
            return *out_string != nullptr ? S_OK : E_OUTOFMEMORY;
        });
    }
};

} // namespace

ComPtr<KOV::IAUX_Inst> MakeAuxExtension() { return MakeObject<AuxExtension>(); }

ComPtr<KOV::IKOV_CryptKey> MakeCryptKey(std::shared_ptr<Cipher> cipher) { return MakeObject<CryptKey>(std::move(cipher)); }
