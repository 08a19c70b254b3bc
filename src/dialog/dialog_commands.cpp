// The commands of the bar above the list: make a folder, delete, go up.

#include <algorithm>

#include "dialog/dialog.h"
#include "dialog/folder_items_list.h"
#include "dialog/folders_navigator.h"
#include "editor/ui/format_string.h"
#include "editor/ui/message_box.h"
#include "frame/diagnostics/diagnostics.h"
#include "frame/values/kov_string.h"
#include "host/message_box.h"
#include "host/progress.h"
#include "platform/bstr.h"
#include "platform/text.h"
#include "platform/windows_messages.h"

namespace KOV {

namespace {

/// One message in its three forms: of a folder, a file, and an item of which nothing can be read.
struct ItemTexts {
    LPCWSTR folder;
    LPCWSTR file;
    LPCWSTR unknown;
};

constexpr ItemTexts question_texts = {L"sp.delete.question.folder", L"sp.delete.question.file", L"sp.delete.question.unknown"};
constexpr ItemTexts progress_texts = {L"sp.delete.progress.text.folder", L"sp.delete.progress.text.file",
                                      L"sp.delete.progress.text.unknown"};
constexpr ItemTexts error_texts = {L"sp.delete.error.folder", L"sp.delete.error.file", L"sp.delete.error.unknown"};

std::wstring TextOfItem(IKOV_Inst* kov, const FolderItem& item, const ItemTexts& texts) {
    DWORD attributes = 0;
    Bstr title;
    if (FAILED(item.info->get_Attributes(&attributes)) || FAILED(item.info->get_Title(&title))) {
        return Ui::FormatString(kov, texts.unknown);
    }
    return Ui::FormatString(kov, Bits::Has(attributes, AFS_FileAttribute_Folder) ? texts.folder : texts.file, title);
}

/// `message`, and below it the server's own words, or the system's where it said none.
std::wstring WithReason(const std::wstring& message, IString& error_details, HRESULT failure) {
    Bstr details;
    (void)error_details.get_Value(&details);
    return message + L"\n\n" + Ui::LiteralText(details.Length() != 0 ? details.Text() : GetHResultString(failure));
}

bool IsCanceledByUser(IKOV_ProgressMon* progress) {
    VARIANT_BOOL is_canceled = VARIANT_FALSE;
    return progress != nullptr && SUCCEEDED(progress->get_Canceled(&is_canceled)) && is_canceled != VARIANT_FALSE;
}

bool SameName(const std::wstring& a, const Bstr& b) {
    return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, a.c_str(), static_cast<int>(a.size()), b.View().data(),
                          static_cast<int>(b.Length())) == CSTR_EQUAL;
}

} // namespace

std::vector<Ui::CommandParameter> Dialog::MakeCommandParameters() {
    return {
        {.id = L"sp.cmd.createFolder",
         .title = L"$$$.sp.btn.addFolder.text",
         .icon_theme = L"ico.folder.add",
         .on_execute = [this] { (void)CreateFolder(); },
         .on_state = [this] { return m_can_create_folder; }},
        {.id = L"sp.cmd.delete",
         .title = L"$$$.sp.btn.delete.text",
         .icon_theme = L"ico.delete",
         .on_execute = [this] { (void)Delete(); },
         .on_state = [this] { return m_can_delete; }},
        {.id = L"sp.cmd.folder.up",
         .title = L"$$$.sp.btn.folder.up.text",
         .icon_theme = L"ico.collection.moveUp",
         .on_execute = [this] { (void)NavigateUp(); },
         .on_state = [this] { return m_can_navigate_up; }},
    };
}

HRESULT Dialog::CreateCommandBar() {
    TRACE_ENTER();
    ComPtr<IUIX_Obj> list_ui_object;
    CHECK_OR_RETURN(SUCCEEDED(m_dlg->GetItem(L"lst.files", 1, &list_ui_object)), E_FAIL);
    CHECK_OR_RETURN(list_ui_object != nullptr, E_FAIL);
    CHECK_OR_RETURN(Ui::CreateCommandBar(m_kov_instance, list_ui_object, m_command_parameters, &m_command_bar));
    TRACE_RETURN(S_OK);
}

void Dialog::UpdateCommandBar() { (void)Ui::UpdateCommands(m_kov_instance, m_command_parameters); }

void Dialog::DeleteCommandBar() {
    (void)Ui::DeleteCommands(m_kov_instance, m_command_parameters);
    m_command_bar.Release();
}

// The state of a command is asked for at the next turn of the loop: a click may come before that.
HRESULT Dialog::CreateFolder() {
    TRACE_ENTER();
    if (!m_can_create_folder) {
        TRACE_FORMAT(LogLevel::warning, L"Called CreateFolder when creation should be disabled");
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(m_navigator != nullptr, E_FAIL);
    const std::shared_ptr<const FolderContents> contents = m_navigator->GetContents();
    std::wstring name = L"New folder";
    if (!AskFolderName(contents->items, name)) {
        TRACE_FORMAT(LogLevel::information, L"Creation is not confirmed by user");
        TRACE_RETURN(E_CANCELED);
    }
    CHECK_OR_RETURN(m_pObj != nullptr, E_FAIL);
    StartCommand([self = ComPtr<Dialog>(this), parent = contents->folder, name](CommandOutcome& outcome) {
        (void)self->MakeFolder(parent, name, outcome);
    });
    TRACE_RETURN(S_OK);
}

void Dialog::StartCommand(std::function<void(CommandOutcome&)> command) {
    const auto outcome = std::make_shared<CommandOutcome>();
    (void)AsyncStart([command = std::move(command), outcome] { command(*outcome); }, L"",
                     {[self = ComPtr<Dialog>(this), outcome] { self->OnCommandComplete(*outcome); }, L""});
}

/// Asks until the name will do; false when the user gave up.
bool Dialog::AskFolderName(const std::vector<FolderItem>& items, std::wstring& io_name) const {
    constexpr int cancel = 1;
    std::wstring message;
    do {
        const DWORD flags = UIX_MsgBox_EditTextRequired | (message.empty() ? 0 : UIX_MsgBox_IconError);
        if (Ui::ShowMessageBox(m_kov_instance, flags, message, {L"sp.addFolder.question.button.create", L"btn.cancel"}, 0,
                               nullptr, nullptr, {}, nullptr, L"sp.addFolder.question.edit.title", &io_name) == cancel) {
            return false;
        }
        message = FolderNameError(io_name, items);
    } while (!message.empty());
    return true;
}

/// In words why the name won't do; empty when it will.
std::wstring Dialog::FolderNameError(const std::wstring& name, const std::vector<FolderItem>& items) const {
    if (name.empty()) {
        return Ui::FormatString(m_kov_instance, L"sp.addFolder.question.error.emptyFolderName");
    }
    if (HasForbiddenCharacter(name)) {
        return Ui::FormatString(m_kov_instance, L"sp.addFolder.question.error.invalidFolderName", name);
    }
    const bool is_taken = std::any_of(items.begin(), items.end(), [&](const FolderItem& item) {
        Bstr title;
        return SUCCEEDED(item.info->get_Title(&title)) && SameName(name, title);
    });
    return is_taken ? Ui::FormatString(m_kov_instance, L"sp.addFolder.question.error.alreadyExists", name) : std::wstring();
}

HRESULT Dialog::MakeFolder(IAFS_Name* parent, const std::wstring& name, CommandOutcome& outcome) const {
    TRACE_ENTER();
    ComPtr<IKOV_ProgressMon>& progress = outcome.progress;
    CHECK_OR_RETURN(m_kov_instance->get_ProgressMon(&progress));
    if (!progress.IsNull()) {
        (void)progress->put_Title(Ui::FormatString(m_kov_instance, L"sp.addFolder.progress.title").c_str());
        (void)progress->put_Text(Ui::FormatString(m_kov_instance, L"sp.addFolder.progress.text", name).c_str());
        (void)progress->SetStyle(UIX_ProgressStyle_Endless);
        CHECK_OR_RETURN(!IsCanceledByUser(progress), E_CANCELED);
        (void)progress->Start();
    }
    const ComPtr<Utility::KOVString> error_details = MakeObject<Utility::KOVString>();
    CHECK_OR_RETURN(error_details != nullptr, E_OUTOFMEMORY);
    ComPtr<IAFS_Name> new_name;
    HRESULT result = m_file_system->StringToName(name.c_str(), 0, parent, &new_name);
    if (SUCCEEDED(result)) {
        result = m_file_system->CreateFolder(new_name, 0, error_details, nullptr);
    }
    outcome.is_server_changed = SUCCEEDED(result);
    if (FAILED(result) && result != E_CANCELED) {
        ShowError(
            WithReason(Ui::FormatString(m_kov_instance, L"sp.addFolder.error.message", name), *error_details.Get(), result));
    }
    TRACE_LEAVE(L"{}", result);
    return result;
}

HRESULT Dialog::Delete() {
    TRACE_ENTER();
    constexpr int cancel = 1;
    if (!m_can_delete) {
        TRACE_FORMAT(LogLevel::warning, L"Called Delete when deletion should be disabled");
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(m_navigator != nullptr, E_FAIL);
    CHECK_OR_RETURN(m_list != nullptr, E_FAIL);
    std::vector<FolderItem> items;
    CHECK_OR_RETURN(m_list->GetSelection(items));
    const auto row_up = std::find_if(items.begin(), items.end(), [parent = m_navigator->GetParent()](const FolderItem& item) {
        return item.name.Get() == parent.Get();
    });
    if (row_up != items.end()) {
        items.erase(row_up);
    }
    if (items.empty()) {
        TRACE_FORMAT(LogLevel::warning, L"Delete is called for empty selection");
        TRACE_RETURN(S_OK);
    }
    if (GetKeyState(VK_SHIFT) >= 0) {
        const std::wstring question = items.size() == 1 ? TextOfItem(m_kov_instance, items.front(), question_texts)
                                                        : Ui::FormatString(m_kov_instance, L"sp.delete.question.multi",
                                                                           static_cast<std::uint32_t>(items.size()));
        if (Ui::ShowMessageBox(m_kov_instance, UIX_MsgBox_IconQuestion, question, {L"sp.btn.delete.text", L"btn.cancel"},
                               cancel) == cancel) {
            TRACE_FORMAT(LogLevel::information, L"Deletion is not confirmed by user");
            TRACE_RETURN(S_OK);
        }
    }
    CHECK_OR_RETURN(m_pObj != nullptr, E_FAIL);
    StartCommand([self = ComPtr<Dialog>(this), items](CommandOutcome& outcome) { (void)self->DeleteItems(items, outcome); });
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::DeleteItems(const std::vector<FolderItem>& items, CommandOutcome& outcome) const {
    TRACE_ENTER();
    const auto count = static_cast<std::uint32_t>(items.size());
    ComPtr<IKOV_ProgressMon>& progress = outcome.progress;
    CHECK_OR_RETURN(m_kov_instance->get_ProgressMon(&progress));
    if (!progress.IsNull()) {
        (void)progress->put_Title(Ui::FormatString(m_kov_instance, L"sp.delete.progress.title").c_str());
        (void)(count == 1 ? progress->SetStyle(UIX_ProgressStyle_Endless) : progress->put_Total(count - 1));
        CHECK_OR_RETURN(progress->Start());
    }
    for (std::uint32_t i = 0; i < count && !IsCanceledByUser(progress); ++i) {
        if (!progress.IsNull()) {
            (void)progress->put_Pos(i);
            (void)progress->put_Text(TextOfItem(m_kov_instance, items[i], progress_texts).c_str());
            (void)progress->put_Status(Ui::FormatString(m_kov_instance, L"sp.delete.progress.status", i, count).c_str());
        }
        const HRESULT result = DeleteItem(items[i]);
        if (result == E_CANCELED) {
            break;
        }
        outcome.is_server_changed = outcome.is_server_changed || SUCCEEDED(result);
    }
    TRACE_RETURN(S_OK);
}

HRESULT Dialog::DeleteItem(const FolderItem& item) const {
    const ComPtr<Utility::KOVString> error_details = MakeObject<Utility::KOVString>();
    CHECK_OR_RETURN(error_details != nullptr, E_OUTOFMEMORY);
    const HRESULT result = m_file_system->Delete(item.name, error_details, nullptr);
    if (FAILED(result) && result != E_CANCELED) {
        ShowError(WithReason(TextOfItem(m_kov_instance, item, error_texts), *error_details.Get(), result));
    }
    return result;
}

void Dialog::OnCommandComplete(const CommandOutcome& outcome) {
    if (!outcome.progress.IsNull()) {
        (void)outcome.progress->Stop();
    }
    if (outcome.is_server_changed) {
        (void)Refresh();
    }
}

HRESULT Dialog::NavigateUp() {
    TRACE_ENTER();
    if (!m_can_navigate_up) {
        TRACE_FORMAT(LogLevel::warning, L"Called NavigateUp when navigation to parent should be disabled");
        TRACE_RETURN(S_FALSE);
    }
    CHECK_OR_RETURN(m_navigator != nullptr, E_FAIL);
    const HRESULT result = SetFolder(m_navigator->GetParent(), true);
    if (SUCCEEDED(result)) {
        TRACE_FORMAT(LogLevel::information, L"Navigated up");
    } else {
        TRACE_FORMAT(LogLevel::error, L"Failed to navigate up, result={}", result);
    }
    return result;
}

} // namespace KOV
