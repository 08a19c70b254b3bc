#pragma once

#include <cstddef>
#include <string>

#include <sodium/crypto_hash_sha256.h>

/// SHA-256 (FIPS 180-4) of bytes that come in pieces.
class Sha256 {
public:
    Sha256() { crypto_hash_sha256_init(&m_state); }
    void Add(const void* data, std::size_t size) {
        crypto_hash_sha256_update(&m_state, static_cast<const unsigned char*>(data), size);
    }
    /// The digest in hexadecimal; the object is spent then.
    std::string Hex() {
        static constexpr char digits[] = "0123456789abcdef";
        unsigned char bytes[crypto_hash_sha256_BYTES];
        crypto_hash_sha256_final(&m_state, bytes);
        std::string text;
        for (const unsigned char byte : bytes) {
            text += {digits[byte >> 4], digits[byte & 15]};
        }
        return text;
    }

private:
    crypto_hash_sha256_state m_state;
};
