#include "host/tools/thread_safe_call.h"

HRESULT ThreadSafeCall::Call(KOV::IKOV_Inst* kov_inst, Function function) {
    if (kov_inst == nullptr || !function) {
        return E_INVALIDARG;
    }
    const ComPtr<ThreadSafeCall> call = MakeObject<ThreadSafeCall>(std::move(function));
    if (call.IsNull()) {
        return E_OUTOFMEMORY;
    }
    return kov_inst->ThreadSafeCall(call, -1);
}

HRESULT ThreadSafeCall::OnCallback() {
    // The host's loop is on the stack below: nothing may be thrown through it.
    try {
        return m_function();
    } catch (...) {
        return E_FAIL;
    }
}
