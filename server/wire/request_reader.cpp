#include "server/wire/request_reader.h"

#include "server/wire/http_text.h"

#include <boost/beast/core/buffers_range.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <cstring>

namespace trial {
namespace beast = boost::beast;
namespace http = boost::beast::http;
using boost::system::error_code;

namespace {

// The wire as the library's reading functions expect a stream.
class WireStream {
public:
    explicit WireStream(Wire& wire) : m_wire(wire) {}

    template <class Buffers>
    std::size_t read_some(const Buffers& buffers, error_code& error) {
        for (const boost::asio::mutable_buffer buffer : beast::buffers_range_ref(buffers)) {
            if (buffer.size() == 0)
                continue;
            const std::size_t count = m_wire.Read(buffer.data(), buffer.size());
            if (count == 0)
                error = boost::asio::error::eof;
            return count;
        }
        return 0;
    }

    template <class Buffers>
    std::size_t read_some(const Buffers& buffers) {
        error_code error;
        return read_some(buffers, error);
    }

private:
    Wire& m_wire;
};

// Collects the head, and hands body bytes to whoever asked for them.
class Parser : public http::basic_parser<true> {
public:
    Parser() {
        header_limit(64 * 1024);
        body_limit(boost::none);
    }

    Request request;
    char* to = nullptr;
    std::size_t room = 0;
    std::size_t filled = 0;

private:
    void on_request_impl(http::verb, beast::string_view method, beast::string_view target, int version, error_code&) override {
        request.method = std::string(method.data(), method.size());
        request.target = std::string(target.data(), target.size());
        request.version = static_cast<unsigned>(version);
    }
    void on_response_impl(int, beast::string_view, int, error_code&) override {}
    void on_field_impl(http::field, beast::string_view name, beast::string_view value, error_code&) override {
        request.headers.Add(std::string(name.data(), name.size()), std::string(value.data(), value.size()));
    }
    void on_header_impl(error_code&) override {}
    void on_body_init_impl(const boost::optional<std::uint64_t>&, error_code&) override {}
    std::size_t on_body_impl(beast::string_view body, error_code& error) override { return Take(body, error); }
    void on_chunk_header_impl(std::uint64_t, beast::string_view, error_code&) override {}
    std::size_t on_chunk_body_impl(std::uint64_t, beast::string_view body, error_code& error) override {
        return Take(body, error);
    }
    void on_finish_impl(error_code&) override {}

    std::size_t Take(beast::string_view body, error_code& error) {
        const std::size_t count = std::min(body.size(), room - filled);
        std::memcpy(to + filled, body.data(), count);
        filled += count;
        if (count < body.size())
            error = http::error::need_buffer;
        return count;
    }
};

} // namespace

struct RequestReader::State : BodySource {
    explicit State(Wire& given) : wire(given), stream(given) {}

    std::size_t Read(char* to, std::size_t capacity) override;
    bool ExpectsContinue() const { return EqualNoCase(parser->request.headers.Get("Expect"), "100-continue"); }

    Wire& wire;
    WireStream stream;
    beast::flat_buffer buffer{256 * 1024};
    std::unique_ptr<Parser> parser;
    std::optional<std::uint64_t> content_length;
    bool continued = false;
};

std::size_t RequestReader::State::Read(char* to, std::size_t capacity) {
    if (parser->is_done())
        return 0;
    if (!continued && ExpectsContinue() && buffer.size() == 0)
        wire.Write("HTTP/1.1 100 Continue\r\n\r\n");
    continued = true;
    parser->to = to;
    parser->room = capacity;
    parser->filled = 0;
    while (parser->filled == 0 && !parser->is_done()) {
        error_code error;
        http::read_some(stream, buffer, *parser, error);
        if (error == http::error::need_buffer)
            error = {};
        if (error)
            throw BodyCutShort(error.message());
    }
    return parser->filled;
}

RequestReader::RequestReader(Wire& wire) : m_state(std::make_unique<State>(wire)) {}

RequestReader::~RequestReader() = default;

std::optional<Request> RequestReader::ReadHead() {
    m_state->parser = std::make_unique<Parser>();
    m_state->continued = false;
    Parser& parser = *m_state->parser;
    error_code error;
    http::read_header(m_state->stream, m_state->buffer, static_cast<http::basic_parser<true>&>(parser), error);
    if (error == http::error::end_of_stream)
        return std::nullopt;
    if (error == http::error::partial_message)
        throw WireClosed(error.message());
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
        throw Refusal(431, "the header is too long");
    if (error)
        throw Refusal(400, "not a request: " + error.message());
    const auto length = parser.content_length();
    m_state->content_length = length ? std::optional<std::uint64_t>(*length) : std::nullopt;
    return parser.request;
}

BodySource& RequestReader::Body() { return *m_state; }

bool RequestReader::IsBodyDone() const { return m_state->parser->is_done(); }

bool RequestReader::IsClientWaiting() const {
    return !m_state->parser->is_done() && !m_state->continued && m_state->ExpectsContinue() && m_state->buffer.size() == 0;
}

bool RequestReader::KeepsAlive() const { return m_state->parser->keep_alive(); }

std::optional<std::uint64_t> RequestReader::ContentLength() const { return m_state->content_length; }

} // namespace trial
