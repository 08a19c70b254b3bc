#pragma once

// Handlers that a module would give to the host, made of functions.

#include <functional>

#include "host/events.h"
#include "host/tools/window_bases.h"

class ScriptedEventHandler final : public cCoClassUnknownT<KOV::IEventHandler> {
public:
    explicit ScriptedEventHandler(std::function<HRESULT(DWORD event_id, IUnknown* source)> function)
        : m_function(std::move(function)) {}
    HRESULT OnEvent(DWORD event_id, DWORD, IUnknown* source, IUnknown*) override { return m_function(event_id, source); }

private:
    const std::function<HRESULT(DWORD, IUnknown*)> m_function;
};

class ScriptedTimerHandler final : public cCoClassUnknownT<KOV::IKOV_TimerHandler> {
public:
    explicit ScriptedTimerHandler(std::function<void(DWORD timer_id)> function) : m_function(std::move(function)) {}
    HRESULT OnTimer(DWORD timer_id) override {
        m_function(timer_id);
        return S_OK;
    }

private:
    const std::function<void(DWORD)> m_function;
};

class ScriptedCommandHandler final : public KOV::uiCmdHandlerBase {
public:
    HRESULT OnGetItemState(KOV::IUIX_Cmd*, DWORD, KOV::IUIX_Obj* owner, DWORD* out_state) override {
        owners.push_back(owner);
        return on_state ? on_state(out_state) : S_FALSE;
    }
    HRESULT OnNotify(DWORD code, KOV::IUIX_Cmd* command, DWORD, KOV::IUIX_Obj* owner) override {
        owners.push_back(owner);
        codes.push_back(code);
        return on_notify ? on_notify(command) : S_OK;
    }

    std::function<HRESULT(DWORD* out_state)> on_state;
    std::function<HRESULT(KOV::IUIX_Cmd* command)> on_notify;
    std::vector<KOV::IUIX_Obj*> owners;
    std::vector<DWORD> codes;
};
