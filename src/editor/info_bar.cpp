// What the bar above a document's page says: its state on the server, and the commands that lead out of it.

#include <algorithm>
#include <array>
#include <optional>

#include "editor/document_objects.h"
#include "editor/events_handler.h"
#include "editor/ui/format_string.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/instance.h"

namespace {

using State = SharePoint::File::CheckOutState;

struct Record {
    LPCWSTR text_key;
    /// In their order; null after the last.
    std::array<LPCWSTR, 2> commands;
};

constexpr Record checked_out_to_me = {L"sp.ibar.checkedOutToMe", {L"sp.cmd.checkIn", L"sp.cmd.discardCheckOut"}};
constexpr Record other_user_editing_on = {L"sp.ibar.checkedOutToOtherEditing", {}};
constexpr Record other_user_editing_off = {L"sp.ibar.checkedOutToOtherNoEditing", {L"sp.cmd.enableEditing"}};
constexpr Record not_checked_out_editing_on = {L"sp.ibar.notCheckedOutEditing", {L"sp.cmd.checkOut"}};
constexpr Record not_checked_out_editing_off = {L"sp.ibar.notCheckedOutNoEditing", {L"sp.cmd.checkOut", L"sp.cmd.enableEditing"}};
constexpr Record no_rights_editing_on = {L"sp.ibar.cannotEditEditing", {}};
constexpr Record no_rights_editing_off = {L"sp.ibar.cannotEditNoEditing", {L"sp.cmd.enableEditing"}};

/// The first row that fits counts; nothing stands for any value. No rights win over every holder.
struct Row {
    bool can_edit;
    std::optional<State> state;
    std::optional<bool> is_editing_on;
    const Record* record;
    LPCWSTR log_text;
};

constexpr Row rows[] = {
    {false, std::nullopt, true, &no_rights_editing_on, L"file has no write permissions, editing UI enabled"},
    {false, std::nullopt, false, &no_rights_editing_off, L"file has no write permissions, editing UI disabled"},
    {true, State::none, true, &not_checked_out_editing_on, L"file has write permissions, not checked out, editing UI enabled"},
    {true, State::none, false, &not_checked_out_editing_off, L"file has write permissions, not checked out, editing UI disabled"},
    {true, State::me, std::nullopt, &checked_out_to_me, L"file has write permissions, checked out to me"},
    {true, State::other_user, true, &other_user_editing_on,
     L"file has write permissions, checked out to other user, editing UI enabled"},
    {true, State::other_user, false, &other_user_editing_off,
     L"file has write permissions, checked out to other user, editing UI disabled"},
};

/// Null for a state that nothing is known of.
const Row* FindRow(bool can_edit, State state, bool is_editing_on) {
    const auto* const found = std::find_if(std::begin(rows), std::end(rows), [&](const Row& row) {
        return row.can_edit == can_edit && row.state.value_or(state) == state &&
               row.is_editing_on.value_or(is_editing_on) == is_editing_on;
    });
    return found != std::end(rows) ? found : nullptr;
}

/// The bar is shown anew when this ends.
class BarUpdate {
public:
    explicit BarUpdate(KOV::IKOV_InfoBar* info_bar) : m_info_bar(info_bar) { m_info_bar->BeginUpdate(); }
    ~BarUpdate() { m_info_bar->EndUpdate(); }
    BarUpdate(const BarUpdate&) = delete;
    BarUpdate& operator=(const BarUpdate&) = delete;

private:
    KOV::IKOV_InfoBar* const m_info_bar;
};

HRESULT FillSpan(KOV::IKOV_Inst* kov, KOV::IKOV_InfoBar* info_bar, DWORD span_id, const Record& record,
                 const std::wstring& user) {
    CHECK_OR_RETURN(info_bar->ClearSpan(span_id));
    CHECK_OR_RETURN(info_bar->SetSpanText(span_id, Ui::FormatString(kov, record.text_key, user).c_str()));
    for (const LPCWSTR name : record.commands) {
        if (name != nullptr) {
            DWORD id = 0;
            CHECK_OR_RETURN(kov->Str2ID(name, VARIANT_TRUE, &id));
            CHECK_OR_RETURN(info_bar->AddSpanCommand(span_id, id, -1, 0, 0));
        }
    }
    return S_OK;
}

} // namespace

HRESULT EventsHandler::UpdateInfoBar(KOV::IKOV_Document* i_document) {
    TRACE_ENTER();
    if (i_document == nullptr) {
        TRACE_RETURN(S_FALSE);
    }
    ComPtr<KOV::IKOV_InfoBar> info_bar;
    CHECK_OR_RETURN(i_document->get_InfoBar(&info_bar));
    if (info_bar.IsNull()) {
        TRACE_FORMAT(LogLevel::information, L"infobar is null");
        TRACE_RETURN(S_OK);
    }
    const BarUpdate update(info_bar);
    DocumentObjects document_objects;
    CHECK_OR_RETURN(GetDocumentObjects(m_plugin, i_document, document_objects));
    const DWORD span_id = m_plugin->m_info_bar_id;
    if (document_objects.file.IsNull()) {
        CHECK_OR_RETURN(info_bar->RemoveSpan(span_id));
        TRACE_FORMAT(LogLevel::information, L"not SharePoint document");
        TRACE_RETURN(S_OK);
    }
    VARIANT_BOOL has_span = VARIANT_FALSE;
    CHECK_OR_RETURN(info_bar->HasSpan(span_id, &has_span));
    if (has_span == VARIANT_FALSE) {
        TRACE_FORMAT(LogLevel::information, L"adding span");
        CHECK_OR_RETURN(info_bar->AddSpan(span_id, 0));
    }
    bool is_document_is_edit_state = true;
    CHECK_OR_RETURN(GetDocumentEditState(document_objects.document, is_document_is_edit_state));
    State state = State::unknown;
    std::wstring user;
    document_objects.file->GetCheckedOutState(&state, &user);
    const Row* const row = FindRow(document_objects.file->CanEdit(true), state, is_document_is_edit_state);
    if (row == nullptr) {
        TRACE_FORMAT(LogLevel::information, L"infobar data text is empty, removing span");
        CHECK_OR_RETURN(info_bar->RemoveSpan(span_id));
        TRACE_RETURN(S_OK);
    }
    TRACE_TEXT(LogLevel::information, row->log_text);
    CHECK_OR_RETURN(FillSpan(m_plugin->m_kov_inst, info_bar, span_id, *row->record, user));
    TRACE_RETURN(S_OK);
}
