#include "afs/file_detail.h"
#include "afs/format_file_time.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"
#include "host/tools/thread_safe_call.h"

namespace {

/// The question before a check-out of a document that the server has newer.
struct OutdatedBox {
    const wchar_t* text;
    const wchar_t* reload_button;
    const wchar_t* cancel_button;
    DWORD flags;
};

constexpr OutdatedBox outdated_box = {L"sp.msg.outdatedFileOnCheckout.question", L"sp.btn.reloadAndCheckOut",
                                      L"sp.btn.cancelCheckOut", KOV::UIX_MsgBox_IconQuestion};
constexpr OutdatedBox outdated_modified_box = {L"sp.msg.outdatedModifiedFileOnCheckout.question",
                                               L"sp.btn.reloadLostYourChangesAndCheckOut", L"sp.btn.cancelOutdatedCheckOut",
                                               KOV::UIX_MsgBox_IconError};

/// Only the check-in dialog has the bits besides the icon; they are the host's.
constexpr DWORD check_in_box_flags = 0xC0200;
/// By the buttons of the check-in dialog.
constexpr std::uint32_t check_in_actions[] = {
    Preferences::Actions::check_in,
    Preferences::Actions::check_in | Preferences::Actions::check_out,
    Preferences::Actions::check_out,
};
constexpr int check_in_box_keep = 1;
constexpr int check_in_box_cancel = 2;
/// What the host takes for a reload that drops local changes.
constexpr DWORD reload_mode = 2;

constexpr SharePoint::CheckInType ToCheckInType(std::uint32_t type) { return static_cast<SharePoint::CheckInType>(type); }

} // namespace

void File::CheckOut(bool check_outdated) {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    CHECK_OR_THROW((CanEdit(false)) != 0,
                   HResultException(FileResult::no_edit_rights,
                                    Ui::FormatString(m_kov_inst, L"sp.msg.errorOnCheckOutNoEditPermissions", FileName())));
    if (check_outdated && !AskOutdatedBeforeCheckOut()) {
        TRACE_LEAVE();
        return;
    }
    TRACE_FORMAT(LogLevel::information, L"checking out from cached state={}", static_cast<int>(m_check_out_state.load()));
    CHECK_OR_THROW(m_name->GetObject()->AsFile()->CheckOut(),
                   HResultException(E_FAIL, Ui::FormatString(m_kov_inst, L"sp.msg.checkOutFailed", FileName())));
    SetCheckOut(SharePoint::File::CheckOutState::me);
    m_plugin->OnFileStateChanged(this);
    TRACE_LEAVE();
}

bool File::AskOutdatedBeforeCheckOut() {
    const std::uint64_t server_time = ServerTime();
    if (server_time <= m_modified_time) {
        return true;
    }
    ComPtr<KOV::IKOV_Document> document;
    m_kov_inst->FindDocumentOfFile(this, &document);
    LONG modified_state = 0;
    const bool is_modified = !document.IsNull() && SUCCEEDED(document->GetModifiedState(&modified_state)) && modified_state != 0;
    const OutdatedBox& box = is_modified ? outdated_modified_box : outdated_box;
    const int answer = Ui::ShowMessageBox(
        m_kov_inst, box.flags,
        Ui::FormatString(m_kov_inst, box.text, m_name->GetObject()->m_information.m_modified_by, FormatFileTime(server_time)),
        {box.reload_button, box.cancel_button});
    if (answer != 0) {
        return false;
    }
    ThreadSafeCall::Call(m_kov_inst, [kov_inst = m_kov_inst, document] {
        return kov_inst->ReloadDocument(document, nullptr, reload_mode, nullptr);
    });
    return true;
}

void File::DiscardCheckOut() {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    TRACE_FORMAT(LogLevel::information, L"discarding check out from cached state={}", static_cast<int>(m_check_out_state.load()));
    CHECK_OR_THROW(m_name->GetObject()->AsFile()->DiscardCheckOut(),
                   HResultException(E_FAIL, Ui::FormatString(m_kov_inst, L"sp.msg.discardCheckOutFailed", FileName())));
    SetCheckOut(SharePoint::File::CheckOutState::none);
    m_plugin->OnFileStateChanged(this);
    TRACE_LEAVE();
}

void File::CheckIn(const wchar_t* i_comment, SharePoint::CheckInType i_type, bool keep_check_out) {
    TRACE_ENTER();
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    TRACE_FORMAT(LogLevel::information, L"calling server check in");
    CHECK_OR_THROW(m_name->GetObject()->AsFile()->CheckIn(i_comment, i_type),
                   HResultException(E_FAIL, Ui::FormatString(m_kov_inst, L"sp.msg.checkInFailed", FileName())));
    m_need_checkin = false;
    SetCheckOut(SharePoint::File::CheckOutState::none);
    try {
        // The check-in makes a new time on the server, which must not count as somebody else's change.
        m_modified_time = ServerTime();
        if (keep_check_out) {
            TRACE_FORMAT(LogLevel::information, L"check out after check in");
            CheckOut(false);
        }
    } catch (...) {
        // The file is nobody's by now, whatever failed behind that.
        m_plugin->OnFileStateChanged(this);
        throw;
    }
    if (!keep_check_out) {
        m_plugin->OnFileStateChanged(this);
    }
    TRACE_LEAVE();
}

std::uint32_t File::CheckInWithUi(bool on_close, bool* out_dont_show_again) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"asking user about check in");
    CHECK_OR_THROW(m_name->GetObject() != nullptr, HResultException(FileResult::missing));
    const Preferences preferences = m_plugin->m_preferences_manager.Snapshot();
    int type = preferences.default_check_in_type > 1 ? 2 : static_cast<int>(preferences.default_check_in_type);
    std::wstring comment = preferences.default_check_in_message;
    const wchar_t* const text_key = on_close ? L"sp.msg.askForCheckInOnClose" : L"sp.msg.checkInDialogMessage";
    const int answer = Ui::ShowMessageBox(
        m_kov_inst, check_in_box_flags, Ui::FormatString(m_kov_inst, text_key, FileName()),
        {L"sp.btn.checkIn", L"sp.btn.checkInAndKeepCkeckedOut", L"sp.btn.keepCkeckedOut"}, 0,
        out_dont_show_again != nullptr ? L"sp.check.dontShowThisMessageAgain" : nullptr, out_dont_show_again,
        {L"sp.checkInDialog.typeRaio.Minor", L"sp.checkInDialog.typeRaio.Major", L"sp.checkInDialog.typeRaio.Overwrite"}, &type,
        L"sp.lb.checkInComment", &comment);
    if (answer != check_in_box_cancel) {
        const auto chosen_type = static_cast<std::uint32_t>(type);
        m_plugin->m_preferences_manager.Change([&](Preferences& io_preferences) {
            io_preferences.default_check_in_type = chosen_type;
            io_preferences.default_check_in_message = comment;
        });
        m_plugin->m_preferences_manager.Save();
        CheckIn(comment.c_str(), ToCheckInType(chosen_type), answer == check_in_box_keep);
    }
    const std::uint32_t action = check_in_actions[answer];
    TRACE_FORMAT(LogLevel::information, L"{}", action);
    TRACE_LEAVE(L"{}", action);
    return action;
}

void File::CheckInByPreferences(bool keep_check_out) {
    const Preferences preferences = m_plugin->m_preferences_manager.Snapshot();
    CheckIn(preferences.default_check_in_message.c_str(), ToCheckInType(preferences.default_check_in_type), keep_check_out);
}

void File::PerformAfterSave() {
    TRACE_ENTER();
    if (m_checking_in) {
        TRACE_LEAVE();
        return;
    }
    const std::uint32_t on_after_save = m_plugin->m_preferences_manager.Snapshot().on_after_save;
    if (Bits::Has(on_after_save, Preferences::Actions::show_message_box)) {
        bool dont_show_again = false;
        const std::uint32_t action = CheckInWithUi(false, &dont_show_again);
        if (dont_show_again) {
            KeepChoice(&Preferences::on_after_save, action);
        }
    } else if (Bits::Has(on_after_save, Preferences::Actions::check_in)) {
        CheckInByPreferences(Bits::Has(on_after_save, Preferences::Actions::check_out));
    }
    TRACE_LEAVE();
}

void File::KeepChoice(std::uint32_t Preferences::*preference, std::uint32_t action) {
    m_plugin->m_preferences_manager.Change([&](Preferences& io_preferences) {
        std::uint32_t& field = io_preferences.*preference;
        field = (field & ~std::uint32_t{Preferences::Actions::show_message_box}) | action;
    });
    m_plugin->m_preferences_manager.Save();
}
