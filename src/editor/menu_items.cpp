// The module's commands, and their making.

#include "editor/events_handler.h"
#include "frame/diagnostics/diagnostics.h"
#include "host/tools/multi_size_image.h"
#include "host/user_interface.h"

const EventsHandler::MenuItems EventsHandler::commands_table = {{
    {0, L"sp.cmd.share_point", L"sp.cmd.share_point.tip", nullptr, &EventsHandler::SharePointState, nullptr, 0x201,
     module_icon_resources},
    {0,
     L"sp.cmd.checkOut",
     L"sp.cmd.checkOut.tip",
     L"sp.msg.checkOutFailed",
     &EventsHandler::CheckOutState,
     &EventsHandler::CheckOut,
     0,
     {}},
    {0,
     L"sp.cmd.checkIn",
     L"sp.cmd.checkIn.tip",
     L"sp.msg.checkInFailed",
     &EventsHandler::CheckInState,
     &EventsHandler::CheckIn,
     0,
     {}},
    {0,
     L"sp.cmd.discardCheckOut",
     L"sp.cmd.discardCheckOut.tip",
     L"sp.msg.discardCheckOutFailed",
     &EventsHandler::DiscardCheckOutState,
     &EventsHandler::DiscardCheckOut,
     0,
     {}},
    {0,
     L"sp.cmd.enableEditing",
     L"sp.cmd.enableEditing.tip",
     nullptr,
     &EventsHandler::EnableEditingState,
     &EventsHandler::EnableEditing,
     0,
     {}},
}};

namespace {

constexpr LPCWSTR commands_category = L"sp.cmd.cmdsCategory";

/// How the host is told to look a text up.
std::wstring TextKey(LPCWSTR key) { return std::wstring(L"$$$.") + key; }

} // namespace

HRESULT EventsHandler::CreateCommands() {
    TRACE_ENTER();
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_OR_RETURN(m_plugin->m_uix_inst->get_CmdManager(&command_manager));
    CHECK_OR_RETURN(command_manager != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_Cmds> commands_collection;
    CHECK_OR_RETURN(command_manager->get_Cmds(&commands_collection));
    CHECK_OR_RETURN(commands_collection != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_Theme> theme;
    CHECK_OR_RETURN(m_plugin->m_uix_inst->get_Theme(&theme));
    for (MenuItem& menu_item : m_commands) {
        CHECK_OR_RETURN(CreateCommand(commands_collection, menu_item));
    }
    TRACE_RETURN(S_OK);
}

HRESULT EventsHandler::CreateCommand(KOV::IUIX_Cmds* commands_collection, MenuItem& menu_item) {
    TRACE_FORMAT(LogLevel::information, L"Adding command '{}'", menu_item.string_id);
    ComPtr<KOV::IUIX_Cmd> command;
    if (SUCCEEDED(commands_collection->Find(menu_item.string_id, &command)) && !command.IsNull()) {
        TRACE_FORMAT(LogLevel::warning, L"Command already exists");
        CHECK_OR_RETURN(commands_collection->Delete(command));
    }
    CHECK_OR_RETURN(commands_collection->AddNew((BSTR)menu_item.string_id, nullptr, this, &command));
    CHECK_OR_RETURN(command != nullptr, E_FAIL);
    CHECK_OR_RETURN(command->get_ID(&menu_item.id));
    CHECK_OR_RETURN(command->put_Title(TextKey(menu_item.string_id).c_str()));
    if (menu_item.tip != nullptr) {
        CHECK_OR_RETURN(command->put_Tip(TextKey(menu_item.tip).c_str()));
    }
    CHECK_OR_RETURN(command->put_NewItemStyle(menu_item.style));
    CHECK_OR_RETURN(command->put_Category(commands_category));
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    CHECK_OR_RETURN(m_plugin->m_uix_inst->GetIcon(menu_item.string_id, &icon));
    if (icon.IsNull() && !menu_item.icons.empty()) {
        icon = BuildMultiSizeImage(m_plugin->m_uix_inst, menu_item.icons);
    }
    if (!icon.IsNull()) {
        CHECK_OR_RETURN(command->put_Icon(icon));
    }
    return S_OK;
}
