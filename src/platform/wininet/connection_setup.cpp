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
    curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, buffer_size);
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
    curl_easy_setopt(easy, CURLOPT_USERAGENT, OrNull(transfer.user_agent));
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(transfer.limits.connect));
    curl_easy_setopt(easy, CURLOPT_FORBID_REUSE, transfer.keep_connection ? 0L : 1L);
    curl_easy_setopt(easy, CURLOPT_NOPROXY, transfer.use_proxy ? nullptr : "*");
    SetUpBody(transfer);
    SetUpCredentials(transfer);
    SetUpHost();
}

void Connection::SetUpBody(const Transfer& transfer) {
    CURL* easy = m_easy.get();
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
    curl_easy_setopt(easy, CURLOPT_UPLOAD, 0L);
    if (transfer.body_kind == BodyKind::memory) {
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, transfer.body->data());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(transfer.body->size()));
    } else if (transfer.body_kind == BodyKind::upload) {
        curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
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
    curl_easy_setopt(easy, CURLOPT_HTTPAUTH, AuthBits(credential.scheme));
    curl_easy_setopt(easy, CURLOPT_USERNAME, none ? nullptr : negotiate ? "" : credential.account.user.c_str());
    curl_easy_setopt(easy, CURLOPT_PASSWORD, none ? nullptr : negotiate ? "" : credential.account.password.c_str());
    curl_easy_setopt(easy, CURLOPT_PROXYUSERNAME, OrNull(transfer.proxy_account.user));
    curl_easy_setopt(easy, CURLOPT_PROXYPASSWORD, OrNull(transfer.proxy_account.password));
}

/// What the host settled: more trust, and names that stand elsewhere.
void Connection::SetUpHost() {
    const HostSettings settings = CurrentSettings();
    curl_easy_setopt(m_easy.get(), CURLOPT_CONNECT_TO, nullptr);
    m_connect_to.reset();
    for (const std::string& mapping : settings.connect_to) {
        m_connect_to.reset(curl_slist_append(m_connect_to.release(), mapping.c_str()));
    }
    curl_easy_setopt(m_easy.get(), CURLOPT_CONNECT_TO, m_connect_to.get());
    static const std::string system_file =
        curl_version_info(CURLVERSION_NOW)->cainfo != nullptr ? curl_version_info(CURLVERSION_NOW)->cainfo : "";
    // The system's authorities stay trusted through its certificate folder, which libcurl searches as well.
    curl_easy_setopt(m_easy.get(), CURLOPT_CAINFO,
                     OrNull(settings.certificate_file.empty() ? system_file : settings.certificate_file));
}

bool Connection::SetUpLines(const Lines& lines) {
    List list;
    // libcurl's own lines that are never wanted; a line of the same name below replaces the others by itself.
    for (const char* own : {"Expect:", FindLine(lines, "Accept") == nullptr ? "Accept:" : nullptr,
                            FindLine(lines, "Content-Type") == nullptr ? "Content-Type:" : nullptr}) {
        if (own != nullptr) {
            list.reset(curl_slist_append(list.release(), own));
        }
    }
    for (const Line& line : lines) {
        const std::string text = line.value.empty() ? line.name + ";" : line.name + ": " + line.value;
        curl_slist* longer = curl_slist_append(list.get(), text.c_str());
        if (longer == nullptr) {
            return false;
        }
        list.release();
        list.reset(longer);
    }
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, list.get());
    m_lines = std::move(list);
    return true;
}

} // namespace wininet
