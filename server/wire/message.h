// A request and its answer as values. Nothing here knows of sockets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace trial {

struct Header {
    std::string name;
    std::string value;
};

/// Header lines in the order and the spelling of the wire; names are found in any letter case.
class Headers {
public:
    /// The first value of that name, or null.
    const std::string* Find(std::string_view name) const;
    /// The first value of that name, or an empty text.
    std::string_view Get(std::string_view name) const;
    void Add(std::string name, std::string value) { m_lines.push_back({std::move(name), std::move(value)}); }
    const std::vector<Header>& Lines() const { return m_lines; }

private:
    std::vector<Header> m_lines;
};

/// A refusal on its way to the client: thrown anywhere below the router, answered as this status.
struct Refusal : std::runtime_error {
    Refusal(int status, const std::string& text) : std::runtime_error(text), status(status) {}
    int status;
};

/// The connection ended or broke before a body was complete: nothing of the request may be kept.
struct BodyCutShort : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The body of a request, pulled by whoever needs it.
class BodySource {
public:
    virtual ~BodySource() = default;
    /// Waits for bytes and copies at most `capacity` of them; 0 at the end. Throws BodyCutShort.
    virtual std::size_t Read(char* to, std::size_t capacity) = 0;
};

/// Reads a whole body that is going to be parsed; more than `limit` bytes are refused with 413.
std::string ReadAll(BodySource& body, std::size_t limit = 1 << 20);

struct Request {
    std::string method;
    std::string target; ///< As it stood in the request line.
    std::string path;   ///< Decoded, no leading or trailing slash, no empty segment.
    std::string query;  ///< As it stood, without the question mark.
    std::string scheme; ///< "http" or "https", as the connection is.
    std::string host;   ///< The `Host` header, or the address of the socket.
    Headers headers;
    unsigned version = 11;
    BodySource* body = nullptr;

    std::string Origin() const { return scheme + "://" + host; }
};

/// An open file that is closed with the last answer that uses it.
class FileHandle {
public:
    explicit FileHandle(int descriptor) : m_descriptor(descriptor) {}
    ~FileHandle();
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

struct FileBody {
    std::shared_ptr<FileHandle> file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/// A long text made while it is sent: appends its next piece, and says whether there may be more.
using PieceMaker = std::function<bool(std::string& piece)>;

struct Response {
    int status = 200;
    std::vector<Header> headers;
    std::variant<std::string, FileBody, PieceMaker> body;

    static Response Text(int status, std::string content_type, std::string body);
    /// A status with a line of plain text for whoever reads it.
    static Response Plain(int status, const std::string& text);
    Response& With(std::string name, std::string value);
};

/// The reason phrase of a status, "Status" for an unknown one.
std::string_view ReasonOf(int status);

} // namespace trial
