#pragma once

#include <filesystem>

#include "workbench/console/context.h"

/// Runs the commands of a script, one a line. A failing line is reported and the script goes on. The exit code of the last
/// failure, 0 when there was none. Throws UsageError when the file can't be read.
int RunScript(Context context, const std::filesystem::path& path);

/// The exit code of a failure: canceled or failed.
int ExitCodeOf(HRESULT result);
