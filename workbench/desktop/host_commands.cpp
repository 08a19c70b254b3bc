#include "workbench/desktop/host_commands.h"

#include "platform/bstr.h"
#include "platform/errors.h"
#include "workbench/core/failure.h"
#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/theme/icons.h"

namespace {

class Handler final : public cCoClassUnknownT<KOV::IUIX_CmdHandler> {
public:
    Handler(std::function<void()> run, std::function<bool()> may_run) : m_run(std::move(run)), m_may_run(std::move(may_run)) {}

    HRESULT CmdHandler_Reserved3() override { return E_NOTIMPL; }
    HRESULT CmdHandler_Reserved4() override { return E_NOTIMPL; }
    HRESULT OnGetItemState(KOV::IUIX_Cmd*, DWORD, KOV::IUIX_Obj*, DWORD* out_state) override {
        if (out_state == nullptr) {
            return E_POINTER;
        }
        *out_state = !m_may_run || m_may_run() ? KOV::UIX_CmdState_Enabled : KOV::UIX_CmdState_Disabled;
        return S_OK;
    }
    HRESULT CmdHandler_Reserved6() override { return E_NOTIMPL; }
    HRESULT OnNotify(DWORD, KOV::IUIX_Cmd*, DWORD, KOV::IUIX_Obj*) override {
        // By a key it may come in a state in which it can't be used.
        if (!m_may_run || m_may_run()) {
            m_run();
        }
        return S_OK;
    }
    HRESULT CmdHandler_Reserved8() override { return E_NOTIMPL; }

private:
    const std::function<void()> m_run;
    const std::function<bool()> m_may_run;
};

} // namespace

HostCommands::HostCommands(Host& host, const std::vector<HostCommand>& commands) : m_host(host) {
    for (const HostCommand& one : commands) {
        ComPtr<KOV::IUIX_Cmd> command;
        const Bstr name{std::wstring_view(one.name)};
        Check(host.Commands().AddNew(name.m_str, nullptr, MakeObject<Handler>(one.run, one.may_run), &command));
        DWORD id = 0;
        Check(command->get_ID(&id));
        Check(command->put_Title(one.title));
        Check(command->put_Tip(one.tip));
        if (one.icon != nullptr) {
            Check(command->put_Icon(MakeImage(GetIcon(one.icon))));
        }
        m_keys[id] = one.keys;
    }
}

HostCommands::~HostCommands() {
    for (const auto& [id, keys] : m_keys) {
        m_host.Commands().Delete(id);
    }
}
