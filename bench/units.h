#pragma once

#include <cstdint>
#include <string>

/// Ratios of small things to what they are compared with, in this process.

/// One `PROPFIND` of depth 0 through `Http::Session` to the same through a reused libcurl easy handle, by wall time.
double PropfindRatio(const std::string& origin, const std::string& path);

struct TraceFigures {
    /// A trace at level 0 to one comparison of the same variable.
    double ratio = 0;
    double nanoseconds = 0;
    std::uint64_t allocations = 0;
};
TraceFigures MeasureTrace();

struct CompareFigures {
    /// One `CompareUrls` to two `curl_url` parses of the same URLs.
    double ratio = 0;
    double nanoseconds = 0;
    std::uint64_t allocations = 0;
};
CompareFigures MeasureCompareUrls();
