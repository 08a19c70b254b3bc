#include "preferences/same_preferences.h"

#include <algorithm>

#include "platform/text.h"

namespace {

constexpr std::uint32_t Preferences::*number_fields[] = {
    &Preferences::on_open_without_write_permissions,
    &Preferences::on_open_checked_out_none,
    &Preferences::on_open_checked_out_me,
    &Preferences::on_open_checked_out_other,
    &Preferences::on_after_save,
    &Preferences::on_save_conflict,
    &Preferences::on_close_checked_out_need_check_in,
    &Preferences::on_close_checked_out_no_need_check_in,
    &Preferences::default_check_in_type,
    &Preferences::log_level,
    &Preferences::days_to_store_logs,
};

bool IsSamePattern(const std::wstring& left, const std::wstring& right) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, left.c_str(), static_cast<int>(left.size()), right.c_str(),
                          static_cast<int>(right.size())) == CSTR_EQUAL;
}

} // namespace

namespace PreferencesUi {

bool HasSameValues(const Preferences& left, const Preferences& right) {
    return std::all_of(std::begin(number_fields), std::end(number_fields),
                       [&](std::uint32_t Preferences::*field) { return left.*field == right.*field; }) &&
           left.default_check_in_message == right.default_check_in_message && left.hide_paths == right.hide_paths &&
           std::equal(left.hidden_paths.begin(), left.hidden_paths.end(), right.hidden_paths.begin(), right.hidden_paths.end(),
                      IsSamePattern);
}

} // namespace PreferencesUi
