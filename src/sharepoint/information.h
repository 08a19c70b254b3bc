#pragma once

/// What a server says about one object, and the small types that travel with it.

#include <cstdint>
#include <string>

namespace SharePoint {

/// A snapshot. Times count 100 ns units since 1601-01-01 UTC; 0 is unknown.
struct Information {
    /// The display name, or the last segment of the path.
    std::wstring m_name;
    /// Relative to the server, decoded, without slashes at its ends; empty for a web at the server's root.
    std::wstring m_path;
    std::uint64_t m_created_time = 0;
    std::uint64_t m_modified_time = 0;
    /// In bytes; 0 for folders.
    std::uint64_t m_size = 0;
    /// The login of who has the file checked out, as the server writes it; empty when nobody has.
    std::wstring m_checkout_user;
    /// Who changed it last, without the claims prefix.
    std::wstring m_modified_by;
};

/// Which version a check-in makes; sent to the server as the number.
enum class CheckInType : std::int32_t { minor = 0, major = 1, overwrite = 2 };

} // namespace SharePoint
