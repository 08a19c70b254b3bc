#include "server/services/services.h"
#include "server/wire/http_text.h"

namespace trial {

std::string PathOfUrl(const Request& request, std::string_view url) {
    // Some clients escape the colon of the scheme together with the rest.
    std::string given(Trim(url));
    for (const std::string_view escaped : {std::string_view("http%3A//"), std::string_view("https%3A//")}) {
        if (StartsWithNoCase(given, escaped))
            given.replace(escaped.size() - 5, 3, ":");
    }
    std::string_view rest = given;
    if (!rest.starts_with('/')) {
        const std::size_t scheme = rest.find("://");
        if (scheme == rest.npos)
            throw Refusal(400, "'" + given + "' isn't an absolute URL");
        rest.remove_prefix(scheme + 3);
        const std::string_view host = rest.substr(0, rest.find_first_of("/?#"));
        const auto decoded_host = DecodePercent(host);
        if (!decoded_host || !EqualNoCase(*decoded_host, request.host))
            throw Refusal(502, "'" + std::string(host) + "' is another server");
        rest.remove_prefix(host.size());
    }
    const auto path = DecodeRequestPath(rest.substr(0, rest.find_first_of("?#")));
    if (!path)
        throw Refusal(400, "the path isn't strictly percent-encoded UTF-8 without dot segments");
    return *path;
}

std::string PathBehindLink(const std::string& path) {
    constexpr std::size_t prefix_size = 6;
    const bool is_link = path.size() > prefix_size && path[0] == ':' && path[2] == ':' && path[3] == '/' && path[5] == '/';
    return is_link ? path.substr(prefix_size) : path;
}

std::string UrlOf(const Request& request, std::string_view path) { return request.Origin() + "/" + EncodePath(path); }

Response MultistatusOf(const Request& request, const std::vector<Obstacle>& obstacles) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?><D:multistatus xmlns:D=\"DAV:\">";
    for (const Obstacle& obstacle : obstacles) {
        xml += "<D:response><D:href>" + EscapeXml(UrlOf(request, obstacle.path)) + "</D:href><D:status>HTTP/1.1 " +
               std::to_string(obstacle.status) + " ";
        xml.append(ReasonOf(obstacle.status)).append("</D:status></D:response>");
    }
    return Response::Text(207, "text/xml; charset=utf-8", xml + "</D:multistatus>");
}

} // namespace trial
