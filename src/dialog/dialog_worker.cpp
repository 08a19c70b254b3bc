#include "dialog/dialog_worker.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "platform/errors.h"
#include "platform/windows_messages.h"

namespace {

bool IsRunning(const std::future<void>& task) {
    return task.valid() && task.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
}

} // namespace

bool DialogWorker::Start(std::function<void()> function, const std::wstring& name) {
    TRACE_ENTER();
    if (IsUnderWay()) {
        TRACE_FORMAT(LogLevel::warning, L"Failed to start async function '{}' while current async operation is in progress",
                     name);
        TRACE_LEAVE(L"false");
        return false;
    }
    TRACE_FORMAT(LogLevel::information, L"Starting async function '{}'", name);
    const auto run = [function = std::move(function), name] {
        try {
            function();
        } catch (...) {
            // The window stays as it is, and can still be closed.
            TRACE_FORMAT(LogLevel::error, L"Async function '{}' failed", name);
        }
    };
    try {
        m_async_result = std::async(std::launch::async, run);
    } catch (const std::system_error&) {
        TRACE_FORMAT(LogLevel::error, L"Fail to schedule the chore!");
        TRACE_LEAVE(L"false");
        return false;
    }
    TRACE_FORMAT(LogLevel::information, L"Started async function '{}'", name);
    TRACE_LEAVE(L"true");
    return true;
}

HRESULT DialogWorker::Complete(HWND window, std::function<void()> function, std::wstring name) {
    TRACE_ENTER();
    auto context = std::make_unique<AsyncCallbackContext>(AsyncCallbackContext{std::move(function), std::move(name)});
    const auto parameter = reinterpret_cast<WPARAM>(context.get());
    const std::scoped_lock guard(m_lock); // until it is posted: its message finds it
    m_posted = std::move(context);
    if (PostMessageW(window, EventCodes::async_complete, parameter, 0) == FALSE) {
        const HRESULT result = HRESULT_FROM_WIN32(GetLastError());
        context = std::move(m_posted);
        CHECK_OR_RETURN(result);
    }
    TRACE_RETURN(S_OK);
}

bool DialogWorker::IsUnderWay() const {
    const std::scoped_lock guard(m_lock);
    return m_posted != nullptr || IsRunning(m_async_result);
}

std::unique_ptr<AsyncCallbackContext> DialogWorker::Take(std::intptr_t parameter) {
    std::unique_ptr<AsyncCallbackContext> context;
    {
        const std::scoped_lock guard(m_lock);
        if (m_posted != nullptr && reinterpret_cast<std::intptr_t>(m_posted.get()) == parameter) {
            context = std::move(m_posted);
        }
    }
    if (context != nullptr) {
        if (IsRunning(m_async_result)) {
            TRACE_FORMAT(LogLevel::information, L"Waiting for async result to call complete function '{}'", context->name);
        }
        // Short: to post was its last act. What the task holds goes here.
        m_async_result.wait();
        m_async_result = {};
    }
    return context;
}

void DialogWorker::End() {
    if (m_async_result.valid()) {
        m_async_result.wait();
        m_async_result = {};
    }
    std::unique_ptr<AsyncCallbackContext> lost;
    const std::scoped_lock guard(m_lock);
    lost.swap(m_posted);
}
