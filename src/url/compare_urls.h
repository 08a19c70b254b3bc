#pragma once

/// How two locations relate: blind to letter case in host and path and to one trailing slash, exact in scheme and port.

#include <string>

/// The numbers are visible in log lines.
enum class CompareUrlsResult : unsigned {
    equal = 0,          ///< both URLs name the same location
    url1_is_parent = 1, ///< the second URL lies below the first
    url2_is_parent = 2, ///< the first URL lies below the second
    different = 3,      ///< neither contains the other, or scheme, host or port differ
    error = 4,          ///< one of the URLs is empty or can't be parsed
};

/// The number of a result as `{}` of a trace line prints it.
constexpr unsigned format_as(CompareUrlsResult result) noexcept { return static_cast<unsigned>(result); }

/// Compares two absolute URLs; null counts as empty. The query is a part of the path unless `ignore_query` is set.
/// `out_relative` (null allowed) receives the part of the longer URL below the shorter one, escapes as they are; it is
/// emptied as soon as scheme, host and port are equal, and untouched before. Allocates only for `out_relative`. Any thread.
CompareUrlsResult CompareUrls(const wchar_t* url1, const wchar_t* url2, std::wstring* out_relative = nullptr,
                              bool ignore_query = false);

/// The same for two server-relative paths, both with a leading slash or both without.
CompareUrlsResult CompareUrlPaths(const wchar_t* path1, const wchar_t* path2, std::wstring* out_relative = nullptr);
