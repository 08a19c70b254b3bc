#pragma once

/// The commands of the program as values: their texts and icons, who runs them, and whether they can be used now. A host with
/// windows shows them and observes what changes.

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands.h"
#include "host/object_bases.h"
#include "host/user_interface.h"
#include "workbench/core/command_items.h"
#include "workbench/core/main_loop.h"
#include "workbench/core/strings.h"

/// One command. Texts that begin with "$$$." are looked up when they are shown.
struct CommandFacts {
    DWORD id = 0;
    std::wstring name;
    std::wstring title;
    std::wstring tip;
    std::wstring category;
    /// Of items that are made from now on.
    DWORD new_item_style = 0;
    ComPtr<KOV::IKOV_MultiSizeImage> icon;
};

/// Bit of `new_item_style`: an item that opens a menu.
constexpr DWORD command_style_menu = 0x200;

/// An item with a menu below it that was put into a frame.
struct MenuInsertion {
    ComPtr<KOV::IUIX_Obj> view;
    /// The bar, 0, and the item before which it stands.
    std::vector<DWORD> path;
    CommandEntry entry;
};

/// Hears of changes. All on the main thread.
class CommandObserver {
public:
    virtual ~CommandObserver() = default;
    virtual void CommandAdded(DWORD) {}
    /// A text, the icon or the style is another one.
    virtual void CommandChanged(DWORD) {}
    /// Nothing of it can be asked any more.
    virtual void CommandRemoved(DWORD) {}
    /// The states of these commands are to be asked again; empty means all. From the loop, once for all marks of one turn.
    virtual void StatesMarked(const std::vector<DWORD>&) {}
    /// False when the view or the path isn't the observer's.
    virtual bool MenuItemInserted(const MenuInsertion&) { return false; }
};

/// The command manager with its collection. Reading, marking and running: any thread. Adding, changing and deleting: main thread.
/// Handlers are called without a lock held.
class CommandCollection final : public cCoClassDispatchT<KOV::IUIX_CmdManager, KOV::IUIX_Cmds> {
public:
    /// Both outlive the collection.
    CommandCollection(NameIds& name_ids, MainLoop& loop);

    // KOV::IUIX_CmdManager
    HRESULT get_Cmds(KOV::IUIX_Cmds** out_commands) override;
    HRESULT UpdateCmdState(LONG reserved, DWORD id) override;
    /// 0x800705B3 when no observer takes it: there is no such window.
    HRESULT InsertItemAt(KOV::IUIX_Obj* view, const DWORD* path, ULONG count, KOV::IUIX_Cmd* command,
                         KOV::IUIX_CmdMenu* menu) override;

    // KOV::IUIX_Cmds
    HRESULT Find(LPCWSTR name, KOV::IUIX_Cmd** out_command) override;
    HRESULT AddNew(BSTR name, IUnknown* reserved, KOV::IUIX_CmdHandler* handler, KOV::IUIX_Cmd** out_command) override;
    HRESULT Delete(KOV::IUIX_Cmd* command) override;
    HRESULT Delete(DWORD id) override;

    /// All commands, in the order in which they were added.
    std::vector<DWORD> Ids() const;
    /// Nothing for one that isn't there.
    std::optional<CommandFacts> Facts(DWORD id) const;
    /// The number of a command's name; 0 when there is no such command.
    DWORD IdOf(std::wstring_view name) const;

    /// What its handler says: `UIX_CmdState_Enabled` or `UIX_CmdState_Disabled`. A failing handler, one that says nothing and a
    /// command that isn't there are disabled. `owner` is the object that the command is used in. Main thread.
    DWORD State(DWORD id, KOV::IUIX_Obj* owner) const;
    bool IsEnabled(DWORD id, KOV::IUIX_Obj* owner) const { return State(id, owner) == KOV::UIX_CmdState_Enabled; }
    /// Runs a command as its item was chosen; nobody asks its state before. A failure for one that isn't there. On the thread
    /// that calls.
    HRESULT Execute(DWORD id, KOV::IUIX_Obj* owner) const;

    /// The observer outlives the collection or is taken away. Main thread.
    void AddObserver(CommandObserver* observer);
    void RemoveObserver(CommandObserver* observer);

    /// Deletes all commands, which releases their handlers. Main thread.
    void Clear();

private:
    class Command;
    struct Marks;

    ~CommandCollection() override;

    using cCoClassDispatchT::Find; // by interface, beside the one by name

    ComPtr<Command> CommandOf(DWORD id) const;
    /// Calls each observer that there is; one may go meanwhile.
    void Tell(const std::function<void(CommandObserver&)>& function) const;

    NameIds& m_name_ids;
    MainLoop& m_loop;
    mutable std::mutex m_lock;
    std::vector<ComPtr<Command>> m_commands;
    std::vector<CommandObserver*> m_observers;
    /// Shared with the task in the loop, which may run after the collection has gone.
    std::shared_ptr<Marks> m_marks;
};
