#include "bench/desk/window_start.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;
template <class T>
using Allocated = std::unique_ptr<T, decltype(&std::free)>;

constexpr std::uint16_t least_width = 300;
constexpr std::chrono::seconds patience{60};

/// Sees the windows that come to the screen.
class Screen {
public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
        if (xcb_connection_has_error(m_connection.get()) != 0) {
            throw std::runtime_error("there is no screen");
        }
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection.get(), Root(), XCB_CW_EVENT_MASK, &events);
        xcb_flush(m_connection.get());
    }

    void WaitForWindow() {
        const auto deadline = Clock::now() + patience;
        while (Clock::now() < deadline) {
            while (const Allocated<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get()), &std::free}) {
                if ((event->response_type & 0x7F) == XCB_MAP_NOTIFY &&
                    IsWide(reinterpret_cast<const xcb_map_notify_event_t*>(event.get())->window)) {
                    return;
                }
            }
            pollfd descriptor{xcb_get_file_descriptor(m_connection.get()), POLLIN, 0};
            poll(&descriptor, 1, 1000);
        }
        throw std::runtime_error("no window came");
    }

private:
    xcb_window_t Root() const { return xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root; }

    bool IsWide(xcb_window_t window) const {
        const Allocated<xcb_get_geometry_reply_t> geometry{
            xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr), &std::free};
        return geometry != nullptr && geometry->width >= least_width;
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
};

pid_t Spawn(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
        throw std::runtime_error("can't run " + words[0]);
    }
    return child;
}

} // namespace

double SecondsToWindow(const std::vector<std::string>& words) {
    Screen screen;
    const auto start = Clock::now();
    const pid_t child = Spawn(words);
    const auto end = [child] {
        kill(child, SIGTERM);
        waitpid(child, nullptr, 0);
    };
    try {
        screen.WaitForWindow();
    } catch (...) {
        end();
        throw;
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    end();
    return seconds;
}
