#include <mutex>

#include "platform/wininet.h"
#include "platform/wininet/connection.h"
#include "platform/wininet/settings.h"

namespace wininet {
namespace {

constexpr long buffer_size = 64 * 1024;

unsigned long AuthBits(Scheme scheme) noexcept {
    switch (scheme) {
    case Scheme::basic:
        return CURLAUTH_BASIC;
    case Scheme::digest:
        return CURLAUTH_DIGEST;
    case Scheme::ntlm:
        return CURLAUTH_NTLM;
    case Scheme::negotiate:
        return CURLAUTH_NEGOTIATE;
    default:
        return CURLAUTH_NONE;
    }
}

/// A null text takes the option back.
const char* OrNull(const std::string& text) noexcept { return text.empty() ? nullptr : text.c_str(); }

} // namespace

/// What holds for every transfer of this connection.
void Connection::SetUpOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_multi.reset(curl_multi_init());
    m_easy.reset(curl_easy_init());
    if (!m_multi || !m_easy) {
        throw std::bad_alloc();
    }
    CURL* easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, m_error_text);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 0L);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, buffer_size);
    curl_easy_setopt(easy, CURLOPT_PROXYAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST | CURLAUTH_NTLM));
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Connection::OnHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Connection::OnBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, &Connection::OnFeed);
    curl_easy_setopt(easy, CURLOPT_READDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &Connection::OnRequest);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
}

/// Every option that changes is set each time: a reset would drop what the handle knows of digest authentication.
void Connection::SetUpTransfer(const Transfer& transfer) {
    CURL* easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_URL, transfer.url.c_str());
    const bool secure = transfer.url.starts_with("https");
    // Formatted twice by libcurl when given so; the request itself carries a line, and this is for a proxy's tunnel alone.
    curl_easy_setopt(easy, CURLOPT_USERAGENT, secure && transfer.use_proxy ? OrNull(transfer.user_agent) : nullptr);
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(transfer.limits.connect));
    curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, transfer.keep_connection ? 0L : 1L);
    curl_easy_setopt(easy, CURLOPT_NOPROXY, transfer.use_proxy ? nullptr : "*");
    SetUpBody(transfer);
    SetUpCredentials(transfer);
    SetUpHost(secure);
}

void Connection::SetUpBody(const Transfer& transfer) {
    CURL* easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
    curl_easy_setopt(easy, CURLOPT_UPLOAD, 0L);
    if (transfer.body_kind == BodyKind::memory) {
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, buffer_size);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, transfer.body->data());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(transfer.body->size()));
    } else if (transfer.body_kind == BodyKind::upload) {
        curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
        curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, static_cast<long>(upload_block));
        curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(transfer.upload_size));
    } else {
        curl_easy_setopt(easy, transfer.verb == "HEAD" ? CURLOPT_NOBODY : CURLOPT_HTTPGET, 1L);
    }
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, transfer.verb.c_str());
}

void Connection::SetUpCredentials(const Transfer& transfer) {
    CURL* easy = m_easy.get();
    const Credential& credential = transfer.credential;
    const bool negotiate = credential.scheme == Scheme::negotiate;
    const bool none = credential.scheme == Scheme::none;
    const bool any = !none || !transfer.proxy_account.IsEmpty();
    if (!any && !m_has_credentials) {
        return;
    }
    m_has_credentials = any;
    curl_easy_setopt(easy, CURLOPT_HTTPAUTH, AuthBits(credential.scheme));
    curl_easy_setopt(easy, CURLOPT_USERNAME, none ? nullptr : negotiate ? "" : credential.account.user.c_str());
    curl_easy_setopt(easy, CURLOPT_PASSWORD, none ? nullptr : negotiate ? "" : credential.account.password.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, OrNull(transfer.proxy_account.user));
    curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, OrNull(transfer.proxy_account.password));
}

/// What the host settled: more trust, and names that stand elsewhere.
void Connection::SetUpHost(bool secure) {
    const HostSettings settings = CurrentSettings();
    curl_easy_setopt(m_easy.get(), CURLOPT_CONNECT_TO, nullptr);
    m_connect_to.reset();
    for (const std::string& mapping : settings.connect_to) {
        m_connect_to.reset(curl_slist_append(m_connect_to.release(), mapping.c_str()));
    }
    curl_easy_setopt(m_easy.get(), CURLOPT_CONNECT_TO, m_connect_to.get());
    if (!secure) {
        return;
    }
    static const std::string system_file =
        curl_version_info(CURLVERSION_NOW)->cainfo != nullptr ? curl_version_info(CURLVERSION_NOW)->cainfo : "";
    // The system's authorities stay trusted through its certificate folder, which libcurl searches as well.
    curl_easy_setopt(m_easy.get(), CURLOPT_CAINFO,
                     OrNull(settings.certificate_file.empty() ? system_file : settings.certificate_file));
}

/// The list that libcurl reads stands in memory of this connection, which the next transfer uses again.
void Connection::SetUpLines(const Transfer& transfer) {
    const Lines& lines = transfer.lines;
    m_line_text.clear();
    std::vector<size_t> begins;
    begins.reserve(lines.size() + 4);
    const auto append = [&](std::string_view name, std::string_view separator, std::string_view value) {
        begins.push_back(m_line_text.size());
        m_line_text.append(name).append(separator).append(value).push_back('\0');
    };
    // libcurl's own lines that are never wanted; a line of the same name below replaces the others by itself.
    append("Expect", ":", "");
    for (const char* own : {"Accept", "Content-Type"}) {
        if (FindLine(lines, own) == nullptr) {
            append(own, ":", "");
        }
    }
    if (!transfer.user_agent.empty() && FindLine(lines, "User-Agent") == nullptr) {
        append("User-Agent", ": ", transfer.user_agent);
    }
    for (const Line& line : lines) {
        append(line.name, line.value.empty() ? ";" : ": ", line.value);
    }
    m_lines.resize(begins.size());
    for (size_t i = 0; i < begins.size(); ++i) {
        m_lines[i] = {m_line_text.data() + begins[i], i + 1 < begins.size() ? &m_lines[i + 1] : nullptr};
    }
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, m_lines.data());
}

} // namespace wininet
