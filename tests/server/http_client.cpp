#include "server/http_client.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <memory>
#include <stdexcept>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

size_t TakeBody(char* data, size_t, size_t count, void* answer) {
    static_cast<Answer*>(answer)->body.append(data, count);
    return count;
}

size_t TakeHeader(char* data, size_t, size_t count, void* given) {
    auto& answer = *static_cast<Answer*>(given);
    const std::string_view line(data, count);
    if (line.starts_with("HTTP/")) {
        answer.headers.clear();
        answer.body.clear();
    }
    const std::size_t colon = line.find(": ");
    if (colon != line.npos)
        answer.headers.emplace_back(line.substr(0, colon), line.substr(colon + 2, line.find('\r') - colon - 2));
    return count;
}

} // namespace

std::string Answer::Header(std::string_view name) const {
    for (const auto& [each, value] : headers) {
        if (each.size() == name.size() && strncasecmp(each.data(), name.data(), name.size()) == 0)
            return value;
    }
    return {};
}

Answer Send(const Ask& ask) {
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    curl_slist* list = nullptr;
    for (const std::string& header : ask.headers)
        list = curl_slist_append(list, header.c_str());
    list = curl_slist_append(list, "Expect:");
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers(list, curl_slist_free_all);
    Answer answer;
    CURL* curl = handle.get();
    curl_easy_setopt(curl, CURLOPT_URL, ask.url.c_str());
    curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, ask.method.c_str());
    curl_easy_setopt(curl, CURLOPT_NOBODY, ask.method == "HEAD" ? 1L : 0L);
    if (!ask.body.empty() || ask.method == "PUT") {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(ask.body.size()));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, ask.body.c_str());
    }
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
    if (!ask.user.empty()) {
        curl_easy_setopt(curl, CURLOPT_USERPWD, ask.user.c_str());
        curl_easy_setopt(curl, CURLOPT_HTTPAUTH, ask.ntlm ? CURLAUTH_NTLM : CURLAUTH_BASIC);
    }
    if (!ask.certificate_file.empty())
        curl_easy_setopt(curl, CURLOPT_CAINFO, ask.certificate_file.c_str());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, TakeBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, TakeHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &answer);
    answer.is_complete = curl_easy_perform(curl) == CURLE_OK;
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    answer.status = static_cast<int>(status);
    return answer;
}

std::string SendRaw(std::uint16_t port, std::string_view bytes, bool then_close) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("no connection");
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            break;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    if (then_close)
        ::shutdown(socket, SHUT_WR);
    std::string all;
    char block[4096];
    for (ssize_t count = 0; (count = ::recv(socket, block, sizeof block, 0)) > 0;)
        all.append(block, static_cast<std::size_t>(count));
    ::close(socket);
    return all;
}
