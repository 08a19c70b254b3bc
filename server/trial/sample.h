// Content to try things with.
#pragma once

#include "server/store/store.h"

#include <string>
#include <string_view>
#include <vector>

namespace trial {

/// A site, two sub-sites and their libraries with a dozen documents. Does nothing to a root that holds anything already.
void FillWithSample(Store& store);

/// A small PDF document of A4 pages (ISO 32000-1), each with its lines of text in Latin letters; byte for byte the same for
/// the same text.
std::string MakePdf(std::string_view title, const std::vector<std::vector<std::string>>& pages);

} // namespace trial
