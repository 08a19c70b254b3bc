#include "server/wire/wire.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace trial {
namespace {

// A client that neither sends nor takes a byte for so long has gone.
constexpr timeval idle_limit{600, 0};

class PlainWire : public Wire {
public:
    explicit PlainWire(int socket) : m_socket(socket) {}

    std::size_t Read(void* to, std::size_t capacity) override {
        for (;;) {
            const ssize_t count = ::recv(m_socket.Get(), to, capacity, 0);
            if (count >= 0)
                return static_cast<std::size_t>(count);
            if (errno != EINTR)
                throw WireClosed(std::strerror(errno));
        }
    }

    void Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t count = ::send(m_socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count < 0 && errno != EINTR)
                throw WireClosed(std::strerror(errno));
            if (count > 0)
                bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    void WriteFile(int file, std::uint64_t offset, std::uint64_t length) override {
        auto position = static_cast<off_t>(offset);
        while (length > 0) {
            const ssize_t count = ::sendfile(m_socket.Get(), file, &position, std::min<std::uint64_t>(length, 1 << 20));
            // 0: the file is shorter than it was; the client must see a cut body and not a short one.
            if (count == 0 || (count < 0 && errno != EINTR))
                throw WireClosed(count == 0 ? "the file became shorter" : std::strerror(errno));
            if (count > 0)
                length -= static_cast<std::uint64_t>(count);
        }
    }

    void ShutDown() override { m_socket.ShutDown(); }
    void ResetOnClose() override { m_socket.ResetOnClose(); }

private:
    Socket m_socket;
};

} // namespace

Socket::Socket(int descriptor) : m_descriptor(descriptor) {
    const int on = 1;
    ::setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &idle_limit, sizeof idle_limit);
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_SNDTIMEO, &idle_limit, sizeof idle_limit);
}

Socket::~Socket() { ::close(m_descriptor); }

void Socket::ShutDown() { ::shutdown(m_descriptor, SHUT_RDWR); }

void Socket::ResetOnClose() {
    const linger at_once{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
}

std::unique_ptr<Wire> MakePlainWire(int socket) { return std::make_unique<PlainWire>(socket); }

} // namespace trial
