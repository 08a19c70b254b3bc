#include "server/wire/message.h"

#include "server/wire/http_text.h"

#include <unistd.h>

namespace trial {
namespace {

struct Reason {
    int status;
    std::string_view text;
};

constexpr Reason reasons[] = {
    {100, "Continue"},
    {200, "OK"},
    {201, "Created"},
    {204, "No Content"},
    {206, "Partial Content"},
    {207, "Multi-Status"},
    {302, "Found"},
    {304, "Not Modified"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {409, "Conflict"},
    {411, "Length Required"},
    {412, "Precondition Failed"},
    {413, "Content Too Large"},
    {414, "URI Too Long"},
    {415, "Unsupported Media Type"},
    {416, "Range Not Satisfiable"},
    {417, "Expectation Failed"},
    {422, "Unprocessable Content"},
    {423, "Locked"},
    {424, "Failed Dependency"},
    {431, "Request Header Fields Too Large"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Timeout"},
    {507, "Insufficient Storage"},
};

} // namespace

const std::string* Headers::Find(std::string_view name) const {
    for (const Header& line : m_lines) {
        if (EqualNoCase(line.name, name))
            return &line.value;
    }
    return nullptr;
}

std::string_view Headers::Get(std::string_view name) const {
    const std::string* value = Find(name);
    return value ? std::string_view(*value) : std::string_view();
}

std::string ReadAll(BodySource& body, std::size_t limit) {
    std::string all;
    char block[16384];
    while (std::size_t count = body.Read(block, sizeof block)) {
        if (all.size() + count > limit)
            throw Refusal(413, "the body is too long");
        all.append(block, count);
    }
    return all;
}

FileHandle::~FileHandle() { ::close(m_descriptor); }

Response Response::Text(int status, std::string content_type, std::string body) {
    Response response{status, {}, std::move(body)};
    response.With("Content-Type", std::move(content_type));
    return response;
}

Response Response::Plain(int status, const std::string& text) {
    return Text(status, "text/plain; charset=utf-8", text.empty() ? text : text + "\n");
}

Response& Response::With(std::string name, std::string value) {
    headers.push_back({std::move(name), std::move(value)});
    return *this;
}

std::string_view ReasonOf(int status) {
    for (const Reason& reason : reasons) {
        if (reason.status == status)
            return reason.text;
    }
    return "Status";
}

} // namespace trial
