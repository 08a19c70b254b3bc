#include "afs/cache_callback.h"

#include <utility>

#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"

namespace {

constexpr HRESULT file_missing = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

} // namespace

CacheCallback::CacheCallback(Name* name) : m_name(name) {}

CacheCallback::~CacheCallback() { TRACE_ENTER(); }

HRESULT CacheCallback::Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* out_error_details,
                            KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (IsCanceled(cancel_flag)) {
        TRACE_FORMAT(LogLevel::information, L"Canceled");
        EndDownload();
        TRACE_RETURN(E_CANCELED);
    }
    CHECK_OR_RETURN(data != nullptr, E_POINTER);
    CHECK_OR_RETURN(size > 0, E_INVALIDARG);
    CHECK_OR_THROW(
        pos == m_pos,
        HResultException(E_INVALIDARG, L"Requested read position is not equal to current one - random reading is not supported"));
    if (m_read_context == nullptr) {
        CHECK_OR_THROW(m_name->BindObject(SharePoint::Web::BindObjectType::file, true) != nullptr,
                       HResultException(file_missing));
        m_read_context = std::make_unique<Http::Response>(m_name->GetObject()->AsFile()->Download());
    }
    const auto count = static_cast<ULONG>(Http::ReadBody(m_read_context->GetHandle(), data, size));
    m_pos += count;
    if (out_size_read != nullptr) {
        *out_size_read = count;
    }
    if (count == 0) {
        EndDownload();
        TRACE_LEAVE(L"ERROR_HANDLE_EOF");
        return HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT CacheCallback::Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* out_error_details,
                             KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (IsCanceled(cancel_flag)) {
        TRACE_FORMAT(LogLevel::information, L"Canceled");
        EndUpload();
        TRACE_RETURN(E_CANCELED);
    }
    CHECK_OR_RETURN(data != nullptr, E_POINTER);
    CHECK_OR_RETURN(size > 0, E_INVALIDARG);
    CHECK_OR_THROW(
        pos == m_pos,
        HResultException(E_INVALIDARG, L"Requested write position is not same as previous - random writing is not supported"));
    CHECK_OR_THROW(m_write_context != nullptr, HResultException(E_FAIL, L"Write is called without prior BeginWrite"));
    DWORD written_size = 0;
    try {
        m_write_context->Write(data, size, written_size);
    } catch (...) {
        EndUpload();
        throw;
    }
    m_pos += written_size;
    if (out_size_written != nullptr) {
        *out_size_written = size;
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT CacheCallback::SetSize(LONGLONG new_size, KOV::IString*, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(new_size >= 0, E_INVALIDARG);
    m_size = new_size;
    TRACE_RETURN(S_OK);
}

HRESULT CacheCallback::GetSize(LONGLONG* out_size, KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_RETURN(out_size != nullptr, E_POINTER);
    CHECK_OR_THROW(m_name->BindObject(SharePoint::Web::BindObjectType::file, true) != nullptr, HResultException(file_missing));
    const std::uint64_t size = m_name->GetObject()->UpdateInformation().m_size;
    CHECK_OR_THROW(std::in_range<LONGLONG>(size), HResultException(HRESULT_FROM_WIN32(ERROR_FILE_TOO_LARGE)));
    *out_size = static_cast<LONGLONG>(size);
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT CacheCallback::BeginWrite(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    CHECK_OR_RETURN(!IsCanceled(cancel_flag), E_CANCELED);
    CHECK_OR_THROW(m_name->BindObject(SharePoint::Web::BindObjectType::file, true) != nullptr, HResultException(file_missing));
    m_pos = 0;
    if (m_write_context == nullptr) {
        m_write_context =
            std::make_unique<Http::Request>(m_name->GetObject()->AsFile()->Upload(static_cast<std::uint64_t>(m_size)));
    } else {
        Http::SendRequestEx(m_write_context->GetHandle(), static_cast<std::uint64_t>(m_size));
    }
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

HRESULT CacheCallback::EndWrite(KOV::IString* out_error_details, KOV::IKOV_Flag* cancel_flag) {
    TRACE_ENTER();
    INTERFACE_TRY
    if (IsCanceled(cancel_flag) && m_pos < m_size) {
        TRACE_FORMAT(LogLevel::information, L"Canceled");
        EndUpload();
        TRACE_RETURN(E_CANCELED);
    }
    if (m_write_context == nullptr) {
        TRACE_FORMAT(LogLevel::information, L"Previous write failed");
        EndUpload();
        TRACE_RETURN(E_FAIL);
    }
    try {
        m_write_context->End();
    } catch (const ApiException& exception) {
        if (exception.error == ERROR_INTERNET_FORCE_RETRY) {
            TRACE_FORMAT(LogLevel::warning, L"Need retry, {} out of {} retries left", m_retries_left, max_retries);
            if (m_retries_left > 0) {
                --m_retries_left;
                TRACE_RETURN(E_SP_RETRY);
            }
        }
        EndUpload();
        throw;
    }
    EndUpload();
    TRACE_RETURN(S_OK);
    INTERFACE_CATCH(out_error_details)
}

void CacheCallback::EndDownload() noexcept {
    m_read_context.reset();
    m_pos = 0;
}

void CacheCallback::EndUpload() noexcept {
    m_write_context.reset();
    m_retries_left = max_retries;
}
