#pragma once

/// The lists of media types that requests offer to take (RFC 9110 section 12.5.1), each ended by null.

namespace Http {

inline constexpr const wchar_t* accept_json[] = {L"application/json; odata=nometadata", nullptr};
inline constexpr const wchar_t* accept_xml[] = {L"application/xml", L"text/xml", nullptr};
inline constexpr const wchar_t* accept_any[] = {L"*/*", nullptr};
inline constexpr const wchar_t* accept_soap[] = {L"text/xml", nullptr};
inline constexpr const wchar_t* accept_file[] = {L"application/octet-stream", nullptr};

} // namespace Http
