#pragma once

/// Cancellation, and the bit test and result codes that all operations share.

#include "platform/types.h"

namespace KOV {
struct IKOV_Flag;
}

/// The user or the host canceled. The host's own code for it differs from the system's (0x800704C7).
constexpr HRESULT E_CANCELED = MakeHResult(0x821704C7);
/// The flush has to be run again.
constexpr HRESULT E_SP_RETRY = MakeHResult(0x800704D5);

/// Whether the host set the flag. A null flag is never canceled, and so is one that can't be read. Any thread.
bool IsCanceled(KOV::IKOV_Flag* cancel_flag);

namespace Bits {

/// Whether the single bit `flag` is set in `value`.
template <class Value, class Flag>
constexpr bool Has(Value value, Flag flag) noexcept {
    return (static_cast<std::uint64_t>(value) & static_cast<std::uint64_t>(flag)) != 0;
}

} // namespace Bits
