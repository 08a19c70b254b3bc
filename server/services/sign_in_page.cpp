#include "server/services/services.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

Response Page(int status, const std::string& title, const std::string& content) {
    return Response::Text(status, "text/html; charset=utf-8",
                          "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>" + title +
                              "</title></head><body><h1>" + title + "</h1>\n" + content + "</body></html>\n")
        .With("Cache-Control", "no-store");
}

Response FormPage(int status, const std::string& hint) {
    return Page(status, "Sign in",
                (hint.empty() ? "" : "<p>" + hint + "</p>\n") + "<form method=\"post\" action=\"/" + std::string(sign_in_path) +
                    "\">\n<p><label>User <input name=\"user\" autofocus></label></p>\n"
                    "<p><label>Password <input name=\"password\" type=\"password\"></label></p>\n"
                    "<p><button>Sign in</button></p>\n</form>\n");
}

Response SignIn(const Request& request, Accounts& accounts) {
    auto fields = ParseForm(ReadAll(*request.body));
    const User* user = accounts.Check(fields["user"], fields["password"]);
    if (!user)
        return FormPage(200, "This user or this password isn't known.");
    const auto [fed_auth, rt_fa] = accounts.SignIn(user->name);
    const std::string tail = std::string("; Path=/; HttpOnly") + (request.scheme == "https" ? "; Secure" : "");
    return Response::Plain(302, "signed in")
        .With("Set-Cookie", fed_auth + tail)
        .With("Set-Cookie", rt_fa + tail)
        .With("Location", request.Origin() + "/" + std::string(signed_in_path));
}

Response SignOut(const Request& request, Accounts& accounts) {
    accounts.SignOut(request);
    constexpr const char* gone = "=; Path=/; Expires=Thu, 01 Jan 1970 00:00:00 GMT; HttpOnly";
    return Page(200, "Signed out", {})
        .With("Set-Cookie", std::string("FedAuth") + gone)
        .With("Set-Cookie", std::string("rtFa") + gone);
}

} // namespace

std::optional<Response> AnswerSignInPage(const Request& request, Accounts& accounts) {
    if (request.path == sign_in_path)
        return request.method == "POST" ? SignIn(request, accounts) : FormPage(200, {});
    if (request.path == signed_in_path)
        return Page(200, "Signed in", {});
    if (request.path == sign_out_path)
        return SignOut(request, accounts);
    return std::nullopt;
}

} // namespace trial
