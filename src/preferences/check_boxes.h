#pragma once

/// The check boxes of the preferences page: one bit of one field each. Main thread.

#include "host/controls.h"
#include "settings/preferences.h"

namespace PreferencesUi {

struct CheckBox {
    LPCWSTR control;
    std::uint32_t Preferences::*field;
    std::uint32_t bit;
};

inline constexpr CheckBox page_check_boxes[] = {
    {L"check.whenOpenDocumentCheckOutNoneDisableEditing", &Preferences::on_open_checked_out_none,
     Preferences::Actions::disable_editing_ui},
    {L"check.whenOpenCheckOutOtherShowWarning", &Preferences::on_open_checked_out_other, Preferences::Actions::show_message_box},
    {L"check.whenOpenDocumentCheckOutOtherDisableEditing", &Preferences::on_open_checked_out_other,
     Preferences::Actions::disable_editing_ui},
    {L"check.whenOpenNoPermissionsShowWarning", &Preferences::on_open_without_write_permissions,
     Preferences::Actions::show_message_box},
    {L"check.whenOpenNoPermissionsDisableEditing", &Preferences::on_open_without_write_permissions,
     Preferences::Actions::disable_editing_ui},
};

inline void ShowCheck(KOV::IUIX_Dialog* dialog, const CheckBox& check_box, const Preferences& preferences) {
    (void)dialog->SetItemCheck(check_box.control, (preferences.*check_box.field & check_box.bit) != 0 ? 1 : 0, 1);
}

/// Sets or clears the bit; a control that isn't there leaves it.
inline void TakeCheck(KOV::IUIX_Dialog* dialog, const CheckBox& check_box, Preferences& io_preferences) {
    LONG value = 0;
    if (SUCCEEDED(dialog->GetItemCheck(check_box.control, &value))) {
        std::uint32_t& field = io_preferences.*check_box.field;
        field = value != 0 ? field | check_box.bit : field & ~check_box.bit;
    }
}

} // namespace PreferencesUi
