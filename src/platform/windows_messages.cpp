#include "platform/windows_messages.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "platform/errors_detail.h"

namespace {

constexpr std::size_t most_messages = 10'000;

struct Window {
    std::wstring text;
    bool is_shown = false;
};

struct Queue {
    std::mutex lock;
    std::condition_variable has_message;
    std::deque<MSG> messages;
    std::function<void()> waker;
    std::map<HWND, Window> windows;
    std::uintptr_t last_window = 0;
    std::array<BYTE, 256> keys{};
};

Queue& TheQueue() {
    static Queue queue;
    return queue;
}

thread_local DWORD message_time = 0;

DWORD Now() {
    const auto elapsed = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}

BOOL Post(Queue& queue, HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (queue.messages.size() >= most_messages) {
        return FailWith(ERROR_NOT_ENOUGH_QUOTA);
    }
    queue.messages.push_back({window, message, wparam, lparam, Now(), {}});
    queue.has_message.notify_one();
    if (queue.waker) {
        queue.waker();
    }
    return TRUE;
}

} // namespace

BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    if (window != nullptr && !queue.windows.contains(window)) {
        return FailWith(ERROR_INVALID_WINDOW_HANDLE);
    }
    return Post(queue, window, message, wparam, lparam);
}

BOOL PeekMessageW(MSG* out_message, HWND window, UINT first, UINT last, UINT remove) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    const auto found = std::find_if(queue.messages.begin(), queue.messages.end(), [&](const MSG& message) {
        const bool is_in_range = (first == 0 && last == 0) || (message.message >= first && message.message <= last);
        return (window == nullptr || message.hwnd == window) && is_in_range;
    });
    if (found == queue.messages.end()) {
        return FALSE;
    }
    *out_message = *found;
    if ((remove & PM_REMOVE) != 0) {
        message_time = found->time;
        queue.messages.erase(found);
    }
    return TRUE;
}

LONG GetMessageTime() { return static_cast<LONG>(message_time); }

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL, DWORD milliseconds, DWORD) {
    if (count != 0 || handles != nullptr) {
        FailWith(ERROR_NOT_SUPPORTED);
        return WAIT_FAILED;
    }
    Queue& queue = TheQueue();
    std::unique_lock guard(queue.lock);
    const auto has_message = [&] { return !queue.messages.empty(); };
    if (milliseconds == INFINITE) {
        queue.has_message.wait(guard, has_message);
        return WAIT_OBJECT_0;
    }
    return queue.has_message.wait_for(guard, std::chrono::milliseconds(milliseconds), has_message) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

void SetMessageWaker(std::function<void()> waker) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    queue.waker = std::move(waker);
}

HWND CreateHostWindow() {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    const auto window = reinterpret_cast<HWND>(++queue.last_window);
    queue.windows.emplace(window, Window());
    return window;
}

BOOL DestroyWindow(HWND window) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    if (queue.windows.erase(window) == 0) {
        return FailWith(ERROR_INVALID_WINDOW_HANDLE);
    }
    std::erase_if(queue.messages, [&](const MSG& message) { return message.hwnd == window; });
    return TRUE;
}

BOOL SetWindowTextW(HWND window, LPCWSTR text) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    const auto found = queue.windows.find(window);
    if (found == queue.windows.end()) {
        return FailWith(ERROR_INVALID_WINDOW_HANDLE);
    }
    found->second.text = text == nullptr ? L"" : text;
    return Post(queue, window, WM_SETTEXT, 0, 0);
}

int GetWindowTextW(HWND window, LPWSTR buffer, int size) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    const auto found = queue.windows.find(window);
    if (found == queue.windows.end()) {
        return FailWith(ERROR_INVALID_WINDOW_HANDLE);
    }
    if (buffer == nullptr || size <= 0) {
        return 0;
    }
    const std::size_t count = std::min(found->second.text.size(), static_cast<std::size_t>(size) - 1);
    std::char_traits<wchar_t>::copy(buffer, found->second.text.data(), count);
    buffer[count] = 0;
    return static_cast<int>(count);
}

BOOL ShowWindow(HWND window, int command) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    const auto found = queue.windows.find(window);
    if (found == queue.windows.end()) {
        return FailWith(ERROR_INVALID_WINDOW_HANDLE);
    }
    const bool was_shown = std::exchange(found->second.is_shown, command != SW_HIDE);
    Post(queue, window, WM_SHOWWINDOW, found->second.is_shown ? 1 : 0, 0);
    return was_shown ? TRUE : FALSE;
}

SHORT GetKeyState(int key) {
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    if (key < 0 || key >= static_cast<int>(queue.keys.size())) {
        return 0;
    }
    const BYTE state = queue.keys[static_cast<std::size_t>(key)];
    const int down = (state & 0x80) != 0 ? 0x8000 : 0;
    return static_cast<SHORT>(down | (state & 1));
}

BOOL SetKeyboardState(BYTE* states) {
    if (states == nullptr) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    Queue& queue = TheQueue();
    const std::lock_guard guard(queue.lock);
    std::copy_n(states, queue.keys.size(), queue.keys.begin());
    return TRUE;
}
