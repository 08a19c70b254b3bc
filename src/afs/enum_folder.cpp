#include "afs/enum_folder.h"

#include "frame/diagnostics/diagnostics.h"

EnumFolder::EnumFolder(ComPtr<Name> name) : m_name(std::move(name)) {
    TRACE_ENTER();
    constexpr wchar_t message[] = L"Cannot enumerate non-existing folder";
    // Nothing there and a file there are one failure to the caller; all others tell what they are.
    try {
        CHECK_OR_THROW(m_name->BindObject(SharePoint::Web::BindObjectType::folder) != nullptr, Exception(message));
    } catch (const HResultException& exception) {
        if (exception.hr != E_INVALIDARG) {
            throw;
        }
        THROW_LOGGED(Exception(message));
    }
    m_objects = m_name->GetObject()->AsFolder()->GetChildren();
    m_current = m_objects.begin();
    TRACE_LEAVE();
}

HRESULT EnumFolder::get_Name(KOV::IAFS_Name** out_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
    *out_name = ComPtr(m_name).Detach();
    TRACE_RETURN(S_OK);
}

HRESULT EnumFolder::Next(KOV::IAFS_EnumFolderItem** out_enum_item) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(out_enum_item != nullptr, E_POINTER);
    *out_enum_item = nullptr;
    if (m_current == m_objects.end()) {
        TRACE_RETURN(S_FALSE);
    }
    ComPtr<EnumFolderItem> item = MakeObject<EnumFolderItem>(Name::Create(*m_current, m_name));
    CHECK_OR_RETURN(item != nullptr, E_OUTOFMEMORY);
    *out_enum_item = item.Detach();
    ++m_current;
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT EnumFolder::Reset(DWORD, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    m_current = m_objects.begin();
    TRACE_RETURN(S_OK);
}

HRESULT EnumFolderItem::get_Name(KOV::IAFS_Name** out_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
    *out_name = ComPtr(m_name).Detach();
    TRACE_RETURN(S_OK);
}

void* EnumFolderItem::Find(REFIID id) noexcept {
    if (id == __uuidof(KOV::IAFS_EnumFolderItem)) {
        return static_cast<KOV::IAFS_EnumFolderItem*>(this);
    }
    return FileInfo::Find(id);
}
