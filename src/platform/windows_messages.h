#pragma once

/// Messages to windows: one ordered queue a process, which any thread fills and the host's loop drains.

#include "platform/types.h"

using SHORT = std::int16_t;

constexpr UINT WM_SETTEXT = 0x0C;
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

constexpr DWORD WAIT_OBJECT_0 = 0;
constexpr DWORD WAIT_TIMEOUT = 258;
constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
constexpr DWORD INFINITE = 0xFFFFFFFF;
constexpr DWORD QS_ALLINPUT = 0x4FF;

/// Waits until a message is in the queue, at most `milliseconds`: `WAIT_OBJECT_0` or `WAIT_TIMEOUT`. There is nothing else to
/// wait for: `count` is 0 and `handles` null, else `WAIT_FAILED` with 50.
extern "C" KOV_PLATFORM_API DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL wait_all, DWORD milliseconds,
                                                            DWORD wake_mask);

/// A window of the host, so that messages can be posted to it; `DestroyWindow` ends it and drops its waiting messages.
KOV_PLATFORM_API HWND CreateHostWindow();
extern "C" KOV_PLATFORM_API BOOL DestroyWindow(HWND window);

/// Sets a window's text and posts `WM_SETTEXT` with two zeros, upon which the host reads it. Null counts as empty. FALSE with
/// 1400 for a window that isn't there.
extern "C" KOV_PLATFORM_API BOOL SetWindowTextW(HWND window, LPCWSTR text);
/// The text, cut at `size` characters with its NUL. Gives its length; 0 with 1400 for a window that isn't there.
extern "C" KOV_PLATFORM_API int GetWindowTextW(HWND window, LPWSTR buffer, int size);

/// The state of a key: negative while it is down, the lowest bit while it is toggled. 0 for what isn't a key.
extern "C" KOV_PLATFORM_API SHORT GetKeyState(int key);
/// What `GetKeyState` answers from now on: 256 bytes, 0x80 down, 1 toggled. The host calls it.
extern "C" KOV_PLATFORM_API BOOL SetKeyboardState(BYTE* states);
