#include "server/connection.h"

#include "server/trial/response_writer.h"
#include "server/wire/http_text.h"
#include "server/wire/request_reader.h"

#include <utility>
#include <vector>

namespace trial {
namespace {

// Reads the body on the service's behalf: at the connection's rate, and with a copy for the journal.
class ObservedBody : public BodySource {
public:
    ObservedBody(BodySource& source, Pacer& pacer, BodyRecord* record) : m_source(source), m_pacer(pacer), m_record(record) {}

    std::size_t Read(char* to, std::size_t capacity) override {
        const std::size_t count = m_source.Read(to, std::min(capacity, m_pacer.Step()));
        m_pacer.Spend(count);
        if (m_record)
            m_record->Add({to, count});
        return count;
    }

private:
    BodySource& m_source;
    Pacer& m_pacer;
    BodyRecord* m_record;
};

// Takes in what the service left of the body, up to `limit` bytes.
void Drain(BodySource& body, std::uint64_t limit) {
    std::vector<char> block(64 * 1024);
    while (limit > 0) {
        const std::size_t count = body.Read(block.data(), std::min<std::uint64_t>(limit, block.size()));
        if (count == 0)
            return;
        limit -= count;
    }
}

// "/a/b?x", "http://host/a/b?x" and "*" are the forms of a target (RFC 9112 section 3.2).
void SplitTarget(Request& request) {
    std::string_view target = request.target;
    if (const std::size_t scheme = target.find("://"); scheme != target.npos && target.front() != '/') {
        target.remove_prefix(scheme + 3);
        target.remove_prefix(std::min(target.find_first_of("/?"), target.size()));
    } else if (target == "*") {
        target = "/";
    } else if (!target.starts_with('/')) {
        throw Refusal(400, "the target has to begin with a slash");
    }
    const std::size_t question = target.find('?');
    if (question != target.npos)
        request.query = target.substr(question + 1);
    const auto path = DecodeRequestPath(target.substr(0, question));
    if (!path)
        throw Refusal(400, "the path isn't strictly percent-encoded UTF-8 without dot segments");
    request.path = *path;
}

Damage DamageOf(const std::optional<Fault>& fault) {
    if (!fault)
        return Damage::none;
    switch (fault->action) {
    case FaultAction::truncate:
        return Damage::truncate;
    case FaultAction::garbage:
        return Damage::garbage;
    case FaultAction::close_after_headers:
        return Damage::close_after_headers;
    default:
        return Damage::none;
    }
}

// The answer of a fault that keeps the request from being done at all.
std::optional<Response> AnswerInstead(const std::optional<Fault>& fault) {
    if (!fault)
        return std::nullopt;
    switch (fault->action) {
    case FaultAction::status:
        return Response::Plain(static_cast<int>(fault->number), "a fault");
    case FaultAction::page:
        return Response::Text(
            200, "text/html; charset=utf-8",
            "<!DOCTYPE html>\n<html><head><title>Sign in</title></head><body><p>Please sign in.</body></html>\n");
    case FaultAction::redirect:
        return Response::Plain(302, "elsewhere").With("Location", fault->url);
    default:
        return std::nullopt;
    }
}

class Conversation {
public:
    Conversation(Wire& wire, const ConnectionSettings& settings)
        : m_wire(wire), m_settings(settings), m_reader(wire), m_pacer(settings.bytes_per_second, settings.stop) {}

    /// One request and its answer; false when the connection is to end.
    bool ServeNext();

private:
    Response Answer(Request& request, const std::optional<Fault>& fault);
    void Send(Response response, const SendOptions& options);
    void RefuseHead(const Refusal& refusal);

    Wire& m_wire;
    const ConnectionSettings& m_settings;
    RequestReader m_reader;
    Pacer m_pacer;
    ConnectionSignIn m_sign_in;
};

Response Conversation::Answer(Request& request, const std::optional<Fault>& fault) {
    try {
        SplitTarget(request);
        if (auto instead = AnswerInstead(fault))
            return std::move(*instead);
        return m_settings.handle(request, m_sign_in);
    } catch (const Refusal& refusal) {
        return Response::Plain(refusal.status, refusal.what());
    } catch (const BodyCutShort&) {
        throw;
    } catch (const WireClosed&) {
        throw;
    } catch (const std::exception& failure) {
        return Response::Plain(500, failure.what());
    }
}

void Conversation::Send(Response response, const SendOptions& options) {
    if (!m_settings.version_header.empty())
        response.With("MicrosoftSharePointTeamServices", m_settings.version_header);
    SendResponse(m_wire, std::move(response), options, m_pacer);
}

void Conversation::RefuseHead(const Refusal& refusal) { Send(Response::Plain(refusal.status, refusal.what()), {.close = true}); }

bool Conversation::ServeNext() {
    std::optional<Request> head;
    try {
        head = m_reader.ReadHead();
    } catch (const Refusal& refusal) {
        RefuseHead(refusal);
        return false;
    }
    if (!head)
        return false;
    Request& request = *head;
    request.scheme = m_settings.scheme;
    request.host = request.headers.Find("Host") ? std::string(request.headers.Get("Host")) : m_settings.own_host;
    BodyRecord record;
    ObservedBody body(m_reader.Body(), m_pacer, m_settings.journal.IsOn() ? &record : nullptr);
    request.body = &body;

    // Faults know decoded paths; what can't be decoded meets the patterns as it stands.
    const std::string_view raw = std::string_view(request.target).substr(0, request.target.find('?'));
    const std::string fault_path = DecodeRequestPath(raw).value_or(std::string(raw));
    const std::optional<Fault> fault = m_settings.faults.Take(request.method, fault_path);
    JournalEntry entry{request.method, request.target, request.headers.Lines(), {}, 0, {}, 0};
    bool is_recorded = false;
    const auto keep_record = [&](int status) {
        if (std::exchange(is_recorded, true))
            return;
        record.FinishInto(entry);
        entry.status = status;
        if (m_settings.journal.IsOn())
            m_settings.journal.Record(std::move(entry));
    };
    if (fault && fault->action == FaultAction::reset) {
        keep_record(0);
        m_wire.ResetOnClose();
        return false;
    }
    try {
        if (m_settings.latency.count() > 0)
            m_settings.stop.Wait(m_settings.latency);
        if (fault && fault->action == FaultAction::delay)
            m_settings.stop.Wait(std::chrono::milliseconds(fault->number));
        Response response = Answer(request, fault);
        // A short rest is taken in first, so that the client reads its answer with all said; a long one afterwards, since
        // the client may want to stop when it hears no.
        const bool is_waiting = m_reader.IsClientWaiting();
        if (!is_waiting)
            Drain(body, 1 << 20);
        const bool close = is_waiting || !m_reader.KeepsAlive();
        keep_record(response.status);
        Send(std::move(response), {.head_only = request.method == "HEAD",
                                   .close = close,
                                   .chunked_allowed = request.version >= 11,
                                   .damage = DamageOf(fault)});
        if (!is_waiting)
            Drain(m_reader.Body(), UINT64_MAX);
        return !close;
    } catch (const BodyCutShort&) {
        keep_record(0);
        return false;
    }
}

} // namespace

void ServeConnection(Wire& wire, const ConnectionSettings& settings) {
    try {
        Conversation conversation(wire, settings);
        while (conversation.ServeNext()) {
        }
    } catch (const WireClosed&) {
        // The peer has gone, or the server ends: either way there is nobody left to tell.
    } catch (const BodyCutShort&) {
        // The same, while the rest of a refused body was being taken in.
    }
}

} // namespace trial
