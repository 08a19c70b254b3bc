#pragma once

/// The module's presence in the editor: its commands, where they stand, the state of each document and its info bar.

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "dialog/front/place_dialog.h"
#include "editor/timer_update_ui.h"
#include "frame/plugin.h"
#include "host/document.h"
#include "host/tools/window_bases.h"
#include "sharepoint/sharepoint.h"

enum class EditState {
    enabled,
    disabled,
    /// By the file's state and the preferences.
    auto_detect,
};

/// Takes the host's events and commands. Main thread, but where another is named. Owned by `Plugin`; the host holds it by its
/// commands and subscriptions until both are gone.
class EventsHandler final : public KOV::uiCmdHandlerBaseT<KOV::IEventHandler> {
public:
    explicit EventsHandler(Plugin* plugin);

    /// Once. A failure leaves what was made up to there for `Shutdown`.
    HRESULT Init();
    /// Once.
    HRESULT Shutdown();

    HRESULT OnEvent(DWORD event_id, DWORD reserved1, IUnknown* event_source, IUnknown* reserved2) override;
    HRESULT OnGetItemState(KOV::IUIX_Cmd* command, DWORD reserved, KOV::IUIX_Obj* owner, DWORD* out_state) override;
    /// Runs a command and shows its failure. On any thread, for as long as the server takes.
    HRESULT OnNotify(DWORD code, KOV::IUIX_Cmd* command, DWORD reserved, KOV::IUIX_Obj* owner) override;

    /// A file's check-out or edit state changed. Any thread; comes back after the main thread took the report. A failure to reach
    /// it is logged.
    void UpdateCommandItems(File* file);
    /// Refreshes the commands, and the documents of the files that changed.
    void OnUpdateCommandItemsTimer();

    /// Tells the document's state in its bar, from what its file holds: asks no server.
    HRESULT UpdateInfoBar(KOV::IKOV_Document* i_document);
    /// Allows or forbids editing. `S_FALSE` for a document that lies elsewhere, which is left alone.
    HRESULT SetDocumentEditState(KOV::IKOV_Document* i_document, EditState edit_state);
    HRESULT GetDocumentEditState(KOV::IKOV_Document* i_document, bool& out_is_edit_state);

    std::shared_ptr<Ui::PlaceDialog> OpenSaveDialog() const { return m_open_save_dialog; }

private:
    /// One command.
    struct MenuItem {
        DWORD id;
        LPCWSTR string_id;
        /// Keys of texts; null for none.
        LPCWSTR tip;
        LPCWSTR error_id;
        /// Null: always disabled, and nothing to run.
        HRESULT (EventsHandler::*on_state)(KOV::IUIX_Obj* owner, DWORD* out_state);
        HRESULT (EventsHandler::*on_execute)(KOV::IUIX_Obj* owner);
        DWORD style;
        /// Where the host's theme has no icon of this name.
        std::span<const WORD> icons;
    };
    using MenuItems = std::array<MenuItem, 5>;

    ~EventsHandler() override;

    // Start and events.
    HRESULT CreateCommands();
    HRESULT CreateCommand(KOV::IUIX_Cmds* commands_collection, MenuItem& menu_item);
    HRESULT FindNames();
    HRESULT Subscribe();
    std::array<DWORD, 6> EventIds() const;
    HRESULT DispatchEvent(DWORD event_id, IUnknown* event_source);
    HRESULT AddPreferencesPage(IUnknown* event_source);

    // Where the commands stand.
    bool IntegrateToEditorUI(KOV::IKOV_View* view);
    bool AddMenu(KOV::IKOV_View* view);
    bool AddSharePanel(KOV::IUIX_Ribbon* ribbon);
    bool AddToShareGroup(KOV::IUIX_Ribbon* ribbon);
    bool FillItems(KOV::IUIX_CmdItems* items, std::span<const LPCWSTR> names);

    // What the commands do.
    const MenuItem* FindItem(DWORD id) const;
    HRESULT Execute(const MenuItem& item, KOV::IUIX_Obj* owner, KOV::IString* out_error_details);
    bool IsCancelResult(HRESULT result) const;
    HRESULT StateByHolder(KOV::IUIX_Obj* owner, SharePoint::File::CheckOutState enabled_state, DWORD* out_state);
    HRESULT SharePointState(KOV::IUIX_Obj* owner, DWORD* out_state);
    HRESULT CheckOutState(KOV::IUIX_Obj* owner, DWORD* out_state);
    HRESULT CheckInState(KOV::IUIX_Obj* owner, DWORD* out_state);
    HRESULT DiscardCheckOutState(KOV::IUIX_Obj* owner, DWORD* out_state);
    HRESULT EnableEditingState(KOV::IUIX_Obj* owner, DWORD* out_state);
    HRESULT CheckOut(KOV::IUIX_Obj* owner);
    HRESULT CheckIn(KOV::IUIX_Obj* owner);
    HRESULT DiscardCheckOut(KOV::IUIX_Obj* owner);
    HRESULT EnableEditing(KOV::IUIX_Obj* owner);

    void UpdateDocumentsOf(File* file);
    HRESULT RefreshDocument(KOV::IKOV_Document* document);

    static const MenuItems commands_table;

    ComPtr<Plugin> m_plugin;
    DWORD m_customize_layout_event_id = 0;
    DWORD m_document_initialized_event_id = 0;
    DWORD m_viewing_started_event_id = 0;
    DWORD m_source_changed_event_id = 0;
    DWORD m_language_changed_event_id = 0;
    DWORD m_customize_preferences_event_id = 0;
    DWORD m_menubar_id = 0;
    DWORD m_share_tab_id = 0;
    DWORD m_view_id = 0;
    DWORD m_window_cmd_id = 0;
    DWORD m_share_group_id = 0;
    DWORD m_share_panel_id = 0;
    MenuItems m_commands;
    std::shared_ptr<Ui::PlaceDialog> m_open_save_dialog;
    ComPtr<TimerUpdateUi> m_timer;
    /// Whose state changed since the last timer. Only compared, never used: a file may be gone by then.
    std::vector<File*> m_files_to_update;
};
