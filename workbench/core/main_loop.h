#pragma once

/// The loop of the host's main thread: runs what other threads hand to it and drains the platform's message queue.

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/types.h"
#include "platform/windows_messages.h"

/// The thread that makes the loop is the main thread. One loop a process.
class MainLoop {
public:
    using Clock = std::chrono::steady_clock;

    MainLoop() = default;
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;
    /// Calls that still wait come back with `E_ABORT`.
    ~MainLoop();

    bool IsMainThread() const noexcept { return std::this_thread::get_id() == m_main_thread; }

    /// Queues a task; it runs in order at the next turn of the loop. Any thread.
    void Post(std::function<void()> task);

    /// Runs `function` on the main thread and gives its result: at once when called there, else through the loop. After
    /// `timeout_ms` without having begun it is withdrawn, and the result is `HRESULT_FROM_WIN32(ERROR_TIMEOUT)`; negative
    /// waits for ever. Any thread.
    HRESULT Call(std::function<HRESULT()> function, LONG timeout_ms);
    /// From now on calls from other threads come back with `E_ABORT`, those that wait too, until it is called with false. A
    /// program that ends doesn't let its workers wait for a thread that waits for them.
    void RefuseCalls(bool refuse);

    /// Turns until `Quit`. Main thread.
    void Run();
    /// Turns until `Quit` or the deadline; true when it was `Quit`. Main thread.
    bool RunUntil(Clock::time_point deadline);
    /// Runs `work` on a thread of its own and turns until it is done; an exception of `work` comes out here. False when
    /// the deadline came first: the work then goes on, and the only way out is to end the process. Main thread.
    bool RunWith(std::function<void()> work, Clock::time_point deadline = Clock::time_point::max());
    /// Ends `Run` and `RunUntil`. Any thread.
    void Quit();
    /// Runs what waits now and comes back. Main thread.
    void Drain();
    /// Runs the oldest task or hands out the oldest message: for a host whose loop is another one. False when nothing waited.
    /// Main thread.
    bool RunOne();
    bool HasWork();

    /// Gets each message of the platform's queue that isn't the loop's own; without it they are dropped. Main thread.
    std::function<void(const MSG&)> on_message;

private:
    struct WaitingCall;
    class QueuedCall;

    struct Task {
        /// Counts up over all loops of the process; the wake of a task carries it.
        std::uintptr_t number;
        std::function<void()> function;
    };

    void Wake(std::uintptr_t number);
    /// Runs the oldest task when its number isn't above `last`; false when there was none.
    bool RunNextTask(std::uintptr_t last);

    const std::thread::id m_main_thread = std::this_thread::get_id();
    std::mutex m_lock;
    std::deque<Task> m_tasks;
    std::vector<std::weak_ptr<WaitingCall>> m_calls;
    bool m_refuses_calls = false;
    bool m_quit = false;
    bool m_closed = false;
};
