#pragma once

/// The one way in which the module asks or tells its user something: a host's message box.
///
/// Modal: the call returns when the user has answered. May be called on any thread on which the host may be called. Neither
/// function reports a failure; a box that can't be shown counts as one that was closed.

#include <string>
#include <vector>

#include "host/instance.h"
#include "host/message_box.h"

namespace Ui {

/// Added to the flags of every ordinary box.
constexpr DWORD message_style = 0x10000000;

/// The index of the pressed button, or `cancel_index` when the box ended without one.
///
/// `message` is a finished text. `buttons` are text keys such as `btn.cancel`; none at all stands for the one key `btn.close`. A
/// `cancel_index` that is no button's (-1) means the last button, such a `default_index` the first.
/// `check_value` (null: no check box), `radio_value` and `edit_value` go in as the start value and come out as the answer.
/// `radios` are text keys, none means no radio buttons; an index that is none of theirs selects the first. A null `edit_label_id`
/// means no edit line.
int ShowClassicMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                          int cancel_index, int default_index, LPCWSTR check_text_id, bool* check_value,
                          const std::vector<LPCWSTR>& radios, int* radio_value, LPCWSTR edit_label_id, std::wstring* edit_value);

/// The form of all ordinary boxes: closed without a button counts as the last button.
int ShowMessageBox(KOV::IKOV_Inst* kov, DWORD flags, const std::wstring& message, std::vector<LPCWSTR> buttons,
                   int default_index = 0, LPCWSTR check_text_id = nullptr, bool* check_value = nullptr,
                   const std::vector<LPCWSTR>& radios = {}, int* radio_value = nullptr, LPCWSTR edit_label_id = nullptr,
                   std::wstring* edit_value = nullptr);

} // namespace Ui
