#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "dialog/dialog_worker.h"
#include "dialog/folder_item.h"
#include "dialog/front/dialog_parameters.h"
#include "dialog/typed_names.h"
#include "editor/ui/commands.h"
#include "host/instance.h"
#include "host/tools/window_bases.h"
#include "settings/preferences.h"

class FilesExtensionFilter;
class FolderItemsList;
class FoldersNavigator;
class Leftovers;
struct FolderContents;

namespace Ui {
class FilesIconProvider;
}

namespace KOV {

/// What a window ends with.
constexpr LONGLONG IDOK = 1;
constexpr LONGLONG IDCANCEL = 2;

/// One showing of the Open or Save dialog. Main thread, but for the functions that say that they run on the worker.
///
/// It is idle, or it navigates (from `ClearUi` to `FillUi`, with all but Cancel disabled), or a command changes the server, or it
/// was closed in the middle of that and ends when the worker does. A server is asked on the worker alone.
class Dialog final : public uiStdObjImplT<Dialog, IUIX_ObjImpl> {
public:
    /// Throws `HResultException` when the host has no user interface. What is given as a pointer outlives the object;
    /// `parameters` gets the chosen filter.
    Dialog(IKOV_Inst* kov_instance, IAFS_FileSys* file_system, Ui::FilesIconProvider* icons_provider, Leftovers* leftovers,
           Ui::DialogParameters* parameters, IAFS_Name* default_folder, const Preferences* preferences);

    /// Blocks until the dialog has ended: `S_OK` when names were chosen, `E_CANCELED` when not, or the failure.
    HRESULT DoModal(bool is_open_dialog, HWND parent_window);
    /// What was chosen, once the dialog has ended.
    const ComPtr<IAFS_NamesCollection>& GetFilesToOpen() const noexcept { return m_files_to_open; }

    HRESULT OnEvent(UiEvent* io_event) override;

private:
    ~Dialog() override;

    // The window (dialog.cpp).
    void OnObjectGone() override;
    HRESULT OnShowModal();
    void ShowTexts();
    HRESULT MakeFilter();
    HRESULT MakeWaitProgress();
    HRESULT MakeList();
    HRESULT OnPreEndModal(UiEvent& io_event);
    HRESULT OnEndModal();
    void ReleaseParts();
    void ClearUi();
    HRESULT FillUi();
    void EnableItems(std::initializer_list<LPCWSTR> ids, bool is_enabled);
    void UpdateSettingsButton();
    HRESULT OnSettingsClicked();
    LONG SelectedFilter() const;
    std::wstring TextOf(LPCWSTR id) const;
    template <class Interface>
    HRESULT GetControl(LPCWSTR id, ComPtr<IUIX_Obj>& object, Interface** out_control) const;

    // What a person does with the controls (dialog_events.cpp).
    HRESULT OnNotification(const UiNotification& notification, UiEvent& io_event);
    HRESULT OnListSelectionChanged();
    HRESULT OnNameChanged();
    HRESULT OnFilterComboSelectionChanged();
    HRESULT OnOkClicked();
    HRESULT OnCancelClicked();
    HRESULT OnItemConfirmed(IAFS_Name* name);

    // Which names were chosen (dialog_choice.cpp).
    HRESULT Open();
    HRESULT SettleItems(std::vector<ChosenEntry>& names, bool& is_navigating);
    HRESULT CollectNames(const std::vector<ChosenEntry>& names, IAFS_Name* folder, IAFS_NamesCollection* collection);
    std::vector<ChosenEntry> GetSelectedFolderFromList() const;
    std::vector<ChosenEntry> GetNamesFromNameEditControl(const std::vector<FolderItem>& items) const;
    std::wstring CompleteName(std::wstring name) const;
    bool MayReplace(const std::wstring& title) const;
    void ShowError(const std::wstring& message) const;
    bool HasFlag(DWORD flag) const { return (m_parameters->Flags & flag) != 0; }

    // Moving to another folder (dialog_navigation.cpp).
    HRESULT SetFolder(IAFS_Name* name, bool show_error);
    HRESULT Refresh();
    std::function<bool(IAFS_Name*)> HiddenPathsFilter() const;
    /// On the worker.
    HRESULT MoveTo(FoldersNavigator& navigator, IAFS_Name* name, const std::function<bool(IAFS_Name*)>& filter) const;
    void OnFolderSet(HRESULT result, bool show_error);
    void StayInFolder(bool show_error);
    void EnterWait();
    void LeaveWait();
    /// `complete` runs in the window's thread after `function` has run on the worker, or has thrown. Both hold this object, and
    /// what else they need.
    bool AsyncStart(std::function<void()> function, const std::wstring& name, AsyncCallbackContext complete);
    HRESULT OnAsyncComplete(const UiEvent& event);
    HRESULT OnAsyncShowWaitProgress(const UiEvent& event);

    // The commands of the bar above the list (dialog_commands.cpp).
    std::vector<Ui::CommandParameter> MakeCommandParameters();
    HRESULT CreateCommandBar();
    void UpdateCommandBar();
    void DeleteCommandBar();
    HRESULT CreateFolder();
    HRESULT Delete();
    HRESULT NavigateUp();
    bool AskFolderName(const std::vector<FolderItem>& items, std::wstring& io_name) const;
    std::wstring FolderNameError(const std::wstring& name, const std::vector<FolderItem>& items) const;
    bool MayDelete(const std::vector<FolderItem>& items) const;
    /// What a worker has come to, wherever it ended.
    struct CommandOutcome {
        /// Shown until the window knows.
        ComPtr<IKOV_ProgressMon> progress;
        bool is_server_changed = false;
    };
    /// On the worker.
    HRESULT MakeFolder(IAFS_Name* parent, const std::wstring& name, CommandOutcome& outcome) const;
    HRESULT DeleteItems(const std::vector<FolderItem>& items, CommandOutcome& outcome) const;
    HRESULT DeleteItem(const FolderItem& item) const;
    void StartCommand(std::function<void(CommandOutcome&)> command);
    void OnCommandComplete(const CommandOutcome& outcome);

    ComPtr<IAFS_NamesCollection> m_files_to_open;
    DialogWorker m_worker;
    const ComPtr<IKOV_Inst> m_kov_instance;
    ComPtr<IUIX_Inst> m_ui;
    const ComPtr<IAFS_FileSys> m_file_system;
    Ui::FilesIconProvider* const m_icons_provider;
    Leftovers* const m_leftovers;
    bool m_is_open_dialog = true;
    const ComPtr<IAFS_Name> m_default_folder;
    Ui::DialogParameters* const m_parameters;
    const Preferences* const m_preferences;
    std::unique_ptr<FolderItemsList> m_list;
    std::shared_ptr<FilesExtensionFilter> m_filter;
    std::shared_ptr<FoldersNavigator> m_navigator;
    /// What the window is to end with when the worker has ended.
    LONGLONG m_end_code = 0;
    /// The user closed the window.
    bool m_end_pending = false;
    ComPtr<IUIX_WaitProgress> m_wait_progress;
    int m_wait_count = 0;
    const std::vector<Ui::CommandParameter> m_command_parameters;
    ComPtr<IUIX_CmdBar> m_command_bar;
    bool m_can_create_folder = false;
    bool m_can_delete = false;
    bool m_can_navigate_up = false;
    HWND m_window = nullptr;
};

} // namespace KOV
