#pragma once

/// Facts about locations, and how they are written.

#include <optional>

#include "workbench/console/context.h"

/// Asks the server when the name isn't bound yet. Throws Failure.
Facts FactsOf(const Context& context, KOV::IAFS_Name* name);

Record FactsRecord(const Facts& facts);
std::string FactsText(const Facts& facts);

/// The moment by RFC 3339 in UTC; nothing for 0.
std::optional<std::string> Rfc3339(ULONGLONG time);
