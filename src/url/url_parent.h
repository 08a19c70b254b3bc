#pragma once

#include <string>

/// The URL of the folder that holds the location, without a slash at its end and without query; empty for the root of a
/// server, and for a text that is no URL, which is logged. Any thread.
std::wstring GetUrlParent(const std::wstring& url);
