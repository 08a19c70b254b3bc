#include "afs/file_stream.h"

#include <algorithm>
#include <array>

#include "frame/diagnostics/diagnostics.h"

namespace {

constexpr ULONG copy_chunk = 65536;

/// A read that ends early is an end, not a failure, also where the file's result carries the system's "sector not found".
bool IsEarlyEnd(HRESULT result) { return SUCCEEDED(result) || (result & 0xFFFF) == 0x1B; }

DWORD FileOrigin(DWORD stream_origin) {
    switch (stream_origin) {
    case STREAM_SEEK_CUR:
        return 1;
    case STREAM_SEEK_END:
        return 2;
    default:
        return 0;
    }
}

} // namespace

fsFileStreamBase::fsFileStreamBase(KOV::IAFS_File* file) : m_file(file) {}

fsFileStreamBase::~fsFileStreamBase() = default;

void* fsFileStreamBase::Find(REFIID id) noexcept {
    return id == __uuidof(ISequentialStream) ? static_cast<ISequentialStream*>(this) : cCoClassUnknownT::Find(id);
}

HRESULT fsFileStreamBase::Read(void* data, ULONG size, ULONG* out_read) {
    TRACE_ENTER();
    ULONG size_read = 0;
    const HRESULT result = m_file->Read(data, size, &size_read, nullptr, nullptr);
    if (out_read != nullptr) {
        *out_read = size_read;
    }
    return size_read < size && IsEarlyEnd(result) ? S_FALSE : result;
}

HRESULT fsFileStreamBase::Write(const void* data, ULONG size, ULONG* out_written) {
    TRACE_ENTER();
    ULONG size_written = 0;
    const HRESULT result = m_file->Write(data, size, &size_written, nullptr, nullptr);
    if (out_written != nullptr) {
        *out_written = size_written;
    }
    return result;
}

HRESULT fsFileStreamBase::Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER* out_position) {
    TRACE_ENTER();
    LONGLONG position = 0;
    CHECK_OR_RETURN(m_file->SetPos(offset.QuadPart, FileOrigin(origin), &position));
    if (out_position != nullptr) {
        out_position->QuadPart = static_cast<ULONGLONG>(position);
    }
    TRACE_RETURN(S_OK);
}

HRESULT fsFileStreamBase::SetSize(ULARGE_INTEGER size) {
    TRACE_ENTER();
    return m_file->SetSize(static_cast<LONGLONG>(size.QuadPart), nullptr, nullptr);
}

HRESULT fsFileStreamBase::CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER*, ULARGE_INTEGER*) {
    TRACE_ENTER();
    CHECK_OR_RETURN(target != nullptr, E_POINTER);
    std::array<BYTE, copy_chunk> chunk;
    for (ULONGLONG left = size.QuadPart; left > 0;) {
        ULONG size_read = 0;
        CHECK_OR_RETURN(Read(chunk.data(), static_cast<ULONG>(std::min<ULONGLONG>(left, copy_chunk)), &size_read));
        if (size_read == 0) {
            break;
        }
        ULONG size_written = 0;
        CHECK_OR_RETURN(target->Write(chunk.data(), size_read, &size_written));
        CHECK_OR_RETURN(size_written == size_read, E_FAIL);
        left -= size_read;
    }
    TRACE_RETURN(S_OK);
}

HRESULT fsFileStreamBase::Commit(DWORD) {
    TRACE_ENTER();
    return m_file->Flush(nullptr, nullptr);
}

HRESULT fsFileStreamBase::Revert() { return E_NOTIMPL; }

HRESULT fsFileStreamBase::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return E_NOTIMPL; }

HRESULT fsFileStreamBase::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) { return E_NOTIMPL; }

HRESULT fsFileStreamBase::Stat(STATSTG* out_stat, DWORD) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_stat != nullptr, E_POINTER);
    *out_stat = {};
    LONGLONG size = 0;
    CHECK_OR_RETURN(m_file->GetSize(&size, nullptr, nullptr));
    out_stat->type = STGTY_STREAM;
    out_stat->cbSize.QuadPart = static_cast<ULONGLONG>(size);
    TRACE_RETURN(S_OK);
}

HRESULT fsFileStreamBase::Clone(IStream** out_stream) {
    TRACE_ENTER();
    CHECK_OR_RETURN(out_stream != nullptr, E_POINTER);
    CHECK_OR_RETURN(m_file != nullptr, E_FAIL);
    ComPtr<KOV::IAFS_File> file;
    CHECK_OR_RETURN(m_file->Clone(&file));
    const ComPtr<fsFileStreamBase> stream = MakeObject<fsFileStreamBase>(file);
    CHECK_OR_RETURN(stream != nullptr, E_OUTOFMEMORY);
    ComPtr<IStream>(stream).CopyTo(out_stream);
    TRACE_RETURN(S_OK);
}
