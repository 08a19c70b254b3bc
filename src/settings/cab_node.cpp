#include "settings/cab_node.h"

CabNode CabNode::operator[](const wchar_t* id) const {
    if (IsNull() || id == nullptr || *id == L'\0') {
        return *this;
    }
    VARIANT key = {};
    key.vt = VT_LPWSTR;
    key.pwszVal = const_cast<wchar_t*>(id);
    CabNode child;
    if (FAILED(p->GetItem(&key, &child.p))) {
        return {};
    }
    return child;
}

DWORD CabNode::GetType() const {
    DWORD type = KOV::CabItemType_Unset;
    if (IsNull() || FAILED(p->get_Type(&type))) {
        return KOV::CabItemType_Unset;
    }
    return type;
}

bool CabNode::GetBool() const {
    VARIANT_BOOL value = VARIANT_FALSE;
    return GetType() == KOV::CabItemType_Bool && SUCCEEDED(p->get_Bool(&value)) && value != VARIANT_FALSE;
}

std::int32_t CabNode::GetInt() const {
    switch (GetType()) {
    case KOV::CabItemType_Bool:
        return GetBool() ? 1 : 0;
    case KOV::CabItemType_Int: {
        LONG value = 0;
        return SUCCEEDED(p->get_Int(&value)) ? value : 0;
    }
    default:
        return 0;
    }
}

Bstr CabNode::GetString() const {
    Bstr value;
    if (GetType() != KOV::CabItemType_String || FAILED(p->get_String(&value))) {
        return {};
    }
    return value;
}

ComPtr<IUnknown> CabNode::GetUnknown() const {
    ComPtr<IUnknown> object;
    if (GetType() != KOV::CabItemType_IUnknown || FAILED(p->get_Unknown(&object))) {
        return {};
    }
    return object;
}

// Whether a write reached the store isn't told to anybody: what can't be kept is asked for again in the next run.
void CabNode::SetInt(std::int32_t value) const {
    if (IsNull()) {
        return;
    }
    switch (GetType()) {
    case KOV::CabItemType_Unset:
    case KOV::CabItemType_Int:
        p->put_Int(value);
        break;
    case KOV::CabItemType_Bool:
        p->put_Bool(value != 0 ? VARIANT_TRUE : VARIANT_FALSE);
        break;
    case KOV::CabItemType_Int64:
        p->put_Int64(value);
        break;
    case KOV::CabItemType_Double:
        p->put_Double(value);
        break;
    default:
        break;
    }
}

void CabNode::SetString(const wchar_t* value) const {
    const DWORD type = GetType();
    if (!IsNull() && (type == KOV::CabItemType_Unset || type == KOV::CabItemType_String)) {
        p->put_String(value == nullptr ? L"" : value);
    }
}

void CabNode::SetBool(bool value) const {
    const DWORD type = GetType();
    if (!IsNull() && (type == KOV::CabItemType_Unset || type == KOV::CabItemType_Bool)) {
        p->put_Bool(value ? VARIANT_TRUE : VARIANT_FALSE);
    }
}

ULONG CabNode::GetCount() const {
    ULONG count = 0;
    return !IsNull() && SUCCEEDED(p->get_Count(&count)) ? count : 0;
}

CabNode CabNode::GetAt(ULONG index) const {
    CabNode child;
    const Variant key(static_cast<std::int32_t>(index));
    if (IsNull() || FAILED(p->GetItem(&key, &child.p))) {
        return {};
    }
    return child;
}

CabNode CabNode::AddNew() const {
    CabNode child;
    if (IsNull() || FAILED(p->AddNew(&child.p))) {
        return {};
    }
    return child;
}
