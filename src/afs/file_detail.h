#pragma once

/// What the sources of `File` share.

#include "afs/file.h"
#include "afs/file_system.h"
#include "afs/name.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "http/sign_in/session.h"
#include "platform/errors.h"

namespace FileResult {
constexpr HRESULT missing = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
constexpr HRESULT exists = HRESULT_FROM_WIN32(ERROR_FILE_EXISTS);
constexpr HRESULT no_edit_rights = HRESULT_FROM_WIN32(ERROR_FILE_READ_ONLY);
constexpr HRESULT checked_out_to_other = HRESULT_FROM_WIN32(ERROR_FILE_CHECKED_OUT);
/// The server has a newer version than the one that would be saved.
constexpr HRESULT outdated = MakeHResult(0x800702A7);
/// The file isn't open for that.
constexpr HRESULT invalid_state = MakeHResult(0x8007139F);
} // namespace FileResult

constexpr DWORD create_disposition_flags =
    KOV::AFS_OpenFile_CreateNew | KOV::AFS_OpenFile_CreateAlways | KOV::AFS_OpenFile_OpenExisting | KOV::AFS_OpenFile_OpenAlways;

/// Flags that say nothing mean: read, and only what exists.
constexpr DWORD NormalizeOpenFlags(DWORD flags) noexcept {
    if ((flags & (KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write)) == 0) {
        flags |= KOV::AFS_OpenFile_Read;
    }
    if ((flags & create_disposition_flags) == 0) {
        flags |= KOV::AFS_OpenFile_OpenExisting;
    }
    return flags;
}

/// Throws HResultException when the HRESULT of the call is negative, and logs the source text of the call.
#define CHECK_RESULT_OR_THROW(call)                                                                                              \
    do {                                                                                                                         \
        if (const HRESULT kov_result = (call); FAILED(kov_result)) [[unlikely]] {                                                \
            KOV_FUNCTION_NAME;                                                                                                   \
            Diagnostics::Throw(kov_function.text, L"Expression '" #call L"' caused throwing '", HResultException(kov_result));   \
        }                                                                                                                        \
    } while (false)
