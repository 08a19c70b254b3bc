#include "workbench/desktop/worker.h"

#include <atomic>
#include <cstring>
#include <memory>

#include <QEventLoop>

#include "platform/text.h"
#include "workbench/core/value_objects.h"

namespace {

class CancelFlag final : public cCoClassDispatchT<KOV::IKOV_Flag> {
public:
    CancelFlag(ComPtr<KOV::IKOV_ProgressMon> monitor, ComPtr<KOV::IKOV_Flag> above)
        : m_monitor(std::move(monitor)), m_above(std::move(above)) {}

    HRESULT get_Value(VARIANT_BOOL* out_value) override {
        if (out_value == nullptr) {
            return E_POINTER;
        }
        VARIANT_BOOL is_canceled = VARIANT_FALSE;
        if (!m_is_set && (IsSet(m_above) || (!m_monitor.IsNull() && SUCCEEDED(m_monitor->get_Canceled(&is_canceled)) &&
                                             is_canceled != VARIANT_FALSE))) {
            m_is_set = true;
        }
        *out_value = m_is_set ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
    HRESULT put_Value(VARIANT_BOOL value) override {
        m_is_set = value != VARIANT_FALSE;
        return S_OK;
    }

private:
    const ComPtr<KOV::IKOV_ProgressMon> m_monitor;
    const ComPtr<KOV::IKOV_Flag> m_above;
    std::atomic<bool> m_is_set{false};
};

} // namespace

ComPtr<KOV::IKOV_Flag> MakeCancelFlag(ComPtr<KOV::IKOV_ProgressMon> monitor, ComPtr<KOV::IKOV_Flag> above) {
    return MakeObject<CancelFlag>(std::move(monitor), std::move(above));
}

Outcome OutcomeOf(const std::function<void()>& work) noexcept {
    try {
        work();
        return {};
    } catch (const Failure& failure) {
        return {failure.result, failure.message};
    } catch (const HostException& failure) {
        return {failure.Result(), WideFromUtf8(failure.what())};
    } catch (const std::exception& failure) {
        return {E_FAIL, L"Something went wrong: " + std::wstring(failure.what(), failure.what() + std::strlen(failure.what()))};
    }
}

Worker::Worker(MainLoop& loop) : m_loop(loop), m_thread([this] { Run(); }) {}

Worker::~Worker() { End(); }

void Worker::End() {
    std::deque<Queued> dropped;
    {
        const std::scoped_lock hold(m_lock);
        m_is_ending = true;
        dropped.swap(m_queue);
        m_changed.notify_all();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Worker::Post(Job job) {
    ComPtr<KOV::IKOV_Flag> flag = MakeCancelFlag(job.monitor);
    const std::scoped_lock hold(m_lock);
    if (m_is_ending) {
        return;
    }
    ++*m_pending;
    m_queue.push_back({std::move(job), std::move(flag)});
    m_changed.notify_all();
}

ComPtr<KOV::IKOV_Flag> Worker::RunningFlag() const {
    const std::scoped_lock hold(m_lock);
    return m_running;
}

void Worker::Cancel() {
    const std::scoped_lock hold(m_lock);
    for (const Queued& queued : m_queue) {
        queued.flag->put_Value(VARIANT_TRUE);
    }
    if (!m_running.IsNull()) {
        m_running->put_Value(VARIANT_TRUE);
    }
}

void Worker::Run() {
    for (;;) {
        Queued queued;
        {
            std::unique_lock hold(m_lock);
            m_changed.wait(hold, [&] { return m_is_ending || !m_queue.empty(); });
            if (m_queue.empty()) {
                return;
            }
            queued = std::move(m_queue.front());
            m_queue.pop_front();
            m_running = queued.flag;
        }
        RunJob(queued);
    }
}

void Worker::RunJob(Queued& queued) {
    Job& job = queued.job;
    if (!job.monitor.IsNull()) {
        job.monitor->Start();
    }
    Outcome outcome = OutcomeOf([&] { job.work(queued.flag); });
    if (!job.monitor.IsNull()) {
        job.monitor->Stop();
    }
    // What the work held goes here, before anybody hears that it is done.
    job.work = nullptr;
    {
        const std::scoped_lock hold(m_lock);
        m_running = nullptr;
    }
    m_loop.Post([job = std::move(job), outcome = std::move(outcome), pending = m_pending] {
        --*pending;
        if (job.IsHeard()) {
            job.done(outcome);
        }
    });
}

Outcome RunAndTurn(Worker& worker, std::function<void(KOV::IKOV_Flag* cancel)> work, ComPtr<KOV::IKOV_ProgressMon> monitor) {
    Outcome result;
    QEventLoop turning;
    bool is_done = false;
    worker.Post({std::move(work),
                 [&](const Outcome& outcome) {
                     result = outcome;
                     is_done = true;
                     turning.quit();
                 },
                 std::move(monitor)});
    while (!is_done) {
        turning.exec();
    }
    return result;
}
