#include "platform/wininet/connection.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <pthread.h>

#include "platform/wininet.h"
#include "platform/wininet/settings.h"

namespace wininet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t spill_limit = 64 * 1024;
/// What is read away at most, in bytes and time, to keep a connection whose answer nobody read to the end.
constexpr size_t drain_bytes = 64 * 1024;
constexpr auto drain_time = std::chrono::milliseconds(250);

struct ErrorRow {
    CURLcode code;
    DWORD error;
};
constexpr ErrorRow error_rows[] = {
    {CURLE_UNSUPPORTED_PROTOCOL, ERROR_HTTP_INVALID_SERVER_RESPONSE},
    {CURLE_URL_MALFORMAT, ERROR_INTERNET_INVALID_URL},
    {CURLE_COULDNT_RESOLVE_PROXY, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_RESOLVE_HOST, ERROR_INTERNET_NAME_NOT_RESOLVED},
    {CURLE_COULDNT_CONNECT, ERROR_INTERNET_CANNOT_CONNECT},
    {CURLE_WEIRD_SERVER_REPLY, ERROR_HTTP_INVALID_SERVER_RESPONSE},
    {CURLE_PARTIAL_FILE, ERROR_HTTP_INVALID_SERVER_RESPONSE},
    {CURLE_BAD_CONTENT_ENCODING, ERROR_INTERNET_DECODING_FAILED},
    {CURLE_OUT_OF_MEMORY, ERROR_NOT_ENOUGH_MEMORY},
    {CURLE_OPERATION_TIMEDOUT, ERROR_INTERNET_TIMEOUT},
    {CURLE_SSL_CONNECT_ERROR, ERROR_INTERNET_SECURITY_CHANNEL_ERROR},
    {CURLE_GOT_NOTHING, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_SEND_ERROR, ERROR_INTERNET_CONNECTION_ABORTED},
    {CURLE_RECV_ERROR, ERROR_INTERNET_CONNECTION_RESET},
    {CURLE_SEND_FAIL_REWIND, ERROR_INTERNET_FORCE_RETRY},
    {CURLE_SSL_CACERT_BADFILE, ERROR_INTERNET_INVALID_CA},
};

DWORD ErrorOf(CURLcode code, CURL* easy) noexcept {
    if (code == CURLE_PEER_FAILED_VERIFICATION) {
        long verify = 0;
        curl_easy_getinfo(easy, CURLINFO_SSL_VERIFYRESULT, &verify);
        return verify == 0 ? ERROR_INTERNET_SEC_CERT_CN_INVALID : ERROR_INTERNET_INVALID_CA;
    }
    for (const ErrorRow& row : error_rows) {
        if (row.code == code) {
            return row.error;
        }
    }
    return ERROR_INTERNET_INTERNAL_ERROR;
}

/// A write to a closed TLS connection raises SIGPIPE; it is held off for this thread alone and taken away. Plain sockets
/// are written to without that signal.
class NoBrokenPipeSignal {
public:
    explicit NoBrokenPipeSignal(bool is_needed) : m_is_needed(is_needed) {
        if (!m_is_needed) {
            return;
        }
        sigemptyset(&m_signal);
        sigaddset(&m_signal, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        m_was_pending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_signal, &m_old);
    }
    ~NoBrokenPipeSignal() {
        if (!m_is_needed) {
            return;
        }
        constexpr timespec at_once{};
        if (!m_was_pending) {
            sigtimedwait(&m_signal, nullptr, &at_once);
        }
        pthread_sigmask(SIG_SETMASK, &m_old, nullptr);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

private:
    sigset_t m_signal;
    sigset_t m_old;
    bool m_is_needed;
    bool m_was_pending = false;
};

/// The environment names a proxy that is itself reached through TLS.
bool HasTlsProxy() {
    static const bool has_one = [] {
        for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
            const char* proxy = std::getenv(name);
            if (proxy != nullptr && SameName(std::string_view(proxy).substr(0, 6), "https:")) {
                return true;
            }
        }
        return false;
    }();
    return has_one;
}

} // namespace

void Connection::EasyDeleter::operator()(CURL* easy) const { curl_easy_cleanup(easy); }

void Connection::MultiDeleter::operator()(CURLM* multi) const { curl_multi_cleanup(multi); }

Connection::Connection() { SetUpOnce(); }

Connection::~Connection() {
    const NoBrokenPipeSignal guard(m_uses_tls);
    if (m_active) {
        curl_multi_remove_handle(m_multi.get(), m_easy.get());
    }
    m_easy.reset();
    m_multi.reset();
}

DWORD Connection::Start(const Transfer& transfer) {
    Stop();
    ResetState(transfer);
    m_uses_tls = m_uses_tls || (transfer.use_proxy && HasTlsProxy()) || transfer.url.starts_with("https");
    SetUpTransfer(transfer);
    SetUpLines(transfer);
    if (curl_multi_add_handle(m_multi.get(), m_easy.get()) != CURLM_OK) {
        return ERROR_INTERNET_INTERNAL_ERROR;
    }
    m_active = true;
    return ERROR_SUCCESS;
}

void Connection::ResetState(const Transfer& transfer) {
    m_error_text[0] = '\0';
    m_head.Clear();
    m_cookie_lines.clear();
    m_limits = transfer.limits;
    m_error = ERROR_SUCCESS;
    m_done = m_bad_head = m_request_sent = m_body_seen = m_paused = m_discard = false;
    m_discarded = 0;
    m_spill.clear();
    m_spill_at = 0;
    m_block.clear();
    m_pending_size = 0;
    m_upload_size = transfer.upload_size;
    m_fed = 0;
    m_is_upload = transfer.body_kind == BodyKind::upload;
    m_feed_ended = m_feed_wanted = false;
}

void Connection::TakeResult(CURLcode code) {
    m_done = true;
    long connect_status = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_HTTP_CONNECTCODE, &connect_status);
    if (code == CURLE_OK || m_error != ERROR_SUCCESS) {
        return;
    }
    // The answer of a proxy that wants an account ends the transfer, but it is an answer.
    if (!m_request_sent && connect_status == 407 && m_head.IsComplete()) {
        m_request_sent = true;
        return;
    }
    m_error = ErrorOf(code, m_easy.get());
    if (m_error_text[0] == '\0') {
        std::strncpy(m_error_text, curl_easy_strerror(code), sizeof m_error_text - 1);
    }
}

/// One step; false when libcurl itself fails.
bool Connection::Perform() {
    int running = 0;
    if (curl_multi_perform(m_multi.get(), &running) != CURLM_OK) {
        m_error = ERROR_INTERNET_INTERNAL_ERROR;
        m_done = true;
        return false;
    }
    int left = 0;
    while (const CURLMsg* message = running == 0 ? curl_multi_info_read(m_multi.get(), &left) : nullptr) {
        if (message->msg == CURLMSG_DONE) {
            TakeResult(message->data.result);
        }
    }
    return true;
}

/// 0 while libcurl's own limit for connecting holds.
DWORD Connection::CurrentLimit() const noexcept {
    if (!m_request_sent) {
        return 0;
    }
    if (m_is_upload && !m_feed_ended) {
        return m_limits.send;
    }
    return IsHeadReady() ? m_limits.data_receive : m_limits.receive;
}

bool Connection::EndIfAborted() {
    if (!AreTransfersAborted()) {
        return false;
    }
    m_error = ERROR_INTERNET_OPERATION_CANCELLED;
    m_done = true;
    return true;
}

template <typename Goal>
DWORD Connection::Drive(Goal reached) {
    if (!m_active) {
        return ERROR_INTERNET_INCORRECT_HANDLE_STATE;
    }
    if (m_done) {
        return ERROR_SUCCESS;
    }
    const NoBrokenPipeSignal guard(m_uses_tls);
    Touch();
    while (!EndIfAborted() && Perform() && !m_done && !reached()) {
        // How soon an abort is seen.
        constexpr int longest_wait = 100;
        int wait = longest_wait;
        if (const DWORD limit = CurrentLimit(); limit != 0) {
            const auto idle = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_last_activity).count();
            if (idle >= static_cast<std::int64_t>(limit)) {
                m_error = ERROR_INTERNET_TIMEOUT;
                m_done = true;
                std::strncpy(m_error_text, "The server sent or took nothing for too long", sizeof m_error_text - 1);
                return m_error;
            }
            wait = static_cast<int>(std::min<std::int64_t>(wait, static_cast<std::int64_t>(limit) - idle));
        }
        curl_multi_poll(m_multi.get(), nullptr, 0, wait, nullptr);
    }
    return m_error == ERROR_INTERNET_OPERATION_CANCELLED ? m_error : ERROR_SUCCESS;
}

/// The final answer's headers are there. While a demand for an account may still be answered inside libcurl, only the
/// answer's body or end tells.
bool Connection::IsHeadReady() const noexcept {
    if (m_done || m_body_seen) {
        return true;
    }
    const int status = m_head.Status();
    return m_request_sent && m_head.IsComplete() && status >= 200 && status != 401 && status != 407;
}

DWORD Connection::HeadResult() {
    const int status = m_head.Status();
    const bool has_head = m_head.IsComplete() && !m_bad_head && m_request_sent && status >= 200;
    if (m_error == ERROR_SUCCESS) {
        return has_head ? ERROR_SUCCESS : ERROR_HTTP_INVALID_SERVER_RESPONSE;
    }
    // A failure behind the headers belongs to the body, and is told when that is read. A demand to send again never is.
    const bool in_body = has_head && m_error != ERROR_INTERNET_FORCE_RETRY && (m_body_seen || (status != 401 && status != 407));
    return in_body ? ERROR_SUCCESS : m_error;
}

DWORD Connection::DriveToHead() {
    if (const DWORD error = Drive([this] { return IsHeadReady(); }); error != ERROR_SUCCESS) {
        return error;
    }
    return HeadResult();
}

/// Nothing more of an upload's body is wanted: a bad answer is there, or all is over.
bool Connection::HasBodySettled() const noexcept { return m_done || (IsHeadReady() && m_head.Status() >= 300); }

DWORD Connection::DriveToBody() {
    if (const DWORD error = Drive([this] { return m_feed_wanted || IsHeadReady(); }); error != ERROR_SUCCESS) {
        return error;
    }
    return IsHeadReady() && HeadResult() != ERROR_INTERNET_FORCE_RETRY ? HeadResult() : ERROR_SUCCESS;
}

DWORD Connection::Feed(const char* data, size_t size) {
    if (HasBodySettled()) {
        const DWORD error = HeadResult();
        return error == ERROR_INTERNET_FORCE_RETRY ? ERROR_SUCCESS : error;
    }
    if (m_block.size() + size < upload_block) {
        m_block.append(data, size);
        return ERROR_SUCCESS;
    }
    m_pending = data;
    m_pending_size = size;
    m_feed_wanted = false;
    curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
    const DWORD error = Drive([this] { return m_feed_wanted || HasBodySettled(); });
    // What is left is less than a block, or the end of the body, which waits for EndFeed.
    if (error == ERROR_SUCCESS && !HasBodySettled()) {
        m_block.append(m_pending, m_pending_size);
    }
    m_pending_size = 0;
    if (error != ERROR_SUCCESS) {
        return error;
    }
    const DWORD result = HasBodySettled() ? HeadResult() : ERROR_SUCCESS;
    return result == ERROR_INTERNET_FORCE_RETRY ? ERROR_SUCCESS : result;
}

DWORD Connection::EndFeed() {
    m_feed_ended = true;
    if (!HasBodySettled()) {
        curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
    }
    return DriveToHead();
}

DWORD Connection::Read(char* buffer, size_t wanted, size_t& out_got) {
    out_got = std::min(wanted, m_spill.size() - m_spill_at);
    if (out_got != 0) {
        std::memcpy(buffer, m_spill.data() + m_spill_at, out_got);
        m_spill_at += out_got;
    }
    if (m_spill_at == m_spill.size()) {
        m_spill.clear();
        m_spill_at = 0;
    }
    if (out_got == wanted) {
        return ERROR_SUCCESS;
    }
    if (!m_done) {
        m_target = buffer + out_got;
        m_target_room = wanted - out_got;
        if (m_paused) {
            m_paused = false;
            curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
        }
        if (m_target_room != 0) {
            Drive([this] { return m_target_room == 0; });
        }
        out_got = wanted - m_target_room;
        m_target = nullptr;
        m_target_room = 0;
    }
    return out_got == 0 ? m_error : ERROR_SUCCESS;
}

void Connection::Stop() {
    if (!m_active) {
        return;
    }
    const NoBrokenPipeSignal guard(m_uses_tls);
    if (!m_done && IsHeadReady() && !m_is_upload) {
        m_discard = true;
        m_spill.clear();
        m_spill_at = 0;
        curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
        const auto deadline = Clock::now() + drain_time;
        while (Perform() && !m_done && Clock::now() < deadline) {
            curl_multi_poll(m_multi.get(), nullptr, 0, 50, nullptr);
        }
    }
    curl_multi_remove_handle(m_multi.get(), m_easy.get());
    m_active = false;
    m_done = true;
}

int Connection::OnRequest(void* self, char*, char*, int, int) {
    auto& connection = *static_cast<Connection*>(self);
    // What came before belongs to a proxy, or to a step of the authentication that is over.
    connection.m_head.Clear();
    connection.m_request_sent = true;
    connection.Touch();
    return CURL_PREREQFUNC_OK;
}

size_t Connection::OnHeader(char* data, size_t size, size_t count, void* self) {
    return static_cast<Connection*>(self)->TakeHeader({data, size * count});
}

size_t Connection::TakeHeader(std::string_view line) {
    if (m_body_seen) {
        return line.size();
    }
    const bool was_complete = m_head.IsComplete();
    if (const DWORD error = m_head.AddLine(line); error != ERROR_SUCCESS) {
        m_error = error;
        m_bad_head = true;
        return 0;
    }
    if (!was_complete && m_head.IsComplete() && m_request_sent) {
        for (size_t i = 0; const auto value = m_head.Value("Set-Cookie", i); ++i) {
            m_cookie_lines.emplace_back(*value);
        }
        // A server that talks before the body is over may go on to take it; from its answer on the limits of bodies hold.
        Touch();
    }
    return line.size();
}

size_t Connection::OnBody(char* data, size_t size, size_t count, void* self) {
    return static_cast<Connection*>(self)->TakeBody(data, size * count);
}

size_t Connection::TakeBody(const char* data, size_t size) {
    m_body_seen = true;
    Touch();
    if (m_discard) {
        m_discarded += size;
        return m_discarded > drain_bytes ? 0 : size;
    }
    if (m_spill.size() - m_spill_at >= spill_limit) {
        m_paused = true;
        return CURL_WRITEFUNC_PAUSE;
    }
    const size_t direct = std::min(size, m_target_room);
    if (direct != 0) {
        std::memcpy(m_target, data, direct);
        m_target += direct;
        m_target_room -= direct;
    }
    m_spill.append(data + direct, size - direct);
    return size;
}

size_t Connection::OnFeed(char* buffer, size_t size, size_t count, void* self) {
    return static_cast<Connection*>(self)->GiveFeed(buffer, size * count);
}

size_t Connection::GiveFeed(char* buffer, size_t room) {
    const size_t available = m_block.size() + m_pending_size;
    const size_t wanted = std::min(room, upload_block);
    const size_t size = std::min(available, wanted);
    // The last bytes wait for the end, so that a body that turns out too long never becomes a complete request.
    const bool completes = m_fed + size >= m_upload_size;
    if (!m_feed_ended && (available < wanted || completes)) {
        m_feed_wanted = true;
        return CURL_READFUNC_PAUSE;
    }
    const size_t from_block = std::min(size, m_block.size());
    std::memcpy(buffer, m_block.data(), from_block);
    m_block.erase(0, from_block);
    if (size > from_block) {
        std::memcpy(buffer + from_block, m_pending, size - from_block);
        m_pending += size - from_block;
        m_pending_size -= size - from_block;
    }
    m_fed += size;
    Touch();
    return size;
}

} // namespace wininet
