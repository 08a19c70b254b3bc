#pragma once

/// Enciphers texts with a key that stands in a file of the state folder, for its owner alone to read.

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "platform/types.h"

/// The key of one state folder. Any thread.
class Cipher {
public:
    /// Reads the key, and makes one when there is none. Throws `HostException`; a key file that is broken or open to others is a
    /// failure and stays as it is, since what was enciphered with it would be lost.
    explicit Cipher(const std::filesystem::path& key_file);
    ~Cipher();
    Cipher(const Cipher&) = delete;
    Cipher& operator=(const Cipher&) = delete;

    /// A text of ASCII with a version mark in front; each call gives another one.
    std::wstring Encrypt(std::wstring_view plain) const;
    /// Throws `HostException`: `E_INVALIDARG` for a text without the mark, 0x8007000D for a marked one that was changed or was
    /// made with another key.
    std::wstring Decrypt(std::wstring_view enciphered) const;

private:
    struct Key;
    std::unique_ptr<Key> m_key;
};
