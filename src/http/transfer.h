#pragma once

/// What came back for a request, an upload that is under way, and the reading of a body and of headers (RFC 9110).
///
/// `Response` and `Request` are small values that share one request handle of the platform; the last owner closes it, and a
/// transfer that was still running ends with it. One handle takes one call at a time, on any thread.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "http/byte_stream.h"
#include "platform/wininet.h"

namespace Http {

/// The answer to a request. Its body is a stream that is read from start to end once, by `ReadBody` on the handle.
class Response {
public:
    struct Impl {
        Impl() = default;
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
        ~Impl();

        HINTERNET handle = nullptr;
        /// The final HTTP status.
        std::uint32_t status = 0;
    };

    Response() : m_impl(std::make_shared<Impl>()) {}

    HINTERNET GetHandle() const noexcept { return m_impl->handle; }
    std::uint32_t GetStatus() const noexcept { return m_impl->status; }

    std::shared_ptr<Impl> m_impl;
};

/// An upload: the headers are sent, and the announced number of body bytes is expected.
class Request {
public:
    struct Impl {
        Impl() = default;
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
        ~Impl();

        HINTERNET handle = nullptr;
    };

    Request() : m_impl(std::make_shared<Impl>()) {}

    HINTERNET GetHandle() const noexcept { return m_impl->handle; }

    /// Hands the next `size` bytes of the body to the connection; `written_size` receives how many it took. May block for as
    /// long as the server takes to accept them. Throws ApiException.
    void Write(const void* data, std::size_t size, DWORD& written_size);

    /// Ends the upload and waits for the server's answer, which takes the handle over. Throws ApiException, with
    /// ERROR_INTERNET_FORCE_RETRY when the body has to be sent once more on this handle, and HttpException for a status
    /// outside 200..399. No authentication demand is answered here.
    Response End();

    std::shared_ptr<Impl> m_impl;
};

/// Announces (again) a body of `total_size` bytes on a request handle that has its headers, for `Request::Write` to send.
/// Sends that the platform asks to repeat are repeated, three in all. Throws ApiException.
void SendRequestEx(HINTERNET handle, std::uint64_t total_size);

/// At most `max_size` bytes of the body in one read; 0 is the end. A body that was cut short throws ApiException.
std::size_t ReadBody(HINTERNET handle, void* buffer, std::size_t max_size);

/// Appends the whole body to `stream` and returns its length. Throws ApiException, and HResultException E_OUTOFMEMORY when
/// the stream's limit is reached.
std::size_t ReadBody(HINTERNET handle, ByteStream& stream);

/// Bytes of a body as text for the log: UTF-8, or what isn't UTF-8 byte for byte.
std::wstring BodyTextForLog(std::string_view bytes);

/// All values of one response header in the order of the answer. Throws ApiException.
std::vector<std::wstring> GetHeaders(HINTERNET handle, const std::wstring& name);

/// All header lines of the final answer, the status line first. Throws ApiException.
std::vector<std::wstring> GetHeaders(HINTERNET handle);

/// The URL at which the request stands now, after redirects. Throws ApiException.
std::wstring GetRequestUri(HINTERNET handle);

} // namespace Http
