#pragma once

/// The drop-down lists of the preferences windows: which field each shows, and what may be chosen. Main thread.

#include <optional>
#include <span>

#include "host/controls.h"
#include "settings/preferences.h"

namespace PreferencesUi {

/// One item: the key of its text, which the host resolves, and its value.
struct Choice {
    LPCWSTR text;
    std::uint32_t value;
};

/// A drop-down list over some bits of one field.
struct DropDown {
    LPCWSTR control;
    std::uint32_t Preferences::*field;
    /// The bits that a choice sets.
    std::uint32_t mask;
    /// Bits that other controls show; they aren't looked at when the item is selected.
    std::uint32_t shown_elsewhere;
    std::span<const Choice> choices;
};

inline constexpr std::uint32_t all_bits = 0xFFFFFFFF;

inline constexpr Choice open_choices[] = {
    {L"$$$.sp.cbitem.whenOpenDocumentCheckoutNone.open", 0},
    {L"$$$.sp.cbitem.whenOpenDocumentCheckoutNone.checkOut", 8},
    {L"$$$.sp.cbitem.whenOpenDocumentCheckoutNone.ask", 1},
};
inline constexpr Choice save_conflict_choices[] = {
    {L"$$$.sp.cbitem.whenSaveConflict.cancel", 0},
    {L"$$$.sp.cbitem.whenSaveConflict.overwrite", 32},
    {L"$$$.sp.cbitem.whenSaveConflict.ask", 1},
};
inline constexpr Choice after_save_choices[] = {
    {L"$$$.sp.cbitem.afterSave.checkIn", 16},
    {L"$$$.sp.cbitem.afterSave.checkInCheckOut", 24},
    {L"$$$.sp.cbitem.afterSave.keepCheckOut", 8},
    {L"$$$.sp.cbitem.afterSave.ask", 1},
};
inline constexpr Choice close_need_check_in_choices[] = {
    {L"$$$.sp.cbitem.closeNeedCheckIn.checkIn", 16},
    {L"$$$.sp.cbitem.closeNeedCheckIn.checkInCheckOut", 24},
    {L"$$$.sp.cbitem.closeNeedCheckIn.keepCheckOut", 8},
    {L"$$$.sp.cbitem.closeNeedCheckIn.ask", 1},
};
inline constexpr Choice close_no_need_check_in_choices[] = {
    {L"$$$.sp.cbitem.closeDoesNotNeedCheckIn.discardCheckOut", 0},
    {L"$$$.sp.cbitem.closeDoesNotNeedCheckIn.keepCheckOut", 8},
    {L"$$$.sp.cbitem.closeDoesNotNeedCheckIn.ask", 1},
};
inline constexpr Choice check_in_type_choices[] = {
    {L"$$$.sp.cbitem.defaultCheckInType.minor", 0},
    {L"$$$.sp.cbitem.defaultCheckInType.major", 1},
    {L"$$$.sp.cbitem.defaultCheckInType.overwrite", 2},
};
inline constexpr Choice log_level_choices[] = {
    {L"$$$.sp.cbitem.logLevel.none", 0},        {L"$$$.sp.cbitem.logLevel.error", 1},   {L"$$$.sp.cbitem.logLevel.warning", 2},
    {L"$$$.sp.cbitem.logLevel.information", 3}, {L"$$$.sp.cbitem.logLevel.verbose", 4},
};

/// Those of the page, in the order in which they are filled.
inline constexpr DropDown page_drop_downs[] = {
    {L"cb.whenOpenDocumentCheckoutNone", &Preferences::on_open_checked_out_none, 9, 6, open_choices},
    {L"cb.whenSaveConflict", &Preferences::on_save_conflict, 33, 0, save_conflict_choices},
    {L"cb.afterSave", &Preferences::on_after_save, 25, 0, after_save_choices},
    {L"cb.closeNeedCheckIn", &Preferences::on_close_checked_out_need_check_in, 25, 0, close_need_check_in_choices},
    {L"cb.closeDoesNotNeedCheckIn", &Preferences::on_close_checked_out_no_need_check_in, 9, 0, close_no_need_check_in_choices},
    {L"cb.defaultCheckInType", &Preferences::default_check_in_type, all_bits, 0, check_in_type_choices},
};

inline constexpr DropDown log_level_drop_down = {L"cb.logLevel", &Preferences::log_level, all_bits, 0, log_level_choices};

/// `field` with the bits of `mask` as in `value`.
constexpr std::uint32_t WithBits(std::uint32_t field, std::uint32_t mask, std::uint32_t value) { return (field & ~mask) | value; }

/// Adds the items. A control that isn't there is passed over, here and below.
void FillItems(KOV::IUIX_Dialog* dialog, const DropDown& drop_down);
/// Selects the item with the field's value; a value that no item has leaves the selection as it was.
void ShowChoice(KOV::IUIX_Dialog* dialog, const DropDown& drop_down, const Preferences& preferences);
/// Puts the selected item's value into the field; without a selection the field stays.
void TakeChoice(KOV::IUIX_Dialog* dialog, const DropDown& drop_down, Preferences& io_preferences);

} // namespace PreferencesUi
