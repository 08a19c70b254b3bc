#pragma once

#include "workbench/core/input_error.h"

/// The user asked for something that makes no sense. Ends with exit code 2.
using UsageError = InputError;
