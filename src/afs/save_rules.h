#pragma once

/// What stands between a document and its save: rights, somebody else's newer version, the holder. Decisions only; each is taken
/// when the server's answer to its question is there.

#include <cstdint>

#include "frame/diagnostics/cancel.h"
#include "host/file.h"
#include "settings/preferences.h"
#include "sharepoint/sharepoint.h"

enum class SaveRights { go_on, refuse_check_out, refuse_write };

/// A check-out is refused before the write, since it comes first. `held` is the state that is known so far.
constexpr SaveRights DecideSaveRights(bool can_edit, DWORD open_flags, SharePoint::File::CheckOutState held) noexcept {
    if (can_edit) {
        return SaveRights::go_on;
    }
    if (Bits::Has(open_flags, KOV::AFS_OpenFile_CheckOut) && held != SharePoint::File::CheckOutState::me) {
        return SaveRights::refuse_check_out;
    }
    return Bits::Has(open_flags, KOV::AFS_OpenFile_Write) ? SaveRights::refuse_write : SaveRights::go_on;
}

enum class SaveConflict { none, ask, refuse };

/// Times in 100 ns units. The server's version is newer from one unit on; there is no tolerance.
constexpr SaveConflict DecideSaveConflict(std::uint64_t local_time, std::uint64_t server_time,
                                          std::uint32_t on_save_conflict) noexcept {
    if (local_time >= server_time || Bits::Has(on_save_conflict, Preferences::Actions::overwrite)) {
        return SaveConflict::none;
    }
    return Bits::Has(on_save_conflict, Preferences::Actions::show_message_box) ? SaveConflict::ask : SaveConflict::refuse;
}

enum class SaveHolder { go_on, check_out, refuse };

struct SaveHolderRow {
    SharePoint::File::CheckOutState held;
    SaveHolder outcome;
};

inline constexpr SaveHolderRow save_holder_rows[] = {
    {SharePoint::File::CheckOutState::none, SaveHolder::check_out},
    {SharePoint::File::CheckOutState::me, SaveHolder::go_on},
    {SharePoint::File::CheckOutState::other_user, SaveHolder::refuse},
    {SharePoint::File::CheckOutState::unknown, SaveHolder::go_on},
};

constexpr SaveHolder DecideSaveHolder(SharePoint::File::CheckOutState held) noexcept {
    for (const SaveHolderRow& row : save_holder_rows) {
        if (row.held == held) {
            return row.outcome;
        }
    }
    return SaveHolder::refuse;
}
