#include "dialog/leftovers.h"

#include <exception>
#include <utility>

#include "frame/diagnostics/diagnostics.h"

void Leftovers::Take(std::shared_ptr<const void> what) {
    if (what == nullptr) {
        return;
    }
    // The one before goes with it: whoever waits for the last has waited for all, and nobody waits here.
    struct Load {
        std::shared_ptr<const void> what;
        std::future<void> before; // waited for first
    };
    try {
        auto load = std::make_unique<Load>(Load{std::move(what), std::move(m_last)});
        m_last = std::async(std::launch::async, [load = std::move(load)]() mutable { load.reset(); });
    } catch (const std::exception&) {
        TRACE_FORMAT(LogLevel::warning, L"There is no thread to let go of what a dialog leaves");
    }
}
