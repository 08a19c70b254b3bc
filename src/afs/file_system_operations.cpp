// What the provider does with files and folders: tests of the arguments, then one step of the server object.

#include <mutex>

#include "afs/enum_folder.h"
#include "afs/file.h"
#include "afs/file_info.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"

/// The head of an operation on one name; `local_name` is its `Name`. A macro, since the log names the operation.
#define TEST_NAME(name, cancel_flag)                                                                                             \
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);                                                                       \
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);                                                                              \
    const ComPtr<Name> local_name = GetName(name);                                                                               \
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG)

#define TEST_NEW_NAME(new_name)                                                                                                  \
    CHECK_OR_RETURN(new_name != nullptr, E_INVALIDARG);                                                                          \
    const ComPtr<Name> local_new_name = GetName(new_name);                                                                       \
    CHECK_OR_RETURN(local_new_name != nullptr, E_INVALIDARG)

HRESULT FileSystem::EnumFolder(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                               KOV::IAFS_EnumFolder** out_enum) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_enum != nullptr, E_POINTER);
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    ComPtr<::EnumFolder> folder = MakeObject<::EnumFolder>(local_name);
    CHECK_OR_RETURN(folder != nullptr, E_OUTOFMEMORY);
    *out_enum = folder.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::GetFileInfo(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                                KOV::IAFS_FileInfo** out_file_info) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_file_info != nullptr, E_POINTER);
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(local_name->BindObject() != nullptr, E_INVALIDARG);
    ComPtr<FileInfo> file_info = MakeObject<FileInfo>(local_name);
    CHECK_OR_RETURN(file_info != nullptr, E_OUTOFMEMORY);
    *out_file_info = file_info.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::OpenFile(KOV::IAFS_Name* name, DWORD open_flags, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag,
                             KOV::IAFS_File** out_file) {
    TRACE_ENTER(L"open_flags={:#x}", open_flags);
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(name != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(out_file != nullptr, E_POINTER);
    const ComPtr<Name> local_name = GetName(name);
    CHECK_OR_RETURN(local_name != nullptr, E_INVALIDARG);
    ComPtr<File> file;
    File::CreateAndOpenFile(file, local_name, open_flags, out_error_details, cancel_flag);
    CHECK_OR_RETURN(file != nullptr, E_OUTOFMEMORY);
    *out_file = file.Detach();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::CreateFolder(KOV::IAFS_Name* name, DWORD, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    TEST_NAME(name, cancel_flag);
    const auto object = local_name->GetSession()->GetWeb()->AsWeb()->CreateFolder(local_name->GetUrl());
    CHECK_OR_RETURN(object != nullptr, E_FAIL);
    local_name->SetObject(object);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

// The object's record doesn't follow a move: the old name stays as it was, and what stands at the new location is reached by
// binding the new one.
HRESULT FileSystem::Move(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                         KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    TEST_NAME(name, cancel_flag);
    TEST_NEW_NAME(new_name);
    const auto file = local_name->BindObject(SharePoint::Web::BindObjectType::file);
    CHECK_OR_RETURN(file != nullptr, E_INVALIDARG);
    file->AsFile()->Move(local_new_name->GetUrl());
    local_name->SetObject(file);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::Copy(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                         KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    TEST_NAME(name, cancel_flag);
    TEST_NEW_NAME(new_name);
    const auto file = local_name->BindObject(SharePoint::Web::BindObjectType::file);
    CHECK_OR_RETURN(file != nullptr, E_INVALIDARG);
    file->AsFile()->Copy(local_new_name->GetUrl());
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::Rename(KOV::IAFS_Name* name, KOV::IAFS_Name* new_name, KOV::IString* out_error_details,
                           KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    TEST_NAME(name, cancel_flag);
    TEST_NEW_NAME(new_name);
    const auto object = local_name->BindObject();
    CHECK_OR_RETURN(object != nullptr, E_INVALIDARG);
    object->Rename(local_new_name->GetUrl());
    local_name->SetObject(object);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT FileSystem::Delete(KOV::IAFS_Name* name, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    TEST_NAME(name, cancel_flag);
    const auto object = local_name->BindObject();
    CHECK_OR_RETURN(object != nullptr, E_INVALIDARG);
    object->Delete();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

#undef TEST_NAME
#undef TEST_NEW_NAME

HRESULT FileSystem::GetVolumeSpace(KOV::IAFS_Name*, ULONGLONG*, ULONGLONG*, ULONGLONG*, KOV::IString*,
                                   KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    TRACE_RETURN(E_NOTIMPL);
}

HRESULT FileSystem::SetProgressMon(KOV::IKOV_ProgressMon* progress_monitor) {
    TRACE_ENTER();
    INTERFACE_TRY
    // The monitor that was there is released only after the lock: what runs then is the host's.
    ComPtr<KOV::IKOV_ProgressMon> monitor = progress_monitor;
    const std::scoped_lock guard(m_lock);
    const DWORD thread_id = GetCurrentThreadId();
    const auto found = m_progress_monitors.find(thread_id);
    if (found == m_progress_monitors.end()) {
        if (monitor.IsNull()) {
            TRACE_RETURN(S_FALSE);
        }
        m_progress_monitors.emplace(thread_id, std::move(monitor));
        TRACE_RETURN(S_OK);
    }
    std::swap(found->second, monitor);
    if (progress_monitor == nullptr) {
        m_progress_monitors.erase(found);
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(nullptr)
}

HRESULT FileSystem::GetProgressMon(DWORD thread_id, KOV::IKOV_ProgressMon** out_progress_monitor) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_progress_monitor != nullptr, E_POINTER);
    const std::scoped_lock guard(m_lock);
    const auto found = m_progress_monitors.find(thread_id == 0 ? GetCurrentThreadId() : thread_id);
    if (found == m_progress_monitors.end()) {
        *out_progress_monitor = nullptr;
        TRACE_RETURN(S_FALSE);
    }
    found->second.CopyTo(out_progress_monitor);
    TRACE_RETURN(S_OK);
}
