// Schemas of cabs are given by modules: a broken one ends in a named failure, never in a crash or without end.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "workbench/core/cab_template.h"
#include "workbench/core/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        ReadCabTemplate({reinterpret_cast<const char*>(data), size}, L"Root");
    } catch (const HostException&) {
        // The named failure.
    }
    return 0;
}
