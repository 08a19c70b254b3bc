#pragma once

/// The way from any thread to the host's main thread.

#include <functional>

#include "host/instance.h"
#include "host/object_bases.h"

class ThreadSafeCall final : public cCoClassUnknownT<KOV::IKOV_ThreadSafeCallback> {
public:
    using Function = std::function<HRESULT()>;

    explicit ThreadSafeCall(Function function) : m_function(std::move(function)) {}

    /// Runs `function` on the host's main thread and comes back after it, without a time limit; on the main thread itself it
    /// runs inline. Gives the function's result, `E_FAIL` when it threw, or the host's own failure to run it.
    static HRESULT Call(KOV::IKOV_Inst* kov_inst, Function function);

    HRESULT OnCallback() override;

private:
    ~ThreadSafeCall() override = default;

    Function m_function;
};
