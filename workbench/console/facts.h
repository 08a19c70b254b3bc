#pragma once

/// Facts about locations, and how they are written.

#include <optional>

#include "workbench/console/context.h"

/// What is known of one location. Times are 100-nanosecond units since 1601-01-01 UTC, 0 for unknown.
struct Facts {
    std::wstring title;
    std::wstring url;
    bool is_folder = false;
    ULONGLONG size = 0;
    ULONGLONG created = 0;
    ULONGLONG modified = 0;
};

/// Reads facts that are at hand; asks no server. Throws Failure.
Facts ReadFacts(const Context& context, KOV::IAFS_FileInfo* info, KOV::IAFS_Name* name);
/// Asks the server when the name isn't bound yet. Throws Failure.
Facts FactsOf(const Context& context, KOV::IAFS_Name* name);

Record FactsRecord(const Facts& facts);
std::string FactsText(const Facts& facts);

/// The moment by RFC 3339 in UTC; nothing for 0.
std::optional<std::string> Rfc3339(ULONGLONG time);
