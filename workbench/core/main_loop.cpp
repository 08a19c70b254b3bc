#include "workbench/core/main_loop.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <utility>

#include "platform/errors.h"

namespace {

/// Wakes the loop; its own, so it reaches nobody else.
constexpr UINT WakeMessage = 0x8000 + 0x4B56;
/// The number of a wake that belongs to no task.
constexpr std::uintptr_t NoTask = 0;
std::atomic<std::uintptr_t> last_task = NoTask;

} // namespace

/// A call that another thread waits for.
struct MainLoop::WaitingCall {
    enum class State { queued, running, done, withdrawn };

    std::mutex lock;
    std::condition_variable changed;
    State state = State::queued;
    HRESULT result = E_ABORT;
    std::function<HRESULT()> function;

    void Run() {
        {
            const std::scoped_lock hold(lock);
            if (state != State::queued) {
                return;
            }
            state = State::running;
        }
        const HRESULT outcome = function();
        Finish(outcome);
    }
    /// Ends it with `E_ABORT` unless it has begun.
    void Withdraw() {
        const std::scoped_lock hold(lock);
        if (state == State::queued) {
            state = State::done;
            changed.notify_all();
        }
    }
    void Finish(HRESULT outcome) {
        const std::scoped_lock hold(lock);
        result = outcome;
        state = State::done;
        changed.notify_all();
    }
};

/// Ends the call with `E_ABORT` when its task is dropped without having run.
class MainLoop::QueuedCall {
public:
    explicit QueuedCall(std::shared_ptr<WaitingCall> call) : m_call(std::move(call)) {}
    ~QueuedCall() { m_call->Withdraw(); }
    QueuedCall(const QueuedCall&) = delete;
    QueuedCall& operator=(const QueuedCall&) = delete;
    void Run() { m_call->Run(); }

private:
    std::shared_ptr<WaitingCall> m_call;
};

MainLoop::~MainLoop() {
    std::deque<Task> dropped;
    const std::scoped_lock hold(m_lock);
    m_closed = true;
    dropped.swap(m_tasks);
}

void MainLoop::Post(std::function<void()> task) {
    const std::scoped_lock hold(m_lock);
    if (m_closed) {
        return;
    }
    m_tasks.push_back({++last_task, std::move(task)});
    Wake(m_tasks.back().number);
}

HRESULT MainLoop::Call(std::function<HRESULT()> function, LONG timeout_ms) {
    if (IsMainThread()) {
        return function();
    }
    const auto call = std::make_shared<WaitingCall>();
    call->function = std::move(function);
    {
        const std::scoped_lock hold(m_lock);
        if (m_refuses_calls) {
            return E_ABORT;
        }
        std::erase_if(m_calls, [](const auto& known) { return known.expired(); });
        m_calls.push_back(call);
    }
    Post([queued = std::make_shared<QueuedCall>(call)] { queued->Run(); });

    std::unique_lock hold(call->lock);
    const auto is_done = [&] { return call->state == WaitingCall::State::done; };
    if (timeout_ms >= 0 && !call->changed.wait_for(hold, std::chrono::milliseconds(timeout_ms), is_done) &&
        call->state == WaitingCall::State::queued) {
        call->state = WaitingCall::State::withdrawn;
        return HRESULT_FROM_WIN32(ERROR_TIMEOUT);
    }
    // One that runs already can't be taken back, and what it uses lives on the caller's stack.
    call->changed.wait(hold, is_done);
    return call->result;
}

void MainLoop::RefuseCalls(bool refuse) {
    std::vector<std::weak_ptr<WaitingCall>> calls;
    {
        const std::scoped_lock hold(m_lock);
        m_refuses_calls = refuse;
        if (refuse) {
            calls.swap(m_calls);
        }
    }
    for (const auto& known : calls) {
        if (const auto call = known.lock()) {
            call->Withdraw();
        }
    }
}

void MainLoop::Run() { RunUntil(Clock::time_point::max()); }

bool MainLoop::RunUntil(Clock::time_point deadline) {
    for (;;) {
        Drain();
        {
            const std::scoped_lock hold(m_lock);
            if (std::exchange(m_quit, false)) {
                return true;
            }
            if (!m_tasks.empty()) {
                continue;
            }
        }
        DWORD wait = INFINITE;
        if (deadline != Clock::time_point::max()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                return false;
            }
            wait = static_cast<DWORD>(std::min<std::int64_t>(left, 60'000));
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, wait, QS_ALLINPUT);
    }
}

bool MainLoop::RunWith(std::function<void()> work, Clock::time_point deadline) {
    // On the heap: the work outlives this call when the deadline comes first.
    struct Work {
        std::function<void()> function;
        std::exception_ptr failure;
    };
    const auto shared = std::make_shared<Work>(Work{std::move(work), nullptr});
    std::thread worker([this, shared] {
        try {
            shared->function();
        } catch (...) {
            shared->failure = std::current_exception();
        }
        Quit();
    });
    if (!RunUntil(deadline)) {
        worker.detach();
        return false;
    }
    worker.join();
    shared->function = nullptr;
    if (shared->failure) {
        std::rethrow_exception(shared->failure);
    }
    return true;
}

void MainLoop::Quit() {
    {
        const std::scoped_lock hold(m_lock);
        m_quit = true;
    }
    Wake(NoTask);
}

void MainLoop::Drain() {
    while (RunOne()) {
    }
}

bool MainLoop::RunOne() {
    MSG message;
    if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        return RunNextTask(std::numeric_limits<std::uintptr_t>::max()); // one whose wake found no room in the queue
    }
    if (message.hwnd == nullptr && message.message == WakeMessage) {
        (void)RunNextTask(message.wParam); // tasks and messages keep their order among each other
    } else if (on_message) {
        on_message(message);
    }
    return true;
}

bool MainLoop::HasWork() {
    MSG message;
    if (PeekMessageW(&message, nullptr, 0, 0, 0)) {
        return true;
    }
    const std::scoped_lock hold(m_lock);
    return !m_tasks.empty();
}

void MainLoop::Wake(std::uintptr_t number) {
    // When the queue is full the loop has something to wake for anyway.
    PostMessageW(nullptr, WakeMessage, number, 0);
}

bool MainLoop::RunNextTask(std::uintptr_t last) {
    std::function<void()> task;
    {
        const std::scoped_lock hold(m_lock);
        if (m_tasks.empty() || m_tasks.front().number > last) {
            return false;
        }
        task = std::move(m_tasks.front().function);
        m_tasks.pop_front();
    }
    task();
    return true;
}
