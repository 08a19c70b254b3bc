#pragma once

/// Who holds a document and may the user edit it, as the module tells it in its info bar.

#include <functional>
#include <optional>
#include <string>

#include "workbench/console/context.h"
#include "workbench/core/info_bar.h"

struct DocumentState {
    /// "none", "me", "other_user" or "unknown".
    std::string checked_out = "unknown";
    /// The other user.
    std::optional<std::wstring> user;
    bool can_edit = true;

    bool operator==(const DocumentState&) const = default;
};

/// What can be known of the bar besides its texts.
struct InfoBarWords {
    /// The text behind a key.
    std::function<std::wstring(const std::wstring& key)> text_of;
    bool is_check_out_enabled = false;
    bool is_check_in_enabled = false;
};

/// Reads the module's span; nothing of a document without one is known.
DocumentState ReadDocumentState(const std::optional<InfoBarSpan>& span, const InfoBarWords& words);

/// Opens for reading without a question, lets the module put up its bar, and reads that. The document stays as it is on the
/// server. Throws Failure.
DocumentState AskDocumentState(const Context& context, KOV::IAFS_Name* name);
