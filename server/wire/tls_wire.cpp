#include "server/wire/wire.h"

#include <algorithm>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <unistd.h>
#include <vector>

namespace trial {
namespace {

std::string LastTlsError() {
    char text[256] = "no reason given";
    if (const unsigned long error = ERR_get_error())
        ERR_error_string_n(error, text, sizeof text);
    ERR_clear_error();
    return text;
}

class TlsWire : public Wire {
public:
    TlsWire(int socket, const TlsContext& context)
        : m_socket(socket), m_ssl(SSL_new(static_cast<SSL_CTX*>(context.Get())), SSL_free) {
        SSL_set_fd(m_ssl.get(), socket);
        SSL_set_accept_state(m_ssl.get());
    }

    ~TlsWire() override {
        if (!m_broken && !m_reset)
            SSL_shutdown(m_ssl.get());
        ERR_clear_error();
    }

    std::size_t Read(void* to, std::size_t capacity) override {
        const int count = SSL_read(m_ssl.get(), to, static_cast<int>(std::min<std::size_t>(capacity, 1 << 20)));
        if (count > 0)
            return static_cast<std::size_t>(count);
        if (SSL_get_error(m_ssl.get(), count) == SSL_ERROR_ZERO_RETURN)
            return 0;
        m_broken = true;
        throw WireClosed(LastTlsError());
    }

    void Write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const int count =
                SSL_write(m_ssl.get(), bytes.data(), static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20)));
            if (count <= 0) {
                m_broken = true;
                throw WireClosed(LastTlsError());
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    void WriteFile(int file, std::uint64_t offset, std::uint64_t length) override {
        std::vector<char> block(256 * 1024);
        while (length > 0) {
            const ssize_t count =
                ::pread(file, block.data(), std::min<std::uint64_t>(length, block.size()), static_cast<off_t>(offset));
            if (count <= 0)
                throw WireClosed("the file became shorter");
            Write({block.data(), static_cast<std::size_t>(count)});
            offset += static_cast<std::uint64_t>(count);
            length -= static_cast<std::uint64_t>(count);
        }
    }

    void ShutDown() override { m_socket.ShutDown(); }

    void ResetOnClose() override {
        m_reset = true;
        m_socket.ResetOnClose();
    }

private:
    Socket m_socket;
    std::unique_ptr<SSL, decltype(&SSL_free)> m_ssl;
    bool m_broken = false;
    bool m_reset = false;
};

} // namespace

TlsContext::TlsContext(const std::string& certificate_file, const std::string& key_file) : m_context(nullptr) {
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    if (!context)
        throw std::runtime_error(LastTlsError());
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    if (SSL_CTX_use_certificate_chain_file(context.get(), certificate_file.c_str()) != 1)
        throw std::runtime_error(certificate_file + ": " + LastTlsError());
    if (SSL_CTX_use_PrivateKey_file(context.get(), key_file.c_str(), SSL_FILETYPE_PEM) != 1)
        throw std::runtime_error(key_file + ": " + LastTlsError());
    m_context = context.release();
}

TlsContext::~TlsContext() { SSL_CTX_free(static_cast<SSL_CTX*>(m_context)); }

std::unique_ptr<Wire> MakeTlsWire(int socket, const TlsContext& context) { return std::make_unique<TlsWire>(socket, context); }

} // namespace trial
