#include "editor/ui/commands.h"

#include <map>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/multi_size_image.h"
#include "host/tools/window_bases.h"

namespace {

/// `code` of a command that was chosen.
constexpr DWORD command_chosen = 1;
/// A mark of `UpdateCmdState` that concerns one command.
constexpr LONG update_one = 1;

constexpr DWORD bar_style = KOV::UIX_CmdBarStyle_NoGripper | KOV::UIX_CmdBarStyle_NoFloat | KOV::UIX_CmdBarStyle_NoToggleBtn |
                            KOV::UIX_ObjStyle_NoBorder | KOV::UIX_ObjStyle_NoBackground;
static_assert(bar_style == 0xE44);
constexpr DWORD pane_style =
    KOV::UIX_CmdPaneStyle_LinesNoToggle | KOV::UIX_CmdPaneStyle_NoToggleBtn | KOV::UIX_CmdPaneStyle_Docked;
static_assert(pane_style == 0x21200);

class CommandHandler final : public KOV::uiCmdHandlerBase {
public:
    HRESULT Add(KOV::IKOV_Inst* kov, const Ui::CommandParameter& parameter) {
        DWORD id = 0;
        CHECK_OR_RETURN(kov->Str2ID(parameter.id, VARIANT_TRUE, &id));
        m_functions.insert_or_assign(id, std::pair(parameter.on_execute, parameter.on_state));
        return S_OK;
    }

    HRESULT OnGetItemState(KOV::IUIX_Cmd* i_command, DWORD, KOV::IUIX_Obj*, DWORD* o_state) override {
        TRACE_ENTER();
        INTERFACE_TRY
        CHECK_OR_RETURN(i_command != nullptr, E_INVALIDARG);
        CHECK_OR_RETURN(o_state != nullptr, E_INVALIDARG);
        DWORD id = 0;
        CHECK_OR_RETURN(i_command->get_ID(&id));
        if (const auto found = m_functions.find(id); found != m_functions.end()) {
            *o_state = found->second.second() ? KOV::UIX_CmdState_Enabled : KOV::UIX_CmdState_Disabled;
        }
        TRACE_RETURN(S_OK);
        INTERFACE_CATCH(nullptr)
    }

    HRESULT OnNotify(DWORD code, KOV::IUIX_Cmd* i_command, DWORD, KOV::IUIX_Obj*) override {
        TRACE_ENTER();
        INTERFACE_TRY
        CHECK_OR_RETURN(i_command != nullptr, E_INVALIDARG);
        CHECK_OR_RETURN(code == command_chosen, E_NOTIMPL);
        DWORD id = 0;
        CHECK_OR_RETURN(i_command->get_ID(&id));
        if (const auto found = m_functions.find(id); found != m_functions.end()) {
            // A copy: what runs may delete the command, and with it this handler.
            const auto on_execute = found->second.first;
            on_execute();
        }
        TRACE_RETURN(S_OK);
        INTERFACE_CATCH(nullptr)
    }

private:
    ~CommandHandler() override = default;

    std::map<DWORD, std::pair<std::function<void()>, std::function<bool()>>> m_functions;
};

HRESULT GetManager(KOV::IKOV_Inst* kov, ComPtr<KOV::IUIX_CmdManager>& out_manager) {
    ComPtr<KOV::IUIX_Inst> uix;
    CHECK_OR_RETURN(kov->GetExtension(L"UIX", (IUnknown**)&uix));
    CHECK_OR_RETURN(uix != nullptr, E_FAIL);
    CHECK_OR_RETURN(uix->get_CmdManager(&out_manager));
    CHECK_OR_RETURN(out_manager != nullptr, E_FAIL);
    return S_OK;
}

/// Calls `function` with the number of each command that has one.
template <class Function>
void ForEachId(KOV::IKOV_Inst* kov, const Ui::CommandParameters& parameters, Function&& function) {
    for (const Ui::CommandParameter& parameter : parameters) {
        DWORD id = 0;
        if (SUCCEEDED(kov->Str2ID(parameter.id, VARIANT_FALSE, &id))) {
            (void)function(id); // one that fails is skipped
        }
    }
}

HRESULT GetIcon(KOV::IUIX_Inst* uix, const Ui::CommandParameter& parameter, ComPtr<KOV::IKOV_MultiSizeImage>& out_icon) {
    if (parameter.icon_theme != nullptr) {
        CHECK_OR_RETURN(uix->GetIcon(parameter.icon_theme, &out_icon));
    } else if (!parameter.icon_resources.empty()) {
        const std::vector<WORD> numbers(parameter.icon_resources.begin(), parameter.icon_resources.end());
        out_icon = BuildMultiSizeImage(uix, numbers);
    }
    return S_OK;
}

HRESULT FillBar(KOV::IUIX_Inst* uix, KOV::IUIX_CmdHandler* handler, const Ui::CommandParameters& parameters,
                KOV::IUIX_CmdBar* bar) {
    for (const Ui::CommandParameter& parameter : parameters) {
        ComPtr<KOV::IUIX_Cmd> command;
        CHECK_OR_RETURN(Ui::CreateCommand(uix, handler, parameter, &command));
        CHECK_OR_RETURN(bar->FlatInsertItem(command, -1, 0, 0, nullptr));
        CHECK_OR_RETURN(bar->FlatInsertSeparator(-1, 0, nullptr));
    }
    return S_OK;
}

/// Puts the bar above what scrolls in `parent_object`.
HRESULT DockAtTop(KOV::IUIX_Obj* parent_object, KOV::IUIX_CmdBar* bar) {
    ComPtr<KOV::IUIX_ScrollContainer> scroll_container;
    (void)parent_object->_QueryImpl(&scroll_container); // null where nothing scrolls
    CHECK_OR_RETURN(scroll_container != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_CmdPane> command_pane;
    CHECK_OR_RETURN(scroll_container->get_CmdPaneTop(&command_pane));
    CHECK_OR_RETURN(command_pane != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_Obj> command_pane_object;
    CHECK_OR_RETURN(command_pane->get_Obj(&command_pane_object));
    CHECK_OR_RETURN(command_pane_object != nullptr, E_FAIL);
    CHECK_OR_RETURN(command_pane_object->SetStyle(pane_style, pane_style | KOV::UIX_ObjStyle_NoBackground));
    CHECK_OR_RETURN(command_pane->InsertBar(bar, -1, -1, VARIANT_TRUE));
    return S_OK;
}

} // namespace

HRESULT Ui::CreateCommandHandler(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters,
                                 KOV::IUIX_CmdHandler** o_command_handler) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_kov != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(o_command_handler != nullptr, E_INVALIDARG);
    *o_command_handler = nullptr;
    auto handler = MakeObject<CommandHandler>();
    CHECK_OR_RETURN(handler != nullptr, E_OUTOFMEMORY);
    for (const CommandParameter& parameter : i_parameters) {
        CHECK_OR_RETURN(handler->Add(i_kov, parameter));
    }
    *o_command_handler = handler.Detach();
    TRACE_RETURN(S_OK);
}

HRESULT Ui::CreateCommand(KOV::IUIX_Inst* i_uix, KOV::IUIX_CmdHandler* i_command_handler, const CommandParameter& i_parameter,
                          KOV::IUIX_Cmd** o_command) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_uix != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(i_command_handler != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(o_command != nullptr, E_INVALIDARG);
    *o_command = nullptr;
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_OR_RETURN(i_uix->get_CmdManager(&command_manager));
    CHECK_OR_RETURN(command_manager != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_Cmds> commands;
    CHECK_OR_RETURN(command_manager->get_Cmds(&commands));
    CHECK_OR_RETURN(commands != nullptr, E_FAIL);

    ComPtr<KOV::IUIX_Cmd> command;
    // A plain text: the host reads it up to its terminator.
    CHECK_OR_RETURN(commands->AddNew(const_cast<BSTR>(i_parameter.id), nullptr, i_command_handler, &command));
    CHECK_OR_RETURN(command != nullptr, E_FAIL);
    if (i_parameter.title != nullptr) {
        CHECK_OR_RETURN(command->put_Title(i_parameter.title));
    }
    if (i_parameter.tip != nullptr) {
        CHECK_OR_RETURN(command->put_Tip(i_parameter.tip));
    }
    if (i_parameter.style != 0) {
        CHECK_OR_RETURN(command->put_NewItemStyle(i_parameter.style));
    }
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
    CHECK_OR_RETURN(GetIcon(i_uix, i_parameter, icon));
    if (!icon.IsNull()) {
        CHECK_OR_RETURN(command->put_Icon(icon));
    }
    *o_command = command.Detach();
    TRACE_RETURN(S_OK);
}

HRESULT Ui::UpdateCommands(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_kov != nullptr, E_INVALIDARG);
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_OR_RETURN(GetManager(i_kov, command_manager));
    ForEachId(i_kov, i_parameters, [&](DWORD id) { return command_manager->UpdateCmdState(update_one, id); });
    TRACE_RETURN(S_OK);
}

HRESULT Ui::DeleteCommands(KOV::IKOV_Inst* i_kov, const CommandParameters& i_parameters) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_kov != nullptr, E_INVALIDARG);
    ComPtr<KOV::IUIX_CmdManager> command_manager;
    CHECK_OR_RETURN(GetManager(i_kov, command_manager));
    ComPtr<KOV::IUIX_Cmds> commands;
    CHECK_OR_RETURN(command_manager->get_Cmds(&commands));
    if (!commands.IsNull()) {
        ForEachId(i_kov, i_parameters, [&](DWORD id) { return commands->Delete(id); });
    }
    TRACE_RETURN(S_OK);
}

HRESULT Ui::CreateCommandBar(KOV::IKOV_Inst* i_kov, KOV::IUIX_Obj* i_object, const CommandParameters& i_parameters,
                             KOV::IUIX_CmdBar** o_command_bar) {
    TRACE_ENTER();
    CHECK_OR_RETURN(i_kov != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(i_object != nullptr, E_INVALIDARG);
    CHECK_OR_RETURN(o_command_bar != nullptr, E_INVALIDARG);
    *o_command_bar = nullptr;
    ComPtr<KOV::IUIX_Inst> uix;
    CHECK_OR_RETURN(i_kov->GetExtension(L"UIX", (IUnknown**)&uix));
    CHECK_OR_RETURN(uix != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_Obj> parent_object;
    CHECK_OR_RETURN(i_object->get_Parent(&parent_object));
    CHECK_OR_RETURN(parent_object != nullptr, E_FAIL);
    const RECT rect{};
    ComPtr<KOV::IUIX_CmdBar> command_bar;
    CHECK_OR_RETURN(uix->CreateCmdBar(parent_object, &rect, nullptr, nullptr, bar_style, &command_bar));
    CHECK_OR_RETURN(command_bar != nullptr, E_FAIL);
    ComPtr<KOV::IUIX_CmdHandler> command_handler;
    CHECK_OR_RETURN(CreateCommandHandler(i_kov, i_parameters, &command_handler));
    HRESULT result = FillBar(uix, command_handler, i_parameters, command_bar);
    if (SUCCEEDED(result)) {
        result = DockAtTop(parent_object, command_bar);
    }
    if (FAILED(result)) {
        // A command without its bar would stay with the host, and its functions with it.
        (void)DeleteCommands(i_kov, i_parameters);
    }
    CHECK_OR_RETURN(result);
    *o_command_bar = command_bar.Detach();
    TRACE_RETURN(S_OK);
}
