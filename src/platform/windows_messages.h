#pragma once

/// Messages to windows: one ordered queue a process, which any thread fills and the host's loop drains.

#include <functional>

#include "platform/types.h"

using SHORT = std::int16_t;

constexpr UINT WM_SETTEXT = 0x0C;
constexpr UINT WM_SHOWWINDOW = 0x18;
constexpr UINT WM_KEYDOWN = 0x100;
constexpr int VK_SHIFT = 0x10;

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    /// Milliseconds of a clock that only goes forward.
    DWORD time;
    POINT pt;
};

/// Puts a message at the end of the queue. `window` is null (a message to the loop itself) or a window. FALSE with 1400 for a
/// window that isn't there, 1816 when 10,000 messages wait.
extern "C" KOV_PLATFORM_API BOOL PostMessageW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

constexpr UINT PM_REMOVE = 1;

/// The oldest message, taken from the queue with `PM_REMOVE`, else left in it. `window` not null and `first`..`last` not 0..0
/// pick among them. FALSE when there is none, which is no failure. The host's loop, on the main thread.
extern "C" KOV_PLATFORM_API BOOL PeekMessageW(MSG* out_message, HWND window, UINT first, UINT last, UINT remove);

/// The time of the message that this thread took last; 0 before the first.
extern "C" KOV_PLATFORM_API LONG GetMessageTime();

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD QS_ALLINPUT = 0x4FF;

/// Waits until a message is in the queue, at most `milliseconds`: `WAIT_OBJECT_0` or `WAIT_TIMEOUT`. There is nothing else to
/// wait for: `count` is 0 and `handles` null, else `WAIT_FAILED` with 50.
extern "C" KOV_PLATFORM_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL wait_all, DWORD milliseconds,
                                                            DWORD wake_mask);

/// Calls `waker` for each message that is put into the queue, on the thread that puts it, so that a host whose loop is another
/// one can turn it. It runs under the queue's lock: it must not wait and not use the queue. Empty ends it, and the old one isn't
/// called any more. The host calls it.
KOV_PLATFORM_API void SetMessageWaker(std::function<void()> waker);

/// A window of the host, so that messages can be posted to it; `DestroyWindow` ends it and drops its waiting messages.
KOV_PLATFORM_API HWND CreateHostWindow();
extern "C" KOV_PLATFORM_API BOOL DestroyWindow(HWND window);

/// Sets a window's text and posts `WM_SETTEXT` with two zeros, upon which the host reads it. Null counts as empty. FALSE with
/// 1400 for a window that isn't there.
extern "C" KOV_PLATFORM_API BOOL SetWindowTextW(HWND window, LPCWSTR text);
/// The text, cut at `size` characters with its NUL. Gives its length; 0 with 1400 for a window that isn't there.
extern "C" KOV_PLATFORM_API int GetWindowTextW(HWND window, LPWSTR buffer, int size);

constexpr int SW_HIDE = 0;
constexpr int SW_SHOW = 5;

/// Marks a window as shown or hidden and posts `WM_SHOWWINDOW` with 1 or 0, upon which the host does it. Gives whether it was
/// shown before; FALSE with 1400 for a window that isn't there.
extern "C" KOV_PLATFORM_API BOOL ShowWindow(HWND window, int command);

/// The state of a key: negative while it is down, the lowest bit while it is toggled. 0 for what isn't a key.
extern "C" KOV_PLATFORM_API SHORT GetKeyState(int key);
/// What `GetKeyState` answers from now on: 256 bytes, 0x80 down, 1 toggled. The host calls it.
extern "C" KOV_PLATFORM_API BOOL SetKeyboardState(BYTE* states);
