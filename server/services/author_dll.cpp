// The two methods of the FrontPage Server Extensions that clients of document libraries still use. Answers are pages of
// HTML lists whose items are names and typed values, one a line.

#include "server/services/services.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

std::string EscapeItem(std::string_view text) {
    std::string escaped;
    for (char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\\':
            escaped += "&#92;";
            break;
        default:
            escaped.push_back(c);
        }
    }
    return escaped;
}

Response Packet(const std::string& content) {
    return Response::Text(200, "application/x-vermeer-rpc",
                          "<html><head><title>vermeer RPC packet</title></head>\n<body>\n" + content + "</body>\n</html>\n");
}

// "[a.pdf;b.pdf]"; brackets, semicolons and backslashes of a name stand behind a backslash.
std::vector<std::string> ReadUrlList(std::string_view text) {
    if (text.size() < 2 || text.front() != '[' || text.back() != ']')
        throw Refusal(400, "url_list isn't a list");
    text = text.substr(1, text.size() - 2);
    std::vector<std::string> urls(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size())
            urls.back().push_back(text[++i]);
        else if (text[i] == ';')
            urls.emplace_back();
        else
            urls.back().push_back(text[i]);
    }
    return urls;
}

std::string MetaInfo(const Call& call, const Entry& entry) {
    const bool may_edit = call.user.may_write;
    std::string items = "<li>meta_info=\n<ul>\n";
    items += "<li>vti_timelastmodified\n<li>TR|" + EscapeItem(HttpDate(entry.modified)) + "\n";
    if (!entry.is_folder)
        items += "<li>vti_filesize\n<li>IR|" + std::to_string(entry.size) + "\n";
    if (!entry.holder.empty())
        items += "<li>vti_sourcecontrolcheckedoutby\n<li>SR|" + EscapeItem(entry.holder) + "\n";
    items += std::string("<li>vti_canmaybeedit\n<li>BX|") + (may_edit ? "true" : "false") + "\n";
    return items + "</ul>\n";
}

Response GetDocsMetaInfo(const Call& call, const std::map<std::string, std::string>& fields) {
    const auto list = fields.find("url_list");
    std::string documents, folders, failed;
    for (const std::string& url : ReadUrlList(list == fields.end() ? "[]" : list->second)) {
        const auto path = DecodeRequestPath(EncodePath(url));
        const auto entry = path ? call.store.Find(JoinPath(call.web_path, *path)) : std::nullopt;
        if (!entry)
            failed += "<li>" + EscapeItem(url) + "\n";
        else
            (entry->is_folder ? folders : documents) += std::string("<ul>\n<li>") +
                                                        (entry->is_folder ? "url=" : "document_name=") + EscapeItem(url) + "\n" +
                                                        MetaInfo(call, *entry) + "</ul>\n";
    }
    return Packet("<p>method=getDocsMetaInfo:12.0.0.0\n<p>document_list=\n<ul>\n" + documents + "</ul>\n<p>urldirs=\n<ul>\n" +
                  folders + "</ul>\n" + (failed.empty() ? "" : "<p>failedUrls=\n<ul>\n" + failed + "</ul>\n"));
}

Response OpenService(const Call& call, const std::map<std::string, std::string>&) {
    return Packet("<p>method=open service:12.0.0.0\n<p>service=\n<ul>\n<li>service_name=/" + EscapeItem(call.web_path) +
                  "\n<li>meta_info=\n<ul>\n<li>vti_username\n<li>SX|" + EscapeItem(call.user.login) + "\n</ul>\n</ul>\n");
}

struct Method {
    std::string_view name;
    Response (*answer)(const Call&, const std::map<std::string, std::string>&);
};

constexpr Method methods[] = {{"getDocsMetaInfo", GetDocsMetaInfo}, {"open service", OpenService}};

} // namespace

Response AnswerAuthorDll(const Call& call) {
    if (call.request.method != "POST")
        throw Refusal(405, "methods are called by POST");
    const auto fields = ParseForm(Trim(ReadAll(*call.request.body)));
    const auto called = fields.find("method");
    const std::string name = called == fields.end() ? std::string() : called->second.substr(0, called->second.find(':'));
    for (const Method& method : methods) {
        if (EqualNoCase(method.name, name))
            return method.answer(call, fields);
    }
    return Packet("<p>method=" + EscapeItem(name) +
                  "\n<p>status=\n<ul>\n<li>status=262145\n<li>osstatus=0\n<li>msg=There is no such method.\n<li>osmsg=\n</ul>\n");
}

} // namespace trial
