#pragma once

/// For the sources of this folder alone: how a call that fails says why.

#include "platform/errors.h"

/// Sets the thread's last error and gives FALSE. Callers turn the last error into an exception or a result code, and 0
/// would count as success there, so a call never fails with 0: it is asserted, and becomes `ERROR_GEN_FAILURE`.
BOOL FailWith(DWORD error) noexcept;

/// The same with an error of the C library.
BOOL FailWithErrno(int error_number) noexcept;

/// The code that stands for an error of the C library; `ERROR_GEN_FAILURE` for one that has no kin. Never 0.
DWORD ErrorFromErrno(int error_number) noexcept;
