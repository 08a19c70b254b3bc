#pragma once

/// The one worker of a dialog: work beside the window, whose result comes back through the window's message queue.

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "host/instance.h"

namespace EventCodes {
/// A worker's result is there; the parameter names it.
constexpr UINT async_complete = 6548;
/// The parameter is 1 to show the wait indicator and 0 to hide it.
constexpr UINT async_show_wait_progress = 6549;
} // namespace EventCodes

/// What comes back: what to run in the window's thread, and its name for the log.
struct AsyncCallbackContext {
    std::function<void()> function;
    std::wstring name;
};

/// All functions belong to the window's thread.
class DialogWorker {
public:
    explicit DialogWorker(KOV::IKOV_Inst* kov_instance);
    DialogWorker(const DialogWorker&) = delete;
    DialogWorker& operator=(const DialogWorker&) = delete;

    /// Runs `function` on a thread of its own, and hands `complete` to `window` when it has ended, whether it came to its end or
    /// threw. False, and nothing runs, while one is under way. Never blocks. The object lives as long as `function` holds it.
    bool Start(HWND window, std::function<void()> function, const std::wstring& name, AsyncCallbackContext complete);

    /// Whether a task runs, or its result is on its way to the window.
    bool IsUnderWay() const;
    /// The result that the message's `parameter` stands for, once the worker that posted it has ended; null for any other.
    std::unique_ptr<AsyncCallbackContext> Take(std::intptr_t parameter);
    /// All that is left, for a window that goes: the last reference waits for the worker, and a result that nobody took goes with
    /// it. Null when there is nothing.
    std::shared_ptr<const void> Leave();

private:
    void Hand(HWND window, WPARAM parameter);

    const ComPtr<KOV::IKOV_Inst> m_kov_instance;
    /// Held from the start to the end, so that nothing is left to fail when the work is done, and by the message never, which is
    /// lost with its window.
    std::unique_ptr<AsyncCallbackContext> m_context;
    /// No message stands for the result of the task that has ended.
    std::atomic<bool> m_is_lost = false;
    std::future<void> m_async_result;
};

/// Runs `function`; a failure that it throws is logged and becomes the result. Any thread.
HRESULT RunGuarded(const std::function<void()>& function);
