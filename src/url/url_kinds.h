#pragma once

/// What kind of location a text is. Null is none. Any thread.

#include <string_view>

/// An `http` or `https` URL whose path holds none of `?*:"|<>\`.
bool IsDirectUrl(const wchar_t* text);

/// A sharing link to one file: the short form `/:w:/r/...`, or a path with the query `?share=...`.
bool IsFileLinkUrl(const wchar_t* text);

/// Whether no character of the text is one of `?*:"|<>\`.
bool IsValidFileOrFolderUrlPath(std::wstring_view text) noexcept;
