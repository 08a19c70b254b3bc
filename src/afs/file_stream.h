#pragma once

#include "host/file.h"
#include "host/object_bases.h"

/// An open file as a stream. Every call goes to the file, without words for a failure and without a way to cancel.
class fsFileStreamBase final : public cCoClassUnknownT<IStream> {
public:
    explicit fsFileStreamBase(KOV::IAFS_File* file);

    /// `S_FALSE` when fewer bytes than asked were there.
    HRESULT Read(void* data, ULONG size, ULONG* out_read) override;
    HRESULT Write(const void* data, ULONG size, ULONG* out_written) override;
    HRESULT Seek(LARGE_INTEGER offset, DWORD origin, ULARGE_INTEGER* out_position) override;
    HRESULT SetSize(ULARGE_INTEGER size) override;
    /// Fills neither of the two counts.
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* out_read, ULARGE_INTEGER* out_written) override;
    /// Saves; the flags aren't looked at.
    HRESULT Commit(DWORD flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    /// Type and size; no name.
    HRESULT Stat(STATSTG* out_stat, DWORD flags) override;
    /// Another stream over a clone of the file, at position 0.
    HRESULT Clone(IStream** out_stream) override;

protected:
    void* Find(REFIID id) noexcept override;

private:
    ~fsFileStreamBase() override;

    ComPtr<KOV::IAFS_File> m_file;
};
