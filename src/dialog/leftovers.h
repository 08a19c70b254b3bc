#pragma once

/// What a dialog leaves behind that takes long to let go: the rows of a large folder, a worker that still waits for a server.

#include <future>
#include <memory>

class Leftovers {
public:
    Leftovers() = default;
    Leftovers(const Leftovers&) = delete;
    Leftovers& operator=(const Leftovers&) = delete;
    /// Waits until all is gone.
    ~Leftovers() = default;

    /// Drops it on a thread of its own, after what was taken before; at once where there is no thread. Null is nothing. One
    /// thread at a time.
    void Take(std::shared_ptr<const void> what);

private:
    std::future<void> m_last;
};
