#include "dialog/dialog_worker.h"

#include <chrono>
#include <exception>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "host/tools/thread_safe_call.h"
#include "platform/errors.h"
#include "platform/windows_messages.h"

namespace {

bool IsRunning(const std::future<void>& task) {
    return task.valid() && task.wait_for(std::chrono::seconds(0)) != std::future_status::ready;
}

HRESULT PostResult(HWND window, WPARAM parameter) {
    return PostMessageW(window, EventCodes::async_complete, parameter, 0) != FALSE ? S_OK : HRESULT_FROM_WIN32(GetLastError());
}

} // namespace

HRESULT RunGuarded(const std::function<void()>& function) {
    INTERFACE_TRY
    function();
    return S_OK;
    INTERFACE_CATCH_SHORT(nullptr)
}

DialogWorker::DialogWorker(KOV::IKOV_Inst* kov_instance) : m_kov_instance(kov_instance) {}

bool DialogWorker::Start(HWND window, std::function<void()> function, const std::wstring& name, AsyncCallbackContext complete) {
    TRACE_ENTER();
    if (IsUnderWay()) {
        TRACE_FORMAT(LogLevel::warning, L"Failed to start async function '{}' while current async operation is in progress",
                     name);
        TRACE_LEAVE(L"false");
        return false;
    }
    TRACE_FORMAT(LogLevel::information, L"Starting async function '{}'", name);
    try {
        m_context = std::make_unique<AsyncCallbackContext>(std::move(complete));
        m_is_lost = false;
        m_async_result = std::async(std::launch::async, [this, window, function = std::move(function),
                                                         parameter = reinterpret_cast<WPARAM>(m_context.get())] {
            (void)RunGuarded(function); // logged there, and the window hears of the end
            Hand(window, parameter);
        });
    } catch (const std::exception&) {
        m_context.reset();
        TRACE_FORMAT(LogLevel::error, L"Fail to schedule the chore!");
        TRACE_LEAVE(L"false");
        return false;
    }
    TRACE_FORMAT(LogLevel::information, L"Started async function '{}'", name);
    TRACE_LEAVE(L"true");
    return true;
}

/// On the worker, as its last act.
void DialogWorker::Hand(HWND window, WPARAM parameter) {
    HRESULT result = PostResult(window, parameter);
    if (FAILED(result) && result != HRESULT_FROM_WIN32(ERROR_INVALID_WINDOW_HANDLE)) {
        // The queue is full. The window's thread, which empties it, gets to this call some time, and then there is room.
        result = ThreadSafeCall::Call(m_kov_instance, [window, parameter] { return PostResult(window, parameter); });
    }
    if (FAILED(result)) {
        TRACE_FORMAT(LogLevel::error, L"The window doesn't hear of a result, result={}", result);
        m_is_lost = true;
    }
}

bool DialogWorker::IsUnderWay() const { return IsRunning(m_async_result) || (m_context != nullptr && !m_is_lost); }

std::unique_ptr<AsyncCallbackContext> DialogWorker::Take(std::intptr_t parameter) {
    if (m_context == nullptr || reinterpret_cast<std::intptr_t>(m_context.get()) != parameter) {
        return nullptr;
    }
    if (IsRunning(m_async_result)) {
        TRACE_FORMAT(LogLevel::information, L"Waiting for async result to call complete function '{}'", m_context->name);
    }
    // Short: to post was its last act. What the task holds goes here.
    m_async_result.wait();
    m_async_result = {};
    return std::move(m_context);
}

std::shared_ptr<const void> DialogWorker::Leave() {
    if (m_context == nullptr && !m_async_result.valid()) {
        return nullptr;
    }
    struct Left {
        std::unique_ptr<AsyncCallbackContext> context;
        std::future<void> task;
    };
    return std::make_shared<Left>(Left{std::move(m_context), std::move(m_async_result)});
}
