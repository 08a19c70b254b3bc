#include "server/services/router.h"

#include "server/services/services.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

struct Verb {
    std::string_view method;
    Response (*answer)(const Call&);
    bool writes;
};

constexpr Verb verbs[] = {
    {"OPTIONS", AnswerOptions, false},   {"HEAD", AnswerGet, false},           {"GET", AnswerGet, false},
    {"PROPFIND", AnswerPropfind, false}, {"PROPPATCH", AnswerProppatch, true}, {"PUT", AnswerPut, true},
    {"MKCOL", AnswerMkcol, true},        {"DELETE", AnswerDelete, true},       {"MOVE", AnswerMove, true},
    {"COPY", AnswerCopy, true},          {"LOCK", AnswerLock, true},           {"UNLOCK", AnswerUnlock, true},
};

struct ServicePath {
    std::string web;
    std::string_view marker;
    std::string rest;
};

// "sites/a/_vti_bin/Lists.asmx" is the service "Lists.asmx" of the web "sites/a".
std::optional<ServicePath> SplitServicePath(std::string_view path) {
    for (const std::string_view marker : {std::string_view("_vti_bin"), std::string_view("_api")}) {
        std::string_view web, rest = path;
        while (!rest.empty()) {
            const std::string_view segment = rest.substr(0, rest.find('/'));
            rest.remove_prefix(std::min(rest.size(), segment.size() + 1));
            if (EqualNoCase(segment, marker))
                return ServicePath{std::string(web), marker, std::string(rest)};
            const auto end = static_cast<std::size_t>(segment.data() + segment.size() - path.data());
            web = path.substr(0, end);
        }
    }
    return std::nullopt;
}

Response AnswerService(Call call, const ServicePath& service) {
    if (!call.webs.IsWeb(service.web))
        throw Refusal(404, "there is no web at /" + service.web);
    call.web_path = call.webs.DeepestAt(service.web);
    if (service.marker == "_api")
        return AnswerRest(call, service.rest);
    if (EqualNoCase(service.rest, "_vti_aut/author.dll"))
        return AnswerAuthorDll(call);
    constexpr std::string_view extension = ".asmx";
    const std::string_view rest = service.rest;
    if (rest.size() > extension.size() && EqualNoCase(rest.substr(rest.size() - extension.size()), extension))
        return AnswerSoap(call, rest.substr(0, rest.size() - extension.size()));
    throw Refusal(404, "there is no such service");
}

} // namespace

Router::Router(Store& store, Accounts& accounts, const std::vector<std::string>& webs)
    : m_store(store), m_accounts(accounts), m_webs(webs) {}

Response Router::Handle(const Request& request, ConnectionSignIn& connection) {
    if (m_accounts.Mode() == AuthMode::forms) {
        if (auto page = AnswerSignInPage(request, m_accounts))
            return std::move(*page);
    }
    Response demand;
    const User* user = m_accounts.Identify(request, connection, demand);
    if (!user)
        return demand;
    const Call call{request, m_store, m_accounts, m_webs, *user};
    if (const auto service = SplitServicePath(request.path))
        return AnswerService(call, *service);
    for (const Verb& verb : verbs) {
        if (verb.method != request.method)
            continue;
        if (verb.writes && !user->may_write)
            throw Refusal(403, user->name + " may only read here");
        return verb.answer(call);
    }
    return Response::Plain(501, "the method " + request.method + " isn't implemented");
}

} // namespace trial
