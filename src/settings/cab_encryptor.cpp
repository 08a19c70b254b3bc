#include "settings/cab_encryptor.h"

#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/auxiliary.h"
#include "host/instance.h"

namespace CabEncryptor {

HRESULT SaveEncryptedString(Plugin* i_plugin, const CabNode& cab_node, const wchar_t* pzsFieldName, const wchar_t* value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_plugin != nullptr, E_POINTER);
    cab_node[pzsFieldName].SetString(L"");
    if (value == nullptr || *value == L'\0') {
        TRACE_RETURN(S_OK);
    }
    ComPtr<KOV::IString> pToken;
    CHECK_OR_RETURN(i_plugin->m_aux_inst->CreateString(nullptr, &pToken));
    CHECK_OR_RETURN(pToken->put_Value(value));
    ComPtr<KOV::IKOV_CryptKey> pCKey;
    CHECK_OR_RETURN(i_plugin->m_kov_inst->GetCryptKey(i_plugin, VARIANT_FALSE, &pCKey));
    ComPtr<KOV::IString> pTokenEnc;
    CHECK_OR_RETURN(i_plugin->m_aux_inst->EncryptString(pCKey, pToken, &pTokenEnc));
    if (!pTokenEnc.IsNull()) {
        Bstr bsValue;
        CHECK_OR_RETURN(pTokenEnc->get_Value(&bsValue));
        CHECK_OR_RETURN(!cab_node[pzsFieldName].IsNull(), E_INVALIDARG);
        const Variant text(bsValue.View());
        const VARIANT* const v = &text;
        CHECK_OR_RETURN(cab_node[pzsFieldName].p->put_v(v));
    }
    TRACE_RETURN(S_OK);
}

HRESULT LoadEncryptedString(Plugin* i_plugin, const CabNode& cab_node, const wchar_t* pzsFieldName, std::wstring& out_value) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_plugin != nullptr, E_POINTER);
    out_value.clear();
    ComPtr<KOV::IString> pToken;
    CHECK_OR_RETURN(i_plugin->m_aux_inst->CreateString(nullptr, &pToken));
    CHECK_OR_RETURN(!cab_node[pzsFieldName].IsNull(), E_INVALIDARG);
    Bstr val;
    CHECK_OR_RETURN(cab_node[pzsFieldName].p->get_String(&val));
    CHECK_OR_RETURN(pToken->SetValue(val.m_str, val.Length()));
    ComPtr<KOV::IKOV_CryptKey> pCKey;
    CHECK_OR_RETURN(i_plugin->m_kov_inst->GetCryptKey(i_plugin, VARIANT_FALSE, &pCKey));
    ComPtr<KOV::IString> pTokenDec;
    const HRESULT result = i_plugin->m_aux_inst->DecryptString(pCKey, pToken, &pTokenDec);
    if (result == E_INVALIDARG) {
        // Not made by the cipher: an older store held plain texts.
        pTokenDec = pToken;
    } else {
        CHECK_OR_RETURN(result);
    }
    if (!pTokenDec.IsNull()) {
        CHECK_OR_RETURN(pTokenDec->get_Value(&val));
        out_value = val.Text();
    }
    TRACE_RETURN(S_OK);
}

} // namespace CabEncryptor
