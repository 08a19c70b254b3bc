#pragma once

/// What an open comes to: the server's rights and holder, the caller's flags and the user's preferences, as one decision.

#include "platform/types.h"
#include "settings/preferences.h"
#include "sharepoint/sharepoint.h"

enum class OpenOutcome {
    open,
    /// Take the file for the user, without asking.
    check_out,
    /// Let the user choose between `open`, `check_out` and giving up.
    ask,
    /// Tell the user, then open.
    warn_no_edit_rights,
    warn_other_user,
    refuse_write,
    refuse_check_out,
    refuse_other_user,
};

/// `can_edit` and `state` are the server's answers, `open_flags` the bits `AFS_OpenFile_` after normalisation. Asks nobody.
OpenOutcome DecideOpen(bool can_edit, DWORD open_flags, SharePoint::File::CheckOutState state, const Preferences& preferences);
