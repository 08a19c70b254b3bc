#include "workbench/core/timers.h"

#include <algorithm>
#include <map>
#include <optional>

namespace {

struct Timer {
    ComPtr<KOV::IKOV_TimerHandler> handler;
    MainLoop::Clock::time_point due;
    bool is_posted = false;
};

} // namespace

/// Shared with what was posted to the loop, which may run after the timers have gone.
struct Timers::State : std::enable_shared_from_this<State> {
    explicit State(MainLoop& main_loop) : loop(main_loop) {}

    void Watch();
    void PostDue(MainLoop::Clock::time_point now);
    std::optional<MainLoop::Clock::time_point> NextDue() const;
    void Fire(DWORD id);

    MainLoop& loop;
    std::mutex lock;
    std::condition_variable changed;
    std::map<DWORD, Timer> timers;
    DWORD last_id = 0;
    bool is_ending = false;
    /// Made for the first timer.
    std::thread watcher;
};

void Timers::State::Watch() {
    std::unique_lock hold(lock);
    while (!is_ending) {
        PostDue(MainLoop::Clock::now());
        if (const auto due = NextDue()) {
            changed.wait_until(hold, *due);
        } else {
            changed.wait(hold);
        }
    }
}

void Timers::State::PostDue(MainLoop::Clock::time_point now) {
    for (auto& [id, timer] : timers) {
        if (!timer.is_posted && timer.due <= now) {
            timer.is_posted = true;
            loop.Post([state = shared_from_this(), id = id] { state->Fire(id); });
        }
    }
}

std::optional<MainLoop::Clock::time_point> Timers::State::NextDue() const {
    std::optional<MainLoop::Clock::time_point> next;
    for (const auto& [id, timer] : timers) {
        if (!timer.is_posted && (!next || timer.due < *next)) {
            next = timer.due;
        }
    }
    return next;
}

void Timers::State::Fire(DWORD id) {
    ComPtr<KOV::IKOV_TimerHandler> handler;
    {
        const std::scoped_lock hold(lock);
        const auto found = timers.find(id);
        if (found == timers.end()) {
            return;
        }
        handler = std::move(found->second.handler);
        timers.erase(found);
    }
    handler->OnTimer(id);
}

Timers::Timers(MainLoop& loop) : m_state(std::make_shared<State>(loop)) {}

Timers::~Timers() {
    Clear();
    {
        const std::scoped_lock hold(m_state->lock);
        m_state->is_ending = true;
    }
    m_state->changed.notify_all();
    if (m_state->watcher.joinable()) {
        m_state->watcher.join();
    }
}

void Timers::Start(KOV::IKOV_TimerHandler* handler, DWORD milliseconds, DWORD* out_id) {
    const auto due = MainLoop::Clock::now() + std::chrono::milliseconds(milliseconds);
    const std::scoped_lock hold(m_state->lock);
    if (!m_state->watcher.joinable()) {
        m_state->watcher = std::thread([state = m_state.get()] { state->Watch(); });
    }
    *out_id = ++m_state->last_id;
    m_state->timers.emplace(*out_id, Timer{handler, due});
    m_state->changed.notify_all();
}

bool Timers::Stop(DWORD id) {
    Timer removed;
    const std::scoped_lock hold(m_state->lock);
    const auto found = m_state->timers.find(id);
    if (found == m_state->timers.end()) {
        return false;
    }
    removed = std::move(found->second);
    m_state->timers.erase(found);
    return true;
}

void Timers::Clear() {
    std::map<DWORD, Timer> removed;
    const std::scoped_lock hold(m_state->lock);
    removed.swap(m_state->timers);
}
