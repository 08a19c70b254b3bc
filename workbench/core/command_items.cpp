#include "workbench/core/command_items.h"

#include "workbench/core/errors.h"

namespace {

/// How the host knows its own lists behind the interfaces, which show nothing of them.
struct ICommandEntries : IUnknown {
    virtual CommandEntries& Entries() = 0;

protected:
    ~ICommandEntries() = default;
};

} // namespace
KOV_INTERFACE_ID(ICommandEntries, "{0E6E1F0C-5D1C-4B5A-9B57-50F4B0B9D0A1}");

namespace {

template <class Interface>
class CommandItems : public cCoClassDispatchT<Interface, ICommandEntries> {
public:
    HRESULT InsertItem(KOV::IUIX_Cmd* command, LONG index) override {
        DWORD id = 0;
        if (command == nullptr || FAILED(command->get_ID(&id)) || id == 0) {
            return E_INVALIDARG;
        }
        return AtBorder(nullptr, [&] { return m_entries.Insert({id, nullptr}, index); });
    }
    HRESULT InsertSeparator(LONG index) override {
        return AtBorder(nullptr, [&] { return m_entries.Insert({}, index); });
    }
    CommandEntries& Entries() override { return m_entries; }

protected:
    void* Find(REFIID id) noexcept override {
        return id == __uuidof(KOV::IUIX_CmdItems) ? static_cast<KOV::IUIX_CmdItems*>(this)
                                                  : cCoClassDispatchT<Interface, ICommandEntries>::Find(id);
    }

    CommandEntries m_entries;
};

class CommandGroup final : public CommandItems<KOV::IUIX_CmdItems> {};

class CommandMenu final : public CommandItems<KOV::IUIX_CmdMenu> {};

class CommandPanel final : public CommandItems<KOV::IUIX_CmdPanel> {
public:
    HRESULT put_ID(DWORD id) override {
        m_entries.id = id;
        return S_OK;
    }
    HRESULT put_Title(LPCWSTR title) override {
        return AtBorder(nullptr, [&] {
            m_entries.title = title != nullptr ? title : L"";
            return S_OK;
        });
    }
};

} // namespace

HRESULT CommandEntries::Insert(CommandEntry entry, LONG index) {
    const auto count = static_cast<LONG>(entries.size());
    if (index < -1 || index > count) {
        return E_INVALIDARG;
    }
    entries.insert(entries.begin() + (index == -1 ? count : index), std::move(entry));
    if (changed) {
        changed();
    }
    return S_OK;
}

ComPtr<KOV::IUIX_CmdItems> MakeCommandGroup() { return MakeObject<CommandGroup>(); }

ComPtr<KOV::IUIX_CmdMenu> MakeCommandMenu() { return MakeObject<CommandMenu>(); }

ComPtr<KOV::IUIX_CmdPanel> MakeCommandPanel() { return MakeObject<CommandPanel>(); }

CommandEntries* EntriesOf(IUnknown* items) {
    const auto known = ComPtr<IUnknown>(items).As<ICommandEntries>();
    return known.IsNull() ? nullptr : &known->Entries();
}
