#include <array>
#include <string>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "frame/diagnostics/error_text.h"
#include "frame/diagnostics/exceptions.h"
#include "platform/errors.h"
#include "platform/wininet.h"

namespace {

/// Answers one request on a port of its own with fixed bytes.
class OneAnswer {
public:
    explicit OneAnswer(std::string answer) : m_listener(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        EXPECT_EQ(bind(m_listener, reinterpret_cast<sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(m_listener, 1), 0);
        EXPECT_EQ(getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
        port = ntohs(address.sin_port);
        m_thread = std::thread([this, answer = std::move(answer)] { Serve(answer); });
    }
    ~OneAnswer() {
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }

    WORD port = 0;

private:
    void Serve(const std::string& answer) const {
        const int connection = accept(m_listener, nullptr, nullptr);
        if (connection < 0) {
            return;
        }
        std::string request;
        std::array<char, 4096> block;
        while (request.find("\r\n\r\n") == std::string::npos) {
            const ssize_t got = recv(connection, block.data(), block.size(), 0);
            if (got <= 0) {
                break;
            }
            request.append(block.data(), static_cast<std::size_t>(got));
        }
        EXPECT_EQ(send(connection, answer.data(), answer.size(), MSG_NOSIGNAL), static_cast<ssize_t>(answer.size()));
        close(connection);
    }

    const int m_listener;
    std::thread m_thread;
};

struct Handle {
    ~Handle() { InternetCloseHandle(value); }
    HINTERNET value;
};

} // namespace

TEST(HttpException, TellsStatusAndReasonOfTheAnswer) {
    const struct {
        const char* answer;
        const wchar_t* text;
        WORD status;
        const wchar_t* message;
    } rows[] = {
        {"HTTP/1.1 503 Too busy\r\nContent-Length: 0\r\n\r\n", L"", 503, L"HTTP 503: Too busy"},
        {"HTTP/1.1 404 \r\nContent-Length: 0\r\n\r\n", L"", 404, L"HTTP 404: "},
        {"HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n", L"not for you", 403, L"not for you"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer);
        const OneAnswer server(row.answer);
        const Handle open = {InternetOpenW(L"test", INTERNET_OPEN_TYPE_DIRECT, nullptr, nullptr, 0)};
        const Handle connect = {
            InternetConnectW(open.value, L"127.0.0.1", server.port, nullptr, nullptr, INTERNET_SERVICE_HTTP, 0, 0)};
        const Handle request = {HttpOpenRequestW(connect.value, L"GET", L"/", nullptr, nullptr, nullptr, 0, 0)};
        ASSERT_TRUE(HttpSendRequestW(request.value, nullptr, 0, nullptr, 0)) << GetLastError();
        const HttpException exception(request.value, row.text);
        EXPECT_EQ(exception.status, row.status);
        EXPECT_EQ(exception.message, row.message);
    }
}

TEST(HttpException, SaysWhyItKnowsNothing) {
    const HttpException exception(nullptr);
    EXPECT_EQ(exception.status, 0);
    const std::wstring begin = L"HTTP (failed to get status information): System error code ";
    EXPECT_EQ(exception.message.substr(0, begin.size()), begin);
}
