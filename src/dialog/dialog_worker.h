#pragma once

/// The one worker of a dialog: work beside the window, whose result comes back through the window's message queue.

#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>

#include "platform/types.h"

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

class DialogWorker {
public:
    DialogWorker() = default;
    DialogWorker(const DialogWorker&) = delete;
    DialogWorker& operator=(const DialogWorker&) = delete;

    /// Runs `function` on a thread of its own; it ends with `Complete`. False, and nothing runs, while one is under way. Never
    /// blocks. The window's thread.
    bool Start(std::function<void()> function, const std::wstring& name);
    /// Posts `function` to the window; a failure frees it. The worker's last act.
    HRESULT Complete(HWND window, std::function<void()> function, std::wstring name);

    /// Whether a task runs, or its result was posted and not yet taken. The window's thread.
    bool IsUnderWay() const;
    /// The result that the message's `parameter` stands for, once the worker that posted it has ended; null for any other. The
    /// window's thread.
    std::unique_ptr<AsyncCallbackContext> Take(std::intptr_t parameter);
    /// Waits for the worker and frees a result that nobody took: the window is gone. The window's thread.
    void End();

private:
    std::future<void> m_async_result;
    mutable std::mutex m_lock;
    /// Posted and not yet taken. Held here and not by its message, which is lost with its window.
    std::unique_ptr<AsyncCallbackContext> m_posted;
};
