#pragma once

/// Translates the module's message box record into a `Box`, and an answer back into what the record's owner waits for.

#include <vector>

#include "host/message_box.h"
#include "platform/bstr.h"
#include "workbench/core/questions.h"
#include "workbench/core/strings.h"

/// The box has an edit of several lines, whose text goes into a document of markup: the user reads and writes it plainly, the
/// record holds `&` and `<` as `&amp;` and `&lt;`.
constexpr DWORD BoxFlag_EditTextIsMarkup = 0xC0000;

struct TranslatedBox {
    Box box;
    bool edit_is_markup = false;
    std::vector<DWORD> button_ids;
    std::vector<DWORD> radio_ids;
};

/// Throws `HostException` E_INVALIDARG for a record that can't be one: another size, pointers that lack, too many items.
TranslatedBox ReadBoxRecord(const KOV::MessageBoxParameters& record, const Strings& strings, NameIds& ids);

struct BoxResults {
    DWORD check_state = 0;
    DWORD radio_id = 0;
    Bstr edit_text;
    /// 0 when the box ended without a button.
    DWORD button_id = 0;
};

/// An index that the box hasn't counts as no button; so does the first button while a required edit line is empty.
BoxResults WriteBoxAnswer(const TranslatedBox& translated, const BoxAnswer& answer);
