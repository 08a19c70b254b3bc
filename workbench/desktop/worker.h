#pragma once

/// Work off the main thread: what is asked of servers, one thing after the other on each bind.

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <QPointer>

#include "host/flag.h"
#include "host/object_bases.h"
#include "host/progress.h"
#include "platform/errors.h"
#include "workbench/core/errors.h"
#include "workbench/core/failure.h"
#include "workbench/core/main_loop.h"

/// How work ended.
struct Outcome {
    HRESULT result = S_OK;
    /// The words for a failure; may hold `<b>`.
    std::wstring message;

    bool HasSucceeded() const noexcept { return SUCCEEDED(result); }
    /// Also when the program ended its transfers.
    bool IsCanceled() const noexcept {
        return IsCanceledResult(result) || result == HRESULT_FROM_WIN32(ERROR_INTERNET_OPERATION_CANCELLED);
    }
};

/// Runs `work`; what it throws becomes the outcome.
Outcome OutcomeOf(const std::function<void()>& work) noexcept;

/// Work, what follows it, and how it is shown meanwhile.
struct Job {
    /// On the worker. May throw.
    std::function<void(KOV::IKOV_Flag* cancel)> work;
    /// On the main thread, from the loop; may be empty.
    std::function<void(const Outcome& outcome)> done;
    /// Is started before the work and stopped after it; its Cancel is seen as the flag. May be null.
    ComPtr<KOV::IKOV_ProgressMon> monitor;
    /// Whose `done` is: it isn't called once that has gone, as at the program's end. Nothing for one that needs nobody.
    std::optional<QPointer<const QObject>> owner = std::nullopt;

    bool IsHeard() const { return done && !(owner && owner->isNull()); }
};

/// A flag that is set by its owner, by the person who presses Cancel of `monitor`, and with `above`: the flag of the work that
/// this is a part of. Both may be null.
ComPtr<KOV::IKOV_Flag> MakeCancelFlag(ComPtr<KOV::IKOV_ProgressMon> monitor, ComPtr<KOV::IKOV_Flag> above = nullptr);

/// A thread with a queue. Post, ask and cancel: any thread.
class Worker {
public:
    /// `loop` outlives the worker.
    explicit Worker(MainLoop& loop);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Post(Job job);
    /// Nothing is to be done, and whoever waited has heard of what was done.
    bool IsIdle() const { return *m_pending == 0; }
    bool IsThisThread() const { return std::this_thread::get_id() == m_thread.get_id(); }
    /// The flag of the job that runs; null while none does.
    ComPtr<KOV::IKOV_Flag> RunningFlag() const;
    /// Sets the flag of all jobs that are there now.
    void Cancel();
    /// Drops what hasn't begun, and waits for the end of what has, which needs the main thread no more. For good; so does the
    /// destructor.
    void End();

private:
    struct Queued {
        Job job;
        ComPtr<KOV::IKOV_Flag> flag;
    };

    void Run();
    void RunJob(Queued& queued);

    MainLoop& m_loop;
    mutable std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<Queued> m_queue;
    /// The flag of the job that runs.
    ComPtr<KOV::IKOV_Flag> m_running;
    /// Jobs that nobody has heard the end of. Shared with the tasks that tell it, which may outlive the worker.
    const std::shared_ptr<std::atomic<int>> m_pending = std::make_shared<std::atomic<int>>(0);
    bool m_is_ending = false;
    std::thread m_thread;
};

/// Runs `work` on the worker and turns Qt's loop meanwhile, so that all windows stay alive. Main thread.
Outcome RunAndTurn(Worker& worker, std::function<void(KOV::IKOV_Flag* cancel)> work, ComPtr<KOV::IKOV_ProgressMon> monitor);
