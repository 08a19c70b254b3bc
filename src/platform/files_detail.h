#pragma once

/// For the sources of this folder alone: paths as the operating system takes them.

#include <string>
#include <utility>

#include "platform/types.h"

/// A descriptor that closes itself and keeps the last error.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Descriptor();

    int Get() const { return m_value; }
    bool IsOpen() const { return m_value >= 0; }

private:
    int m_value = -1;
};

/// UTF-8, with `/` for `\`. Throws `std::range_error` for a text that has none.
std::string NativePath(LPCWSTR path);

/// The user's own temporary folder, made when it isn't there, without a slash at its end; empty with the last error set.
std::string UserTempFolder();

/// The folder that holds the last part of `path`, opened, and that part. Below the user's temporary folder no link is followed.
/// Not open, with `errno` set, when it can't be had.
Descriptor OpenFolderOf(const std::string& path, std::string& out_name);
