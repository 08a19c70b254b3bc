#pragma once

/// What the end of a document that the user holds comes to when the caller doesn't say.

#include <cstdint>

#include "frame/diagnostics/cancel.h"
#include "settings/preferences.h"

enum class CloseStep { keep, check_in_with_ui, check_in, ask_to_discard, discard };

/// The first row whose bit is set in the preference; a bit of 0 takes the rest.
struct CloseRow {
    bool need_check_in;
    std::uint32_t action;
    CloseStep step;
};

inline constexpr CloseRow close_rows[] = {
    {true, Preferences::Actions::show_message_box, CloseStep::check_in_with_ui},
    {true, Preferences::Actions::check_in, CloseStep::check_in},
    {true, 0, CloseStep::keep},
    {false, Preferences::Actions::show_message_box, CloseStep::ask_to_discard},
    {false, Preferences::Actions::check_out, CloseStep::keep},
    {false, 0, CloseStep::discard},
};

/// `need_check_in`: changes reached the server since the last check-in. `preference` is the one for that case.
constexpr CloseStep DecideClose(bool need_check_in, std::uint32_t preference) noexcept {
    for (const CloseRow& row : close_rows) {
        if (row.need_check_in == need_check_in && (row.action == 0 || Bits::Has(preference, row.action))) {
            return row.step;
        }
    }
    return CloseStep::keep;
}
