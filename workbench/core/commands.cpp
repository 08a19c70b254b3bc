#include "workbench/core/commands.h"

#include <algorithm>
#include <functional>

#include "platform/bstr.h"
#include "platform/errors.h"
#include "workbench/core/errors.h"

/// Knows its collection until it is deleted from it: whoever still holds it then changes a value that nobody sees.
class CommandCollection::Command final : public cCoClassDispatchT<KOV::IUIX_Cmd> {
public:
    Command(CommandCollection* collection, DWORD id, std::wstring name, KOV::IUIX_CmdHandler* handler)
        : m_collection(collection), m_handler(handler) {
        m_facts.id = id;
        m_facts.name = std::move(name);
    }

    HRESULT get_ID(DWORD* out_id) override {
        if (out_id == nullptr) {
            return E_POINTER;
        }
        *out_id = m_facts.id;
        return S_OK;
    }
    HRESULT get_Name(BSTR* out_name) override {
        if (out_name == nullptr) {
            return E_POINTER;
        }
        *out_name = Bstr(std::wstring_view(m_facts.name)).Detach();
        return *out_name != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT put_Title(LPCWSTR title) override { return PutText(&CommandFacts::title, title); }
    HRESULT put_Tip(LPCWSTR tip) override { return PutText(&CommandFacts::tip, tip); }
    HRESULT put_Category(LPCWSTR category) override { return PutText(&CommandFacts::category, category); }
    HRESULT put_NewItemStyle(DWORD style) override {
        return Change([&](CommandFacts& facts) { facts.new_item_style = style; });
    }
    HRESULT put_Icon(KOV::IKOV_MultiSizeImage* icon) override {
        return Change([&](CommandFacts& facts) { facts.icon = icon; });
    }

    DWORD Id() const noexcept { return m_facts.id; }
    const std::wstring& Name() const noexcept { return m_facts.name; }
    CommandFacts Facts() const {
        const std::scoped_lock hold(m_lock);
        return m_facts;
    }
    ComPtr<KOV::IUIX_CmdHandler> Handler() const {
        const std::scoped_lock hold(m_lock);
        return m_handler;
    }
    void Cut() {
        ComPtr<KOV::IUIX_CmdHandler> handler;
        const std::scoped_lock hold(m_lock);
        m_collection = nullptr;
        std::swap(handler, m_handler);
    }

private:
    HRESULT PutText(std::wstring CommandFacts::*field, LPCWSTR text) {
        return Change([&](CommandFacts& facts) { facts.*field = text != nullptr ? text : L""; });
    }
    template <class Setter>
    HRESULT Change(Setter&& setter) {
        return AtBorder(nullptr, [&] {
            CommandCollection* collection = nullptr;
            {
                const std::scoped_lock hold(m_lock);
                setter(m_facts);
                collection = m_collection;
            }
            if (collection != nullptr) {
                collection->Tell([this](CommandObserver& observer) { observer.CommandChanged(m_facts.id); });
            }
            return S_OK;
        });
    }

    mutable std::mutex m_lock;
    CommandCollection* m_collection;
    CommandFacts m_facts;
    ComPtr<KOV::IUIX_CmdHandler> m_handler;
};

struct CommandCollection::Marks {
    std::mutex lock;
    /// Null when it has gone.
    CommandCollection* collection = nullptr;
    std::set<DWORD> ids;
    bool all = false;
    bool is_posted = false;

    /// The marks since the last time, and none from then on; nothing without any.
    std::optional<std::vector<DWORD>> Take() {
        const std::scoped_lock hold(lock);
        is_posted = false;
        const bool were_all = std::exchange(all, false);
        const std::set<DWORD> marked = std::exchange(ids, {});
        if (collection == nullptr || (!were_all && marked.empty())) {
            return std::nullopt;
        }
        return were_all ? std::vector<DWORD>() : std::vector<DWORD>(marked.begin(), marked.end());
    }
};

CommandCollection::CommandCollection(NameIds& name_ids, MainLoop& loop)
    : m_name_ids(name_ids), m_loop(loop), m_marks(std::make_shared<Marks>()) {
    m_marks->collection = this;
}

CommandCollection::~CommandCollection() {
    {
        const std::scoped_lock hold(m_marks->lock);
        m_marks->collection = nullptr;
    }
    m_observers.clear();
    Clear();
}

HRESULT CommandCollection::get_Cmds(KOV::IUIX_Cmds** out_commands) {
    if (out_commands == nullptr) {
        return E_POINTER;
    }
    *out_commands = ComPtr<KOV::IUIX_Cmds>(this).Detach();
    return S_OK;
}

HRESULT CommandCollection::UpdateCmdState(LONG, DWORD id) {
    return AtBorder(nullptr, [&] {
        const std::scoped_lock hold(m_marks->lock);
        if (id == 0) {
            m_marks->all = true;
        } else {
            m_marks->ids.insert(id);
        }
        if (!std::exchange(m_marks->is_posted, true)) {
            m_loop.Post([marks = m_marks] {
                // The collection dies on this thread alone, so it is there for as long as this takes.
                if (const auto ids = marks->Take()) {
                    marks->collection->Tell([&](CommandObserver& observer) { observer.StatesMarked(*ids); });
                }
            });
        }
        return S_OK;
    });
}

HRESULT CommandCollection::InsertItemAt(KOV::IUIX_Obj* view, const DWORD* path, ULONG count, KOV::IUIX_Cmd* command,
                                        KOV::IUIX_CmdMenu* menu) {
    DWORD id = 0;
    if (view == nullptr || path == nullptr || count == 0 || command == nullptr || FAILED(command->get_ID(&id))) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        const MenuInsertion insertion{view, {path, path + count}, {id, menu}};
        bool is_taken = false;
        Tell([&](CommandObserver& observer) { is_taken = observer.MenuItemInserted(insertion) || is_taken; });
        return is_taken ? S_OK : HRESULT_FROM_WIN32(1459);
    });
}

HRESULT CommandCollection::Find(LPCWSTR name, KOV::IUIX_Cmd** out_command) {
    if (name == nullptr || out_command == nullptr) {
        return E_POINTER;
    }
    *out_command = nullptr;
    return AtBorder(nullptr, [&] {
        *out_command = CommandOf(IdOf(name)).Detach();
        return *out_command != nullptr ? S_OK : S_FALSE;
    });
}

HRESULT CommandCollection::AddNew(BSTR name, IUnknown*, KOV::IUIX_CmdHandler* handler, KOV::IUIX_Cmd** out_command) {
    if (out_command == nullptr) {
        return E_POINTER;
    }
    *out_command = nullptr;
    if (name == nullptr || *name == L'\0' || handler == nullptr) {
        return E_INVALIDARG;
    }
    return AtBorder(nullptr, [&] {
        // Up to the terminator: callers pass plain texts, which carry no length.
        const std::wstring text = static_cast<const wchar_t*>(name);
        const DWORD id = *m_name_ids.Find(text, true);
        if (!CommandOf(id).IsNull()) {
            Delete(id);
        }
        const auto command = MakeObject<Command>(this, id, text, handler);
        if (command.IsNull()) {
            return E_OUTOFMEMORY;
        }
        {
            const std::scoped_lock hold(m_lock);
            m_commands.push_back(command);
        }
        Tell([id](CommandObserver& observer) { observer.CommandAdded(id); });
        *out_command = ComPtr<Command>(command).Detach();
        return S_OK;
    });
}

HRESULT CommandCollection::Delete(KOV::IUIX_Cmd* command) {
    DWORD id = 0;
    if (command == nullptr || FAILED(command->get_ID(&id))) {
        return E_INVALIDARG;
    }
    // An object that was replaced meanwhile deletes nothing.
    return static_cast<KOV::IUIX_Cmd*>(CommandOf(id).Get()) == command ? Delete(id) : E_INVALIDARG;
}

HRESULT CommandCollection::Delete(DWORD id) {
    ComPtr<Command> removed;
    {
        const std::scoped_lock hold(m_lock);
        const auto found =
            std::find_if(m_commands.begin(), m_commands.end(), [&](const auto& command) { return command->Id() == id; });
        if (found == m_commands.end()) {
            return E_INVALIDARG;
        }
        removed = std::move(*found);
        m_commands.erase(found);
    }
    removed->Cut();
    return AtBorder(nullptr, [&] {
        Tell([id](CommandObserver& observer) { observer.CommandRemoved(id); });
        return S_OK;
    });
}

std::vector<DWORD> CommandCollection::Ids() const {
    const std::scoped_lock hold(m_lock);
    std::vector<DWORD> ids;
    std::transform(m_commands.begin(), m_commands.end(), std::back_inserter(ids),
                   [](const auto& command) { return command->Id(); });
    return ids;
}

std::optional<CommandFacts> CommandCollection::Facts(DWORD id) const {
    const ComPtr<Command> command = CommandOf(id);
    return command.IsNull() ? std::nullopt : std::optional(command->Facts());
}

DWORD CommandCollection::IdOf(std::wstring_view name) const {
    const std::scoped_lock hold(m_lock);
    const auto found =
        std::find_if(m_commands.begin(), m_commands.end(), [&](const auto& command) { return command->Name() == name; });
    return found != m_commands.end() ? (*found)->Id() : 0;
}

DWORD CommandCollection::State(DWORD id, KOV::IUIX_Obj* owner) const {
    const ComPtr<Command> command = CommandOf(id);
    const ComPtr<KOV::IUIX_CmdHandler> handler = command.IsNull() ? nullptr : command->Handler();
    DWORD state = KOV::UIX_CmdState_Disabled;
    return !handler.IsNull() && SUCCEEDED(handler->OnGetItemState(command, 0, owner, &state)) ? state
                                                                                              : KOV::UIX_CmdState_Disabled;
}

HRESULT CommandCollection::Execute(DWORD id, KOV::IUIX_Obj* owner) const {
    const ComPtr<Command> command = CommandOf(id);
    const ComPtr<KOV::IUIX_CmdHandler> handler = command.IsNull() ? nullptr : command->Handler();
    return handler.IsNull() ? E_INVALIDARG : handler->OnNotify(1, command, 0, owner);
}

void CommandCollection::AddObserver(CommandObserver* observer) {
    const std::scoped_lock hold(m_lock);
    m_observers.push_back(observer);
}

void CommandCollection::RemoveObserver(CommandObserver* observer) {
    const std::scoped_lock hold(m_lock);
    std::erase(m_observers, observer);
}

void CommandCollection::Clear() {
    for (const DWORD id : Ids()) {
        Delete(id);
    }
}

ComPtr<CommandCollection::Command> CommandCollection::CommandOf(DWORD id) const {
    const std::scoped_lock hold(m_lock);
    const auto found =
        std::find_if(m_commands.begin(), m_commands.end(), [&](const auto& command) { return command->Id() == id; });
    return found != m_commands.end() ? *found : ComPtr<Command>();
}

void CommandCollection::Tell(const std::function<void(CommandObserver&)>& function) const {
    std::vector<CommandObserver*> observers;
    {
        const std::scoped_lock hold(m_lock);
        observers = m_observers;
    }
    for (CommandObserver* const observer : observers) {
        {
            const std::scoped_lock hold(m_lock);
            if (std::find(m_observers.begin(), m_observers.end(), observer) == m_observers.end()) {
                continue;
            }
        }
        function(*observer);
    }
}
