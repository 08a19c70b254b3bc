#include "workbench/core/cache_entry.h"

#include <algorithm>
#include <limits>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"
#include "workbench/core/value_objects.h"

namespace {

/// What is read ahead of nobody's request, and what a flush sends at once.
constexpr ULONG PieceSize = ULONG{1} << 18;

/// A callback's failure, whose words stand already in the caller's details.
class CallbackFailure : public std::exception {
public:
    explicit CallbackFailure(HRESULT result) noexcept : m_result(result) {}
    HRESULT Result() const noexcept { return m_result; }

private:
    HRESULT m_result;
};

void Check(HRESULT result) {
    if (FAILED(result)) {
        throw CallbackFailure(result);
    }
}

[[noreturn]] void ThrowWrongLength(const std::string& what) { throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), what); }

template <class Body>
HRESULT RunCalls(KOV::IString* details, Body&& body) noexcept {
    return AtBorder(details, [&] {
        try {
            body();
            return S_OK;
        } catch (const CallbackFailure& failure) {
            return failure.Result();
        }
    });
}

} // namespace

CacheEntry::CacheEntry(std::shared_ptr<CacheFolder> folder, std::unique_ptr<LocalCopy> copy, Source source)
    : m_folder(std::move(folder)), m_url(std::move(source.url)), m_copy(std::move(copy)),
      m_callbacks(std::move(source.callbacks)), m_origin(source.stamp), m_learn_stamp(std::move(source.learn_stamp)),
      m_size(source.size) {}

CacheEntry::~CacheEntry() {
    if (m_is_unsaved) {
        m_folder->AbandonMark(m_mark);
    }
}

void CacheEntry::SetUnsaved(std::int64_t mark) noexcept {
    m_fill = Fill::complete;
    m_is_unsaved = true;
    m_mark = mark;
    m_mark_is_complete = true;
}

std::wstring CacheEntry::Path() const { return WideFromUtf8(m_copy->Path().string()); }

HRESULT CacheEntry::Read(LONGLONG pos, void* data, ULONG size, ULONG* out_size_read, KOV::IString* details,
                         KOV::IKOV_Flag* cancel_flag) {
    if (out_size_read != nullptr) {
        *out_size_read = 0;
    }
    if (pos < 0 || (data == nullptr && size > 0)) {
        return data == nullptr ? E_POINTER : E_INVALIDARG;
    }
    return RunCalls(details, [&] {
        const std::scoped_lock hold(m_io);
        const ULONG count = ReadLocked(pos, static_cast<char*>(data), size, {details, cancel_flag});
        if (out_size_read != nullptr) {
            *out_size_read = count;
        }
    });
}

ULONG CacheEntry::ReadLocked(LONGLONG pos, char* data, ULONG size, const Call& call) {
    const LONGLONG left = std::max<LONGLONG>(m_size - pos, 0);
    const auto wanted = static_cast<ULONG>(std::min<LONGLONG>(size, left));
    if (IsComplete()) {
        m_copy->Read(pos, data, wanted);
        return wanted;
    }
    ULONG done = 0;
    if (pos < m_filled) {
        done = static_cast<ULONG>(std::min<LONGLONG>(wanted, m_filled - pos));
        m_copy->Read(pos, data, done);
    }
    if (done < wanted) {
        FillTo(pos, call);
    }
    while (done < wanted) {
        // Straight into the reader's buffer, and from there to the local copy: no byte is read twice.
        done += FillInto(data + done, wanted - done, call);
    }
    if (m_filled == m_size && !IsComplete()) {
        SeeEnd(call);
    }
    return done;
}

ULONG CacheEntry::FillInto(char* data, ULONG size, const Call& call) {
    try {
        if (m_callbacks.IsNull()) {
            throw HostException(E_UNEXPECTED, "The file isn't connected any more");
        }
        ULONG count = 0;
        const HRESULT result = m_callbacks->Read(m_filled, data, size, &count, call.details, call.cancel_flag);
        if (result == EndOfFile || (SUCCEEDED(result) && count == 0)) {
            ThrowWrongLength("The server sent " + std::to_string(m_filled) + " bytes of the " + std::to_string(m_size) +
                             " that it reported for the file");
        }
        Check(result);
        if (count > size) {
            throw HostException(E_UNEXPECTED, "More bytes were read than asked for");
        }
        m_copy->Write(m_filled, data, count);
        m_filled += count;
        return count;
    } catch (...) {
        AbandonFill();
        throw;
    }
}

void CacheEntry::FillTo(LONGLONG end, const Call& call) {
    if (m_filled >= end) {
        return;
    }
    std::vector<char> buffer(PieceSize);
    while (m_filled < end) {
        FillInto(buffer.data(), static_cast<ULONG>(std::min<LONGLONG>(PieceSize, end - m_filled)), call);
    }
}

void CacheEntry::SeeEnd(const Call& call) {
    try {
        if (m_callbacks.IsNull()) {
            throw HostException(E_UNEXPECTED, "The file isn't connected any more");
        }
        char byte = 0;
        ULONG count = 0;
        const HRESULT result = m_callbacks->Read(m_filled, &byte, 1, &count, call.details, call.cancel_flag);
        if (result != EndOfFile) {
            Check(result);
            ThrowWrongLength("The server sent more than the " + std::to_string(m_size) + " bytes that it reported for the file");
        }
        m_fill = Fill::complete;
    } catch (...) {
        AbandonFill();
        throw;
    }
}

/// Ends a download in the middle: the next one begins at 0, and bytes of two of them never stand in one copy.
void CacheEntry::AbandonFill() noexcept {
    if (!m_callbacks.IsNull()) {
        if (const auto set_flag = MakeObject<FlagObject>(true); !set_flag.IsNull()) {
            char byte = 0;
            ULONG count = 0;
            m_callbacks->Read(0, &byte, 1, &count, nullptr, set_flag);
        }
    }
    m_filled = 0;
    m_fill = Fill::part;
}

void CacheEntry::MakeComplete(const Call& call) {
    // An empty file has no bytes that a change could join to others.
    if (!IsComplete() && m_size > 0) {
        FillTo(m_size, call);
        SeeEnd(call);
    }
    m_fill = Fill::complete;
}

/// Before the copy differs from the server's file, a mark of it stands in the store.
void CacheEntry::PrepareChange() {
    if (!m_is_unsaved) {
        if (!m_origin && m_uploads > 0 && m_learn_stamp) {
            m_origin = m_learn_stamp();
        }
        m_mark = m_folder->MarkUnsaved(m_url, *m_copy, m_origin);
        m_mark_is_complete = false;
        m_copy->KeepFile(true);
        m_is_unsaved = true;
    } else if (m_mark_is_complete) {
        m_folder->SetMarkComplete(m_mark, false);
        m_mark_is_complete = false;
    }
}

HRESULT CacheEntry::Write(LONGLONG pos, const void* data, ULONG size, ULONG* out_size_written, KOV::IString* details,
                          KOV::IKOV_Flag* cancel_flag) {
    if (out_size_written != nullptr) {
        *out_size_written = 0;
    }
    if (data == nullptr && size > 0) {
        return E_POINTER;
    }
    if (pos < 0 || pos > std::numeric_limits<LONGLONG>::max() - static_cast<LONGLONG>(size)) {
        return E_INVALIDARG;
    }
    return RunCalls(details, [&] {
        const std::scoped_lock hold(m_io);
        if (size == 0) {
            return;
        }
        MakeComplete({details, cancel_flag});
        PrepareChange();
        WriteLocal(pos, data, size);
        if (out_size_written != nullptr) {
            *out_size_written = size;
        }
    });
}

/// After a write that failed in its middle the copy is no document, until the same place was written again or all is new.
void CacheEntry::WriteLocal(LONGLONG pos, const void* data, ULONG size) {
    const LONGLONG end = pos + static_cast<LONGLONG>(size);
    try {
        m_copy->Write(pos, data, size);
    } catch (const HostException& failure) {
        m_failed_pos = m_local_error == S_OK ? pos : std::min(m_failed_pos, pos);
        m_local_error = failure.Result();
        throw;
    }
    if (m_local_error != S_OK && pos <= m_failed_pos && m_failed_pos < end) {
        m_local_error = S_OK;
    }
    m_size = std::max(m_size.load(), end);
}

HRESULT CacheEntry::SetSize(LONGLONG new_size, KOV::IString* details, KOV::IKOV_Flag* cancel_flag) {
    if (new_size < 0) {
        return E_INVALIDARG;
    }
    return RunCalls(details, [&] {
        const std::scoped_lock hold(m_io);
        if (new_size == m_size) {
            return;
        }
        if (new_size > 0) {
            MakeComplete({details, cancel_flag});
        } else if (!IsComplete() && m_filled > 0) {
            AbandonFill();
        }
        PrepareChange();
        m_copy->SetSize(new_size);
        m_fill = Fill::complete;
        m_size = new_size;
        if (new_size == 0) {
            m_local_error = S_OK;
        }
    });
}

HRESULT CacheEntry::Flush(KOV::IString* details, KOV::IKOV_Flag* cancel_flag) {
    return RunCalls(details, [&] {
        const std::scoped_lock hold(m_io);
        if (!m_is_unsaved) {
            return;
        }
        if (m_local_error != S_OK) {
            throw HostException(m_local_error, "The local copy lacks bytes that could not be written to it");
        }
        if (m_callbacks.IsNull()) {
            throw HostException(E_UNEXPECTED, "The file isn't connected any more");
        }
        if (!m_mark_is_complete) {
            m_folder->SetMarkComplete(m_mark, true);
            m_mark_is_complete = true;
        }
        Upload({details, cancel_flag});
        m_folder->ClearUploaded(m_mark, m_url);
        m_is_unsaved = false;
        m_copy->KeepFile(false);
        m_origin.reset();
        m_uploaded_size = m_size.load();
        ++m_uploads;
    });
}

void CacheEntry::Upload(const Call& call) {
    try {
        Check(m_callbacks->SetSize(m_size, call.details, call.cancel_flag));
        Check(m_callbacks->BeginWrite(call.details, call.cancel_flag));
        SendBytes(call);
        Check(m_callbacks->EndWrite(call.details, call.cancel_flag));
    } catch (const CallbackFailure& failure) {
        // To be run again, the request has to live on; after any other failure the next save begins with a new one.
        if (failure.Result() != RunAgain) {
            DropUpload();
        }
        throw;
    } catch (...) {
        DropUpload();
        throw;
    }
}

void CacheEntry::SendBytes(const Call& call) {
    std::vector<char> buffer(static_cast<std::size_t>(std::min<LONGLONG>(PieceSize, m_size)));
    LONGLONG pos = 0;
    while (pos < m_size) {
        const auto piece = static_cast<ULONG>(std::min<LONGLONG>(PieceSize, m_size - pos));
        m_copy->Read(pos, buffer.data(), piece);
        ULONG sent = 0;
        while (sent < piece) {
            ULONG count = 0;
            Check(m_callbacks->Write(pos + sent, buffer.data() + sent, piece - sent, &count, call.details, call.cancel_flag));
            if (count == 0 || count > piece - sent) {
                throw HostException(E_UNEXPECTED, "The upload doesn't take bytes any more");
            }
            sent += count;
        }
        pos += piece;
        m_folder->TellSent(pos);
    }
}

void CacheEntry::DropUpload() noexcept {
    if (const auto set_flag = MakeObject<FlagObject>(true); !set_flag.IsNull()) {
        m_callbacks->Write(0, nullptr, 0, nullptr, nullptr, set_flag);
    }
}

HRESULT CacheEntry::Reopen() {
    const std::scoped_lock hold(m_io);
    return m_copy->IsInPlace() ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}

void CacheEntry::DiscardUnsaved() {
    const std::scoped_lock hold(m_io);
    if (m_is_unsaved) {
        m_folder->ClearMark(m_mark);
        m_copy->KeepFile(false);
        m_is_unsaved = false;
    }
}

ComPtr<KOV::IAFS_FileCacheCallbacks> CacheEntry::DropCallbacks() {
    const std::scoped_lock hold(m_io);
    return std::exchange(m_callbacks, nullptr);
}
