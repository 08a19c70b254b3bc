#include "afs/file.h"

#include <mutex>

#include "afs/file_detail.h"
#include "afs/file_stream.h"

File::File() = default;

File::~File() {
    TRACE_ENTER();
    const std::scoped_lock lock(m_lock);
    if (!m_cache.IsNull()) {
        if (const ComPtr<KOV::IAFS_FileCachesMap> caches = m_name->GetSession()->GetFilesCache(); !caches.IsNull()) {
            caches->ReleaseCacheEntry(this, 0);
        }
    }
}

HRESULT File::get_Name(KOV::IAFS_Name** out_name) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_name != nullptr, E_POINTER);
    ComPtr<KOV::IAFS_Name>(m_name).CopyTo(out_name);
    TRACE_RETURN(S_OK);
}

HRESULT File::get_OpenFlags(DWORD* out_open_flags) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_open_flags != nullptr, E_POINTER);
    *out_open_flags = m_flags;
    TRACE_RETURN(S_OK);
}

HRESULT File::get_IoMode(DWORD* out_io_mode) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_io_mode != nullptr, E_POINTER);
    *out_io_mode = 0;
    TRACE_RETURN(S_OK);
}

HRESULT File::Clone(KOV::IAFS_File** out_clone) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(Bits::Has(m_flags, KOV::AFS_OpenFile_Read), FileResult::invalid_state);
    CHECK_OR_RETURN(out_clone != nullptr, E_POINTER);
    const ComPtr<File> clone = MakeObject<File>();
    CHECK_OR_RETURN(clone != nullptr, E_OUTOFMEMORY);
    clone->m_name = m_name;
    clone->m_plugin = m_plugin;
    clone->m_kov_inst = m_kov_inst;
    clone->m_cache = m_cache;
    clone->m_flags = m_flags;
    clone->m_keep_checked_out = m_keep_checked_out;
    clone->m_need_flush = m_need_flush;
    clone->m_need_checkin = m_need_checkin;
    clone->m_check_out_state = m_check_out_state.load();
    clone->m_modified_time = m_modified_time;
    ComPtr<KOV::IAFS_File>(clone).CopyTo(out_clone);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT File::IsCloneOf(KOV::IAFS_File* file, VARIANT_BOOL* out_is_clone) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_is_clone != nullptr, E_POINTER);
    ComPtr<KOV::IAFS_Name> name;
    const bool is_clone =
        file != nullptr && SUCCEEDED(file->get_Name(&name)) && name.Get() == static_cast<KOV::IAFS_Name*>(m_name.Get());
    *out_is_clone = is_clone ? VARIANT_TRUE : VARIANT_FALSE;
    TRACE_LEAVE(L"{}", is_clone);
    return S_OK;
}

HRESULT File::GetStream(IStream** o_stream) {
    TRACE_ENTER();
    CHECK_OR_RETURN(o_stream != nullptr, E_POINTER);
    const ComPtr<fsFileStreamBase> stream = MakeObject<fsFileStreamBase>(this);
    CHECK_OR_RETURN(stream != nullptr, E_OUTOFMEMORY);
    ComPtr<IStream>(stream).CopyTo(o_stream);
    TRACE_RETURN(S_OK);
}

bool File::CanEdit(bool use_cache) {
    TRACE_ENTER();
    if (!use_cache) {
        const std::shared_ptr<SharePoint::Object> object = m_name->GetObject();
        CHECK_OR_RETURN_VALUE(object != nullptr, false);
        TRACE_FORMAT(LogLevel::information, L"calling server CanEdit");
        const bool can_edit = object->CanEdit();
        if (can_edit != m_can_edit.exchange(can_edit)) {
            m_plugin->OnFileStateChanged(this);
        }
    }
    const bool can_edit = m_can_edit;
    TRACE_LEAVE(L"{}", can_edit);
    return can_edit;
}

void File::GetCheckedOutState(SharePoint::File::CheckOutState* out_state, std::wstring* out_user) {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    {
        const std::scoped_lock lock(m_user_lock);
        *out_state = m_check_out_state;
        if (out_user != nullptr) {
            *out_user = m_check_out_user;
        }
    }
    TRACE_LEAVE(L"{}", static_cast<std::uint32_t>(*out_state));
}

void File::SetCheckOut(SharePoint::File::CheckOutState state, std::wstring user) {
    const std::scoped_lock lock(m_user_lock);
    m_check_out_state = state;
    m_check_out_user.swap(user);
}

std::uint64_t File::ServerTime() { return m_name->GetObject()->UpdateInformation().m_modified_time; }

std::wstring File::FileName() const { return m_name->GetObject()->m_information.m_name; }
