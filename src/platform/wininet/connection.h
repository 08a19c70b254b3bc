#pragma once

/// One connection to a server at a time, driven by the caller's thread: a transfer moves only inside the calls here.

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <curl/curl.h>

#include "platform/wininet/accounts.h"
#include "platform/wininet/headers.h"
#include "platform/wininet/lines.h"

namespace wininet {

/// In milliseconds: until connected; for the headers of an answer; without a byte of a body while one should flow.
struct Limits {
    DWORD connect = 60000;
    DWORD receive = 600000;
    DWORD send = 60000;
    DWORD data_receive = 60000;
};

/// What an upload hands to the system at once: each block costs two polls, whatever its size.
inline constexpr size_t upload_block = 256 * 1024;

enum class BodyKind { none, memory, upload };

/// Everything that one exchange is made of.
struct Transfer {
    std::string verb;
    std::string url;
    std::string user_agent;
    Lines lines;
    BodyKind body_kind = BodyKind::none;
    /// For BodyKind::memory; lives as long as the transfer.
    const std::string* body = nullptr;
    std::uint64_t upload_size = 0;
    Credential credential;
    Account proxy_account;
    Limits limits;
    bool keep_connection = true;
    bool use_proxy = true;
};

class Connection {
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Begins an exchange; one that is under way is given up.
    DWORD Start(const Transfer& transfer);

    /// Runs until the headers of the final answer are there.
    DWORD DriveToHead();

    /// Runs an upload until its body is wanted, or an answer is there before that.
    DWORD DriveToBody();

    /// The next bytes of an upload's body. After an early answer or a demand to send again they are swallowed.
    DWORD Feed(const char* data, size_t size);

    /// No more bytes come: sends what is left and runs until the headers are there.
    DWORD EndFeed();

    /// Up to `wanted` bytes of the answer's body; fewer only at its end.
    DWORD Read(char* buffer, size_t wanted, size_t& out_got);

    /// Ends the exchange. What little is left of the body is read away, so that the connection can be used again.
    void Stop();

    const AnswerHead& Head() const noexcept { return m_head; }
    /// The whole body has come and was read, or there was none.
    bool IsAtEnd() const noexcept { return m_done && m_spill_at == m_spill.size(); }
    /// Cookie lines of all answers of the exchange, those to its authentication steps too.
    const std::vector<std::string>& CookieLines() const noexcept { return m_cookie_lines; }
    /// What failed, in libcurl's words; empty when nothing did.
    std::string ErrorText() const { return m_error_text; }

private:
    struct EasyDeleter {
        void operator()(CURL* easy) const;
    };
    struct MultiDeleter {
        void operator()(CURLM* multi) const;
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };
    using List = std::unique_ptr<curl_slist, ListDeleter>;

    void SetUpOnce();
    void SetUpTransfer(const Transfer& transfer);
    void SetUpBody(const Transfer& transfer);
    void SetUpCredentials(const Transfer& transfer);
    void SetUpHost(bool secure);
    void SetUpLines(const Transfer& transfer);
    void ResetState(const Transfer& transfer);

    template <typename Goal>
    DWORD Drive(Goal reached);
    bool Perform();
    bool EndIfAborted();
    DWORD CurrentLimit() const noexcept;
    bool IsHeadReady() const noexcept;
    bool HasBodySettled() const noexcept;
    DWORD HeadResult();
    void TakeResult(CURLcode code);

    static size_t OnHeader(char* data, size_t size, size_t count, void* self);
    static size_t OnBody(char* data, size_t size, size_t count, void* self);
    static size_t OnFeed(char* buffer, size_t size, size_t count, void* self);
    static int OnRequest(void* self, char*, char*, int, int);
    size_t TakeHeader(std::string_view line);
    size_t TakeBody(const char* data, size_t size);
    size_t GiveFeed(char* buffer, size_t room);
    void Touch() noexcept { m_last_activity = std::chrono::steady_clock::now(); }

    std::unique_ptr<CURLM, MultiDeleter> m_multi;
    std::unique_ptr<CURL, EasyDeleter> m_easy;
    std::string m_line_text;
    std::vector<curl_slist> m_lines;
    List m_connect_to;
    char m_error_text[CURL_ERROR_SIZE] = "";

    AnswerHead m_head;
    std::vector<std::string> m_cookie_lines;
    Limits m_limits;
    std::chrono::steady_clock::time_point m_last_activity;
    DWORD m_error = 0;
    bool m_active = false;
    /// Some transfer of this connection may have gone through TLS, to the server or to a proxy of the environment.
    bool m_uses_tls = false;
    /// Accounts are set on the handle, and have to be taken back.
    bool m_has_credentials = true;
    bool m_done = false;
    bool m_bad_head = false;
    bool m_request_sent = false;
    bool m_body_seen = false;
    bool m_paused = false;

    // The answer's body: straight into the reader's buffer, what doesn't fit into a bounded one of our own.
    std::string m_spill;
    size_t m_spill_at = 0;
    char* m_target = nullptr;
    size_t m_target_room = 0;
    bool m_discard = false;
    size_t m_discarded = 0;

    // The request's body: gathered into blocks, large pieces straight from the writer.
    std::string m_block;
    const char* m_pending = nullptr;
    size_t m_pending_size = 0;
    std::uint64_t m_upload_size = 0;
    std::uint64_t m_fed = 0;
    bool m_is_upload = false;
    bool m_feed_ended = false;
    bool m_feed_wanted = false;
};

} // namespace wininet
