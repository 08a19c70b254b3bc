#pragma once

#include <string>

/// The URL of a network path: `\\host\path`, `\\host@SSL\path`, `\\host@port\path`, `\\host@SSL@port\path`, each of them
/// also with `\\?\UNC\` in front, and with or without the segment `DavWWWRoot`. Empty for anything else. Any thread.
std::wstring WebDavPathToUrl(const wchar_t* path);
inline std::wstring WebDavPathToUrl(const std::wstring& path) { return WebDavPathToUrl(path.c_str()); }
