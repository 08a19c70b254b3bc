#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the user decided about documents, check-ins and logging. A plain record: read and written by its owner's rules.
struct Preferences {
    /// The bits of the `on_` fields.
    struct Actions {
        enum : std::uint32_t {
            show_message_box = 1,
            show_infobar = 2,
            disable_editing_ui = 4,
            check_out = 8,
            check_in = 16,
            overwrite = 32,
        };
    };

    std::uint32_t on_open_without_write_permissions;
    std::uint32_t on_open_checked_out_none;
    std::uint32_t on_open_checked_out_me;
    std::uint32_t on_open_checked_out_other;
    std::uint32_t on_after_save;
    std::uint32_t on_save_conflict;
    std::uint32_t on_close_checked_out_need_check_in;
    std::uint32_t on_close_checked_out_no_need_check_in;
    /// 0 minor, 1 major, 2 overwrite.
    std::uint32_t default_check_in_type;
    std::wstring default_check_in_message;
    bool hide_paths;
    /// Patterns for `PathMatchSpecW`.
    std::vector<std::wstring> hidden_paths;
    /// 0 none to 4 verbose.
    std::uint32_t log_level;
    std::uint32_t days_to_store_logs;
};

/// What holds before anything was stored, and what a reset brings back.
extern const Preferences g_default_preferences;
