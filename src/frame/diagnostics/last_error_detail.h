#pragma once

/// Only for the sources of this folder.

#include "platform/errors.h"

/// Keeps the thread's last error as it was: making a text or a log line must not change what the caller still asks for.
class LastErrorKeeper {
public:
    LastErrorKeeper() noexcept : m_error(GetLastError()) {}
    ~LastErrorKeeper() { SetLastError(m_error); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

    DWORD Error() const noexcept { return m_error; }

private:
    const DWORD m_error;
};
