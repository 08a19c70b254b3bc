#pragma once

/// Ctrl-C. The first one sets the cancel flag of what is under way and ends the waits below; a call to a server can't be
/// interrupted, so the second ends the program.

#include <chrono>

#include "workbench/core/value_objects.h"

/// From now on, until it is told to stop, Ctrl-C reaches this flag. One at a time.
void CatchInterrupts(FlagObject& cancel_flag);
void StopCatchingInterrupts();

bool IsInterrupted();

/// Waits until the descriptor can be read; false when Ctrl-C came first. Any thread.
bool WaitForInput(int descriptor);

/// Waits this long; false when Ctrl-C came first. Any thread.
bool WaitFor(std::chrono::milliseconds time);
