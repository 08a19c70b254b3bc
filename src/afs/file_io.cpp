#include <algorithm>

#include "afs/file_detail.h"

HRESULT File::Read(void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(Bits::Has(m_flags, KOV::AFS_OpenFile_Read), FileResult::invalid_state);
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    ULONG size_read = 0;
    const HRESULT read_result = m_cache->Read(m_pos, data, size, &size_read, out_error_details, cancel_flag);
    m_pos += size_read;
    if (out_size_read != nullptr) {
        *out_size_read = size_read;
    }
    CHECK_OR_RETURN(read_result);
    TRACE_LEAVE(L"{}", size_read);
    return read_result;
    INTERFACE_CATCH_SHORT(out_error_details)
}

HRESULT File::Write(const void* data, ULONG size, ULONG* out_size_written, KOV::IString* out_error_details,
                    KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(Bits::Has(m_flags, KOV::AFS_OpenFile_Write), FileResult::invalid_state);
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    ULONG size_written = 0;
    const HRESULT write_result = m_cache->Write(m_pos, data, size, &size_written, out_error_details, cancel_flag);
    m_pos += size_written;
    m_need_flush = m_need_flush || size_written != 0;
    if (out_size_written != nullptr) {
        *out_size_written = size_written;
    }
    CHECK_OR_RETURN(write_result);
    TRACE_LEAVE(L"{}", size_written);
    return write_result;
}

HRESULT File::SetPos(LONGLONG offset, DWORD origin, LONGLONG* out_pos) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    LONGLONG size = 0;
    CHECK_OR_RETURN(m_cache->get_Size(&size));
    LONGLONG base = 0;
    switch (origin) {
    case 0:
        break;
    case 1:
        base = m_pos;
        break;
    case 2:
        base = size;
        break;
    default:
        THROW_LOGGED(HResultException(E_INVALIDARG, L"Unsupported origin type"));
    }
    // The way is clamped, not the sum, so that no offset overflows.
    m_pos = base + std::clamp(offset, -base, std::max(size, LONGLONG{0}) - base);
    if (out_pos != nullptr) {
        *out_pos = m_pos;
    }
    TRACE_LEAVE(L"{}", m_pos);
    return S_OK;
    INTERFACE_CATCH_SHORT(nullptr)
}

HRESULT File::GetPos(LONGLONG* out_pos) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_pos != nullptr, E_POINTER);
    *out_pos = m_pos;
    TRACE_RETURN(S_OK);
}

HRESULT File::SetSize(LONGLONG new_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(Bits::Has(m_flags, KOV::AFS_OpenFile_Write), FileResult::invalid_state);
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    CHECK_OR_RETURN(m_cache->SetSize(new_size, out_error_details, cancel_flag));
    TRACE_RETURN(S_OK);
}

HRESULT File::GetSize(LONGLONG* out_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    CHECK_OR_RETURN(m_cache->get_Size(out_size));
    if (out_error_details != nullptr) {
        out_error_details->put_Value(L"");
    }
    TRACE_RETURN(S_OK);
}

HRESULT File::Flush(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    if (!m_need_flush) {
        TRACE_FORMAT(LogLevel::information, L"nothing to flush for m_name='{}'", Masked(m_name->GetUrl()));
        TRACE_RETURN(S_OK);
    }
    CHECK_OR_RETURN(m_cache != nullptr, FileResult::invalid_state);
    HRESULT flush_result = S_OK;
    do {
        flush_result = m_cache->Flush(out_error_details, cancel_flag);
    } while (flush_result == E_SP_RETRY); // CacheCallback::EndWrite counts
    CHECK_OR_RETURN(flush_result);
    m_need_flush = false;
    m_need_checkin = true;
    const std::uint64_t old_time = m_modified_time;
    m_modified_time = ServerTime();
    TRACE_FORMAT(LogLevel::information, L"updated m_modified_time from {} to {}", old_time, m_modified_time);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}
