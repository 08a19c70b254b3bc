#include <gtest/gtest.h>

#include "afs/close_rules.h"
#include "afs/open_rules.h"
#include "afs/save_rules.h"

namespace {

using State = SharePoint::File::CheckOutState;
constexpr State states[] = {State::none, State::me, State::other_user, State::unknown};

constexpr DWORD read = KOV::AFS_OpenFile_Read;
constexpr DWORD write = KOV::AFS_OpenFile_Write;
constexpr DWORD take = KOV::AFS_OpenFile_CheckOut;
constexpr DWORD ui = KOV::AFS_OpenFile_AllowUI;

/// All boxes wanted; what is done without them differs from field to field.
Preferences AskingPreferences() {
    Preferences preferences{};
    preferences.on_open_without_write_permissions = Preferences::Actions::show_message_box;
    preferences.on_open_checked_out_none = Preferences::Actions::show_message_box;
    preferences.on_open_checked_out_other = Preferences::Actions::show_message_box;
    return preferences;
}

TEST(OpenRules, DecideByRightsFlagsAndHolder) {
    using enum OpenOutcome;
    const struct {
        bool can_edit;
        DWORD flags;
        OpenOutcome by_state[4]; ///< In the order of `states`.
    } rows[] = {
        {false, read | write, {refuse_write, refuse_write, refuse_write, refuse_write}},
        {false, write | take | ui, {refuse_write, refuse_write, refuse_write, refuse_write}},
        {false, read | take, {refuse_check_out, warn_no_edit_rights, refuse_check_out, refuse_check_out}},
        {false, read | take | ui, {refuse_check_out, warn_no_edit_rights, refuse_check_out, refuse_check_out}},
        // The warning about missing rights doesn't wait for leave to ask.
        {false, read, {warn_no_edit_rights, warn_no_edit_rights, warn_no_edit_rights, warn_no_edit_rights}},
        {false, read | ui, {warn_no_edit_rights, warn_no_edit_rights, warn_no_edit_rights, warn_no_edit_rights}},
        {true, read | write, {check_out, open, refuse_other_user, check_out}},
        {true, read | take, {check_out, open, refuse_other_user, check_out}},
        {true, read | write | take | ui, {check_out, open, refuse_other_user, check_out}},
        {true, read, {open, open, open, open}},
        {true, read | ui, {ask, open, warn_other_user, ask}},
    };
    const Preferences preferences = AskingPreferences();
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(DecideOpen(row.can_edit, row.flags, states[i], preferences), row.by_state[i])
                << "can_edit " << row.can_edit << ", flags " << std::hex << row.flags << ", state " << i;
        }
    }
}

TEST(OpenRules, PreferencesTakeTheBoxesAway) {
    using enum OpenOutcome;
    using Actions = Preferences::Actions;
    const struct {
        const char* name;
        bool can_edit;
        State state;
        std::uint32_t Preferences::*field;
        std::uint32_t value;
        OpenOutcome outcome;
    } rows[] = {
        {"no rights, silent", false, State::none, &Preferences::on_open_without_write_permissions, 6, open},
        {"no rights, never a check-out", false, State::none, &Preferences::on_open_without_write_permissions, Actions::check_out,
         open},
        {"held by another, silent", true, State::other_user, &Preferences::on_open_checked_out_other, 6, open},
        {"free, silent", true, State::none, &Preferences::on_open_checked_out_none, 6, open},
        {"free, check out", true, State::none, &Preferences::on_open_checked_out_none, Actions::check_out, check_out},
        {"unknown, check out", true, State::unknown, &Preferences::on_open_checked_out_none, 8 | 4, check_out},
        {"free, asking wins", true, State::none, &Preferences::on_open_checked_out_none, 1 | 8, ask},
    };
    for (const auto& row : rows) {
        Preferences preferences = AskingPreferences();
        preferences.*row.field = row.value;
        EXPECT_EQ(DecideOpen(row.can_edit, read | ui, row.state, preferences), row.outcome) << row.name;
    }
}

TEST(SaveRules, RightsAreTestedForTheCheckOutFirst) {
    const struct {
        bool can_edit;
        DWORD flags;
        State held;
        SaveRights outcome;
    } rows[] = {
        {true, write | take, State::none, SaveRights::go_on},
        {false, read, State::none, SaveRights::go_on},
        {false, write, State::none, SaveRights::refuse_write},
        {false, write, State::me, SaveRights::refuse_write},
        {false, write | take, State::none, SaveRights::refuse_check_out},
        {false, write | take, State::me, SaveRights::refuse_write},
        {false, read | take, State::other_user, SaveRights::refuse_check_out},
        {false, read | take, State::me, SaveRights::go_on},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(DecideSaveRights(row.can_edit, row.flags, row.held), row.outcome) << "row " << &row - rows;
    }
}

TEST(SaveRules, NewerVersionsOnTheServerAreConflictsFromOneTickOn) {
    const struct {
        std::uint64_t local_time;
        std::uint64_t server_time;
        std::uint32_t preference;
        SaveConflict outcome;
    } rows[] = {
        {100, 100, 1, SaveConflict::none},   {101, 100, 0, SaveConflict::none},     {100, 101, 1, SaveConflict::ask},
        {100, 101, 0, SaveConflict::refuse}, {100, 101, 32, SaveConflict::none},    {100, 101, 33, SaveConflict::none},
        {100, 101, 8, SaveConflict::refuse}, {0, UINT64_MAX, 1, SaveConflict::ask}, {UINT64_MAX, 1, 1, SaveConflict::none},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(DecideSaveConflict(row.local_time, row.server_time, row.preference), row.outcome) << "row " << &row - rows;
    }
}

TEST(SaveRules, HolderDecides) {
    EXPECT_EQ(DecideSaveHolder(State::none), SaveHolder::check_out);
    EXPECT_EQ(DecideSaveHolder(State::me), SaveHolder::go_on);
    EXPECT_EQ(DecideSaveHolder(State::unknown), SaveHolder::go_on);
    EXPECT_EQ(DecideSaveHolder(State::other_user), SaveHolder::refuse);
}

TEST(CloseRules, DecideByChangesAndPreference) {
    const struct {
        bool need_check_in;
        std::uint32_t preference;
        CloseStep step;
    } rows[] = {
        {true, 1, CloseStep::check_in_with_ui},
        {true, 1 | 16, CloseStep::check_in_with_ui},
        {true, 16, CloseStep::check_in},
        {true, 24, CloseStep::check_in},
        {true, 8, CloseStep::keep},
        {true, 0, CloseStep::keep},
        {false, 1, CloseStep::ask_to_discard},
        {false, 1 | 8, CloseStep::ask_to_discard},
        {false, 0, CloseStep::discard},
        {false, 8, CloseStep::keep},
        {false, 16, CloseStep::discard},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(DecideClose(row.need_check_in, row.preference), row.step) << row.need_check_in << ", " << row.preference;
    }
}

} // namespace
