#include "afs/open_rules.h"

#include "frame/diagnostics/cancel.h"
#include "host/file.h"

namespace {

using State = SharePoint::File::CheckOutState;

/// What the caller wants of the file, as bits of a row.
namespace Wants {
constexpr unsigned write = 1;
/// A check-out, and no writing.
constexpr unsigned check_out = 2;
/// Reading, and questions are welcome.
constexpr unsigned read_with_ui = 4;
constexpr unsigned read_silently = 8;
constexpr unsigned read = read_with_ui | read_silently;
constexpr unsigned any = write | check_out | read;
} // namespace Wants

/// Holders, as bits of a row.
namespace Held {
constexpr unsigned Bit(State state) { return 1u << static_cast<unsigned>(state); }
constexpr unsigned me = Bit(State::me);
constexpr unsigned other_user = Bit(State::other_user);
constexpr unsigned none_or_unknown = Bit(State::none) | Bit(State::unknown);
constexpr unsigned not_me = none_or_unknown | other_user;
constexpr unsigned any = not_me | me;
} // namespace Held

struct Row {
    bool can_edit;
    unsigned wants;
    unsigned held;
    OpenOutcome outcome;
    /// The preference that must want a box for this outcome; null when nobody is asked.
    std::uint32_t Preferences::*preference = nullptr;
};

constexpr Row rows[] = {
    {false, Wants::write, Held::any, OpenOutcome::refuse_write},
    {false, Wants::check_out, Held::not_me, OpenOutcome::refuse_check_out},
    {false, Wants::check_out, Held::me, OpenOutcome::warn_no_edit_rights, &Preferences::on_open_without_write_permissions},
    {false, Wants::read, Held::any, OpenOutcome::warn_no_edit_rights, &Preferences::on_open_without_write_permissions},
    {true, Wants::any, Held::me, OpenOutcome::open},
    {true, Wants::write | Wants::check_out, Held::other_user, OpenOutcome::refuse_other_user},
    {true, Wants::write | Wants::check_out, Held::none_or_unknown, OpenOutcome::check_out},
    {true, Wants::read_silently, Held::not_me, OpenOutcome::open},
    {true, Wants::read_with_ui, Held::other_user, OpenOutcome::warn_other_user, &Preferences::on_open_checked_out_other},
    {true, Wants::read_with_ui, Held::none_or_unknown, OpenOutcome::ask, &Preferences::on_open_checked_out_none},
};

constexpr const Row* FindRow(bool can_edit, unsigned wants, unsigned held) {
    for (const Row& row : rows) {
        if (row.can_edit == can_edit && (row.wants & wants) != 0 && (row.held & held) != 0) {
            return &row;
        }
    }
    return nullptr;
}

constexpr bool EveryCaseHasARow() {
    for (unsigned wants = 1; wants <= Wants::read_silently; wants <<= 1) {
        for (unsigned held = 1; held <= Held::Bit(State::unknown); held <<= 1) {
            if (FindRow(false, wants, held) == nullptr || FindRow(true, wants, held) == nullptr) {
                return false;
            }
        }
    }
    return true;
}
static_assert(EveryCaseHasARow());

constexpr unsigned WantsOf(DWORD open_flags) {
    if (Bits::Has(open_flags, KOV::AFS_OpenFile_Write)) {
        return Wants::write;
    }
    if (Bits::Has(open_flags, KOV::AFS_OpenFile_CheckOut)) {
        return Wants::check_out;
    }
    return Bits::Has(open_flags, KOV::AFS_OpenFile_AllowUI) ? Wants::read_with_ui : Wants::read_silently;
}

/// What an outcome with a box comes to by the preference.
constexpr OpenOutcome ByPreference(OpenOutcome outcome, std::uint32_t preference) {
    if (Bits::Has(preference, Preferences::Actions::show_message_box)) {
        return outcome;
    }
    const bool check_out = outcome == OpenOutcome::ask && Bits::Has(preference, Preferences::Actions::check_out);
    return check_out ? OpenOutcome::check_out : OpenOutcome::open;
}

} // namespace

OpenOutcome DecideOpen(bool can_edit, DWORD open_flags, State state, const Preferences& preferences) {
    const Row& row = *FindRow(can_edit, WantsOf(open_flags), Held::Bit(state));
    return row.preference == nullptr ? row.outcome : ByPreference(row.outcome, preferences.*row.preference);
}
