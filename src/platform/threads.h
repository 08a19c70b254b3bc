#pragma once

/// The identity of a thread, and locks.

#include "platform/types.h"

/// The number that the operating system's own tools show for the thread.
extern "C" KOV_PLATFORM_API DWORD GetCurrentThreadId();

/// A lock that its owner may take again; it is free after as many `LeaveCriticalSection`. The fields belong to the functions.
struct CRITICAL_SECTION {
    void* DebugInfo;
    LONG LockCount;
    LONG RecursionCount;
    HANDLE OwningThread;
    HANDLE LockSemaphore;
    UINT_PTR SpinCount;
};

/// Throws `std::bad_alloc` without memory.
extern "C" KOV_PLATFORM_API void InitializeCriticalSection(CRITICAL_SECTION* section);
extern "C" KOV_PLATFORM_API void EnterCriticalSection(CRITICAL_SECTION* section);
/// Only on the thread that entered.
extern "C" KOV_PLATFORM_API void LeaveCriticalSection(CRITICAL_SECTION* section);
extern "C" KOV_PLATFORM_API void DeleteCriticalSection(CRITICAL_SECTION* section);

/// Owns a `CRITICAL_SECTION`; `std::scoped_lock` takes it.
class CriticalSection : private CRITICAL_SECTION {
public:
    CriticalSection() { InitializeCriticalSection(this); }
    ~CriticalSection() { DeleteCriticalSection(this); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock() { EnterCriticalSection(this); }
    void unlock() { LeaveCriticalSection(this); }
};
