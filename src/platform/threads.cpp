#include "platform/threads.h"

#include <memory>
#include <mutex>

#include <sys/syscall.h>
#include <unistd.h>

DWORD GetCurrentThreadId() {
    static thread_local const auto id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}

namespace {

std::recursive_mutex& MutexOf(CRITICAL_SECTION* section) { return *static_cast<std::recursive_mutex*>(section->LockSemaphore); }

} // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    *section = CRITICAL_SECTION{};
    section->LockSemaphore = std::make_unique<std::recursive_mutex>().release();
}

void EnterCriticalSection(CRITICAL_SECTION* section) { MutexOf(section).lock(); }

void LeaveCriticalSection(CRITICAL_SECTION* section) { MutexOf(section).unlock(); }

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    std::unique_ptr<std::recursive_mutex>(&MutexOf(section)).reset();
    section->LockSemaphore = nullptr;
}
