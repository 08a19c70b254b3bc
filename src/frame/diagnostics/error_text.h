#pragma once

/// Failure codes as words, for users and the log. All of them allocate; none of them changes the last error.

#include <string>

#include "platform/types.h"

/// "HRESULT 0x%.8x: " and the system's text for the code, or a placeholder.
std::wstring GetHResultString(HRESULT code);

/// "System error code N: " and the text of a system or WinINet error; 0 stands for the last error of this thread.
std::wstring GetErrorString(DWORD code);

/// "HTTP N: " and the reason phrase of the answer that a request handle got, or what kept it from being read.
std::wstring GetHttpStatusString(void* request_handle);
