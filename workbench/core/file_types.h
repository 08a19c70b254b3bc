#pragma once

/// How the host writes types and sizes of files.

#include <string>
#include <string_view>

#include "platform/types.h"

/// The file types behind a token such as "<pdf>", as title `|` patterns `|`. With `whole`, "<allSupp>" stands for all supported
/// types together and then each by itself. Empty for a token that isn't known.
std::wstring FileFilterOf(std::wstring_view token, bool whole);

/// A count of bytes in words, by the user's locale: "512 bytes", "1.5 KB". `unit` 0 bytes, 1 KB, 2 MB, 3 GB, 4 TB; any other
/// picks the largest of which there is at least one. A KB has 1024 bytes.
std::wstring FileSizeText(ULONGLONG size, LONG unit);
