// A connection's bytes, plain or encrypted.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace trial {

/// The peer is gone, or the server ends.
struct WireClosed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Wire {
public:
    virtual ~Wire() = default;
    /// Waits for bytes; 0 at the peer's end. Throws WireClosed.
    virtual std::size_t Read(void* to, std::size_t capacity) = 0;
    /// Writes all. Throws WireClosed.
    virtual void Write(std::string_view bytes) = 0;
    /// Sends a part of a file without a way through this process where the connection allows it.
    virtual void WriteFile(int file, std::uint64_t offset, std::uint64_t length) = 0;
    /// From any thread: reads and writes under way fail.
    virtual void ShutDown() = 0;
    /// The next close answers with a reset instead of an orderly end.
    virtual void ResetOnClose() = 0;
};

/// What certificates and keys are kept in for all connections.
class TlsContext {
public:
    /// PEM files. Throws std::runtime_error with the library's words.
    TlsContext(const std::string& certificate_file, const std::string& key_file);
    ~TlsContext();
    TlsContext(const TlsContext&) = delete;
    TlsContext& operator=(const TlsContext&) = delete;
    void* Get() const { return m_context; }

private:
    void* m_context;
};

/// Owns the socket.
std::unique_ptr<Wire> MakePlainWire(int socket);
/// Shakes hands at the first read. `context` outlives the connection.
std::unique_ptr<Wire> MakeTlsWire(int socket, const TlsContext& context);

/// A socket that closes with its owner; what both kinds of connection stand on.
class Socket {
public:
    explicit Socket(int descriptor);
    ~Socket();
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int Get() const { return m_descriptor; }
    void ShutDown();
    void ResetOnClose();

private:
    int m_descriptor;
};

} // namespace trial
