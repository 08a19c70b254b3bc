// Where the module's commands stand in the editor: in a menu of their own, or in a panel and a group of the ribbon.

#include "editor/events_handler.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/user_interface.h"

namespace {

/// Stands for a separator among the names.
constexpr LPCWSTR separator = nullptr;

constexpr LPCWSTR menu_order[] = {L"sp.cmd.checkIn",         L"sp.cmd.checkOut", separator,
                                  L"sp.cmd.discardCheckOut", separator,          L"sp.cmd.enableEditing"};
constexpr LPCWSTR share_group_order[] = {separator, L"sp.cmd.checkIn", L"sp.cmd.checkOut", L"sp.cmd.discardCheckOut",
                                         L"sp.cmd.enableEditing"};

} // namespace

/// For functions that say by a bool whether all went well: the test of a call.
#define CHECK_CALL_OR_FALSE(call) CHECK_CALL_OR_RETURN_VALUE(call, false)

bool EventsHandler::IntegrateToEditorUI(KOV::IKOV_View* view) {
    TRACE_ENTER();
    CHECK_OR_RETURN_VALUE(view != nullptr, false);
    DWORD view_id = 0;
    CHECK_CALL_OR_FALSE(view->get_ID(&view_id));
    if (view_id != m_view_id) {
        TRACE_RETURN(true);
    }
    VARIANT_BOOL is_ribbon = VARIANT_FALSE;
    CHECK_CALL_OR_FALSE(view->get_IsRibbon(&is_ribbon));
    if (is_ribbon == VARIANT_FALSE) {
        CHECK_OR_RETURN_VALUE(AddMenu(view), false);
        TRACE_RETURN(true);
    }
    ComPtr<KOV::IUIX_Ribbon> ribbon;
    CHECK_CALL_OR_FALSE(view->get_Ribbon(&ribbon));
    CHECK_OR_RETURN_VALUE(ribbon != nullptr, false);
    CHECK_OR_RETURN_VALUE(AddSharePanel(ribbon), false);
    CHECK_OR_RETURN_VALUE(AddToShareGroup(ribbon), false);
    TRACE_RETURN(true);
}

bool EventsHandler::AddMenu(KOV::IKOV_View* view) {
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_CALL_OR_FALSE(m_plugin->m_uix_inst->get_CmdManager(&command_manager));
    CHECK_OR_RETURN_VALUE(command_manager != nullptr, false);
    ComPtr<KOV::IUIX_Cmds> commands_collection;
    CHECK_CALL_OR_FALSE(command_manager->get_Cmds(&commands_collection));
    CHECK_OR_RETURN_VALUE(commands_collection != nullptr, false);
    ComPtr<KOV::IUIX_CmdMenu> menu;
    CHECK_CALL_OR_FALSE(m_plugin->m_uix_inst->CreateCmdMenu(&menu));
    CHECK_OR_RETURN_VALUE(menu != nullptr, false);
    CHECK_OR_RETURN_VALUE(FillItems(menu, menu_order), false);
    ComPtr<KOV::IUIX_Cmd> command;
    CHECK_CALL_OR_FALSE(commands_collection->Find(L"sp.cmd.share_point", &command));
    CHECK_OR_RETURN_VALUE(command != nullptr, false);
    ComPtr<KOV::IUIX_Obj> view_object;
    CHECK_CALL_OR_FALSE(view->get_Obj(&view_object));
    CHECK_OR_RETURN_VALUE(view_object != nullptr, false);
    const DWORD path[] = {m_menubar_id, 0, m_window_cmd_id};
    CHECK_CALL_OR_FALSE(command_manager->InsertItemAt(view_object, path, std::size(path), command, menu));
    return true;
}

bool EventsHandler::AddSharePanel(KOV::IUIX_Ribbon* ribbon) {
    ComPtr<KOV::IUIX_RibbonTab> tab;
    CHECK_CALL_OR_FALSE(ribbon->FindTab(m_share_tab_id, &tab));
    CHECK_OR_RETURN_VALUE(tab != nullptr, false);
    ComPtr<KOV::IUIX_CmdPanel> panel;
    CHECK_CALL_OR_FALSE(m_plugin->m_uix_inst->CreateCmdPanel(&panel));
    CHECK_OR_RETURN_VALUE(panel != nullptr, false);
    CHECK_CALL_OR_FALSE(panel->put_ID(m_share_panel_id));
    CHECK_CALL_OR_FALSE(panel->put_Title(L"$$$.sp.rbar.sharepoint"));
    CHECK_OR_RETURN_VALUE(FillItems(panel, menu_order), false);
    CHECK_CALL_OR_FALSE(tab->InsertPanel(panel, -1));
    return true;
}

bool EventsHandler::AddToShareGroup(KOV::IUIX_Ribbon* ribbon) {
    ComPtr<KOV::IUIX_CmdItems> group;
    CHECK_CALL_OR_FALSE(ribbon->FindCmdGroup(m_share_group_id, &group));
    CHECK_OR_RETURN_VALUE(group != nullptr, false);
    return FillItems(group, share_group_order);
}

bool EventsHandler::FillItems(KOV::IUIX_CmdItems* items, std::span<const LPCWSTR> names) {
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_CALL_OR_FALSE(m_plugin->m_uix_inst->get_CmdManager(&command_manager));
    CHECK_OR_RETURN_VALUE(command_manager != nullptr, false);
    ComPtr<KOV::IUIX_Cmds> commands_collection;
    CHECK_CALL_OR_FALSE(command_manager->get_Cmds(&commands_collection));
    CHECK_OR_RETURN_VALUE(commands_collection != nullptr, false);
    for (const LPCWSTR name : names) {
        if (name == separator) {
            CHECK_CALL_OR_FALSE(items->InsertSeparator(-1));
            continue;
        }
        ComPtr<KOV::IUIX_Cmd> command;
        CHECK_CALL_OR_FALSE(commands_collection->Find(name, &command));
        CHECK_OR_RETURN_VALUE(command != nullptr, false);
        CHECK_CALL_OR_FALSE(items->InsertItem(command, -1));
    }
    return true;
}
