#include "afs/file_info.h"

#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"

FileInfo::FileInfo(ComPtr<Name> name) : m_name(std::move(name)) {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->BindObject() != nullptr, HResultException(HRESULT_FROM_WIN32(ERROR_NOT_FOUND)));
    TRACE_LEAVE();
}

HRESULT FileInfo::get_Title(BSTR* out_title) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_title != nullptr, E_POINTER);
    *out_title = SysAllocString(GetInformation().m_name.c_str());
    CHECK_OR_RETURN(*out_title != nullptr, E_OUTOFMEMORY);
    TRACE_RETURN(S_OK);
}

HRESULT FileInfo::get_Attributes(DWORD* out_attributes) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_attributes != nullptr, E_POINTER);
    *out_attributes = m_name->m_attributes;
    TRACE_RETURN(S_OK);
}

HRESULT FileInfo::get_Size(ULONGLONG* out_size) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_size != nullptr, E_POINTER);
    CHECK_OR_RETURN((m_name->m_attributes & KOV::AFS_FileAttributes::AFS_FileAttribute_Folder) == 0, E_INVALIDARG);
    *out_size = GetInformation().m_size;
    TRACE_RETURN(S_OK);
}

HRESULT FileInfo::get_CreationTime(ULONGLONG* out_time) {
    TRACE_ENTER();
    *out_time = GetInformation().m_created_time;
    TRACE_RETURN(S_OK);
}

HRESULT FileInfo::get_LastAccessTime(ULONGLONG* out_time) {
    TRACE_ENTER();
    KOV::IAFS_FileInfo* const self = this;
    return self->get_LastWriteTime(out_time);
}

HRESULT FileInfo::get_LastWriteTime(ULONGLONG* out_time) {
    TRACE_ENTER();
    *out_time = GetInformation().m_modified_time;
    TRACE_RETURN(S_OK);
}

HRESULT FileInfo::get_Prop(LPCWSTR, VARIANT*) {
    TRACE_ENTER();
    TRACE_RETURN(E_NOTIMPL);
}
