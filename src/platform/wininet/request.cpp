#include <algorithm>

#include "platform/wininet/cookies.h"
#include "platform/wininet/objects.h"
#include "platform/wininet/redirects.h"
#include "platform/wininet/request_round.h"
#include "platform/wininet/settings.h"

namespace wininet {
namespace {

/// Lines that a caller meant for the host that it named, and for no other.
constexpr const char* private_lines[] = {"Authorization", "Cookie", "Host", "Proxy-Authorization"};

/// Lines that go with a body.
constexpr const char* body_lines[] = {"Content-Length", "Content-Type", "Content-Encoding", "Content-Language"};

bool HasName(std::string_view cookies, std::string_view name) noexcept {
    while (!cookies.empty()) {
        const size_t end = std::min(cookies.find(';'), cookies.size());
        const std::string_view pair = Trim(cookies.substr(0, end));
        if (pair.substr(0, pair.find('=')) == name) {
            return true;
        }
        cookies.remove_prefix(std::min(end + 1, cookies.size()));
    }
    return false;
}

void AppendPair(std::string& text, std::string_view pair) {
    if (!pair.empty()) {
        text += text.empty() ? "" : "; ";
        text += pair;
    }
}

/// All cookies in one line; a name that the caller gave stands for itself.
std::string MergeCookies(const std::string& given, std::string_view stored) {
    std::string merged = given;
    while (!stored.empty()) {
        const size_t end = std::min(stored.find(';'), stored.size());
        const std::string_view pair = Trim(stored.substr(0, end));
        if (!HasName(given, pair.substr(0, pair.find('=')))) {
            AppendPair(merged, pair);
        }
        stored.remove_prefix(std::min(end + 1, stored.size()));
    }
    return merged;
}

std::string GivenCookies(const Lines& lines) {
    std::string given;
    for (const Line& line : lines) {
        if (SameName(line.name, "Cookie")) {
            std::string_view value = line.value;
            while (value.ends_with(';') || value.ends_with(' ')) {
                value.remove_suffix(1);
            }
            AppendPair(given, value);
        }
    }
    return given;
}

} // namespace

RequestObject::~RequestObject() { ReleaseConnection(); }

/// The connection goes back for the next request; one whose answer can't be read away is new when it comes out again.
void RequestObject::ReleaseConnection() {
    if (m_connection != nullptr) {
        m_connection->Stop();
        connect->GiveBack(std::move(m_connection));
    }
}

DWORD RequestObject::Report(DWORD error) {
    if (error != ERROR_SUCCESS && m_connection != nullptr) {
        SetResponseInfo(m_connection->ErrorText());
    }
    return error;
}

DWORD RequestObject::Send(const Lines& send_lines, std::string body) {
    m_uploading = false;
    m_body = std::move(body);
    Round round;
    round.body_kind = m_body.empty() ? BodyKind::none : BodyKind::memory;
    PrepareRound(round, send_lines);
    for (int redirects = 0;; ++redirects) {
        DWORD error = SendRound(round);
        if (error != ERROR_SUCCESS) {
            return Report(error);
        }
        const Redirect redirect = ClassifyRedirect(answer.Status(), round.verb);
        if (redirect == Redirect::none) {
            has_answer = true;
            return ERROR_SUCCESS;
        }
        error = redirect == Redirect::refuse || redirects == max_redirects ? ERROR_HTTP_REDIRECT_FAILED : Follow(round);
        if (error != ERROR_SUCCESS) {
            return Report(error);
        }
    }
}

void RequestObject::PrepareRound(Round& round, const Lines& send_lines) {
    has_answer = false;
    current = start;
    round.verb = verb;
    round.lines = JoinLines(lines, send_lines);
}

/// Sends to the current location, answering demands for an account as far as one is at hand.
DWORD RequestObject::SendRound(Round& round) {
    Credential credential = InitialCredential();
    for (;;) {
        if (m_connection == nullptr) {
            m_connection = connect->TakeConnection();
        }
        round.credential = credential;
        DWORD error = m_connection->Start(MakeTransfer(round));
        if (error == ERROR_SUCCESS) {
            error = m_connection->DriveToHead();
        }
        TakeAnswer();
        if (error != ERROR_SUCCESS) {
            return error;
        }
        NoteAnswer(credential);
        const auto next = NextCredential(credential);
        if (!next) {
            return ERROR_SUCCESS;
        }
        credential = *next;
    }
}

/// Turns the round to where the answer leads.
DWORD RequestObject::Follow(Round& round) {
    Location to;
    if (const DWORD error = FollowLocation(answer, current, to); error != ERROR_SUCCESS) {
        return error;
    }
    if (ClassifyRedirect(answer.Status(), round.verb) == Redirect::become_get) {
        round.verb = "GET";
        round.body_kind = BodyKind::none;
        for (const char* name : body_lines) {
            RemoveLines(round.lines, name);
        }
    }
    if (to.origin != current.origin) {
        for (const char* name : private_lines) {
            RemoveLines(round.lines, name);
        }
    }
    current = std::move(to);
    return ERROR_SUCCESS;
}

Transfer RequestObject::MakeTransfer(const Round& round) const {
    Transfer transfer;
    transfer.verb = round.verb;
    transfer.url = current.Text();
    transfer.user_agent = connect->open->agent;
    transfer.lines = WireLines(round);
    transfer.body_kind = round.body_kind;
    transfer.body = &m_body;
    transfer.upload_size = m_upload_size;
    transfer.credential = round.credential;
    transfer.limits = limits;
    transfer.keep_connection = (flags & INTERNET_FLAG_KEEP_CONNECTION) != 0 || round.credential.scheme == Scheme::ntlm;
    transfer.use_proxy = connect->open->use_proxy;
    transfer.proxy_account = proxy_account;
    if (transfer.proxy_account.IsEmpty()) {
        const std::lock_guard guard(connect->lock);
        transfer.proxy_account = connect->proxy_account;
    }
    return transfer;
}

/// The lines as they go out: one for the length, which the body decides, and one for all cookies.
Lines RequestObject::WireLines(const Round& round) const {
    Lines wire = round.lines;
    const bool had_length = FindLine(wire, "Content-Length") != nullptr;
    RemoveLines(wire, "Content-Length");
    const bool wants_length = round.verb != "GET" && round.verb != "HEAD" && round.verb != "OPTIONS";
    if (round.body_kind == BodyKind::none && (had_length || wants_length)) {
        wire.push_back({"Content-Length", "0"});
    }
    const std::string cookies = MergeCookies(GivenCookies(wire), CookieStore::Instance().Text(current, CookieReader::wire));
    RemoveLines(wire, "Cookie");
    if (!cookies.empty()) {
        wire.push_back({"Cookie", cookies});
    }
    return wire;
}

const Account* RequestObject::GivenFor(const Origin& origin, Account& storage) const {
    if (given && given->origin == origin) {
        return &given->account;
    }
    const std::lock_guard guard(connect->lock);
    if (connect->account.IsEmpty() || connect->OriginOf(origin.secure) != origin) {
        return nullptr;
    }
    storage = connect->account;
    return &storage;
}

/// What goes out before anything was asked: what the origin took or asked for before.
Credential RequestObject::InitialCredential() const {
    const Origin& origin = current.origin;
    Account storage;
    const Account* account = GivenFor(origin, storage);
    const auto last = connect->open->accounts.Last(origin);
    if (account == nullptr) {
        return last.value_or(Credential{});
    }
    if (m_challenged == origin && !m_challenges.empty()) {
        return AnswerDemand(m_challenges, {}, {account, nullptr, true}).value_or(Credential{});
    }
    if (last && last->scheme != Scheme::negotiate) {
        return {last->scheme, *account, last->realm};
    }
    return {};
}

std::optional<Credential> RequestObject::NextCredential(const Credential& sent) {
    if (answer.Status() != 401) {
        return std::nullopt;
    }
    m_challenges = ParseChallenges(answer);
    m_challenged = current.origin;
    Account storage;
    const AccountMemory& memory = connect->open->accounts;
    const auto remembered = memory.ForChallenges(current.origin, m_challenges);
    const Candidates candidates{GivenFor(current.origin, storage), remembered ? &*remembered : nullptr,
                                memory.HasNegotiateFailed(current.origin)};
    return AnswerDemand(m_challenges, sent, candidates);
}

/// Remembers what the origin took, and forgets what it refused.
void RequestObject::NoteAnswer(const Credential& sent) {
    if (sent.scheme == Scheme::none) {
        return;
    }
    AccountMemory& memory = connect->open->accounts;
    if (answer.Status() != 401) {
        memory.Remember(current.origin, sent);
        return;
    }
    memory.Forget(current.origin, sent);
    if (sent.scheme == Scheme::negotiate) {
        memory.NoteNegotiateFailed(current.origin);
        return;
    }
    const std::lock_guard guard(connect->lock);
    if (connect->account == sent.account) {
        connect->account = {};
    }
}

/// Keeps the head, since the connection may go back before the caller asks, and stores the cookies.
void RequestObject::TakeAnswer() {
    answer = m_connection->Head();
    for (const std::string& line : m_connection->CookieLines()) {
        CookieStore::Instance().StoreFromAnswer(current, line);
    }
}

DWORD RequestObject::Read(char* buffer, size_t wanted, size_t& out_got) {
    out_got = 0;
    if (!has_answer) {
        return ERROR_INTERNET_INCORRECT_HANDLE_STATE;
    }
    if (m_connection == nullptr) {
        return ERROR_SUCCESS;
    }
    const DWORD error = Report(m_connection->Read(buffer, wanted, out_got));
    if (error == ERROR_SUCCESS && wanted != 0 && out_got == 0) {
        ReleaseConnection();
    }
    return error;
}

} // namespace wininet
