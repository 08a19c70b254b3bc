// Which server and which web: suitability, the web of a URL, and who is signed in.

#include "sharepoint/web_2013.h"

#include <algorithm>
#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/front_page.h"
#include "sharepoint/path_text.h"
#include "sharepoint/soap.h"
#include "sharepoint/xml_body.h"
#include "url/compare_urls.h"
#include "url/percent.h"

namespace SharePoint2013 {

namespace {

constexpr unsigned oldest_compatible_generation = 15;

/// The number at the start of "15.0.0.4420".
unsigned ReadGeneration(const std::wstring& version) {
    unsigned generation = 0;
    for (const wchar_t c : version) {
        if (c < L'0' || c > L'9' || generation > 100000) {
            break;
        }
        generation = generation * 10 + static_cast<unsigned>(c - L'0');
    }
    return generation;
}

/// The path of the web that holds an object; false when the server names none on itself.
bool GetWebPath(Http::Session& http, const std::wstring& object_path, std::wstring& out_web_path) {
    TRACE_ENTER();
    const std::wstring uri = http.GetUri();
    const std::wstring page_url = uri + L"/" + EncodeUrlPath(object_path);
    try {
        pugi::xml_document document;
        const pugi::xml_node node = SharePoint2010::Utility::SoapCall(http, document, L"", L"Webs", L"WebUrlFromPageUrl",
                                                                      L"<pageUrl>" + page_url + L"</pageUrl>", L"");
        const wchar_t* const text = node.text().get();
        const CompareUrlsResult result = CompareUrls(uri.c_str(), text, &out_web_path);
        if (result != CompareUrlsResult::equal && result != CompareUrlsResult::url1_is_parent) {
            TRACE_FORMAT(LogLevel::error,
                         L"Unexpected result {} of comparison server URL '{}' to Webs.asmx/WebUrlFromPageUrl('{}')='{}'", result,
                         Masked(uri), Masked(page_url), Masked(text));
            return false;
        }
        Utility::DecodePath(out_web_path);
        TRACE_RETURN(true);
    } catch (const HttpException& exception) {
        TRACE_FORMAT(LogLevel::error, L"Webs.asmx/WebUrlFromPageUrl('{}') returned {}", Masked(page_url), exception.status);
        return false;
    }
}

std::wstring DisplayName(pugi::xml_node user) {
    std::wstring name = user.attribute(L"Name").value();
    const std::wstring email = user.attribute(L"Email").value();
    if (email.empty()) {
        return name;
    }
    return name.empty() ? email : name + L" <" + email + L">";
}

} // namespace

Web::Web(Private, std::shared_ptr<Http::Session> http) : m_http(std::move(http)) {}

std::shared_ptr<Web> Web::Create(const std::shared_ptr<Http::Session>& http, const wchar_t* url) {
    TRACE_ENTER();
    const auto self = std::make_shared<Web>(Private(), http);
    std::wstring object_path;
    const CompareUrlsResult server_to_object_comparison_result = CompareUrls(http->GetUri().c_str(), url, &object_path);
    CHECK_OR_THROW(server_to_object_comparison_result == CompareUrlsResult::equal ||
                       server_to_object_comparison_result == CompareUrlsResult::url1_is_parent,
                   HResultException(E_INVALIDARG, L""));
    CHECK_OR_THROW(GetWebPath(*http, object_path, self->m_information.m_path), HResultException(E_INVALIDARG, L""));
    self->m_path = self->m_information.m_path;
    TRACE_FORMAT(LogLevel::information, L"root='{}'", Masked(self->m_path));
    self->UpdateInformation();
    TRACE_LEAVE();
    return self;
}

bool Web::IsCompatible(Http::Session& http, const std::wstring& path) {
    TRACE_ENTER();
    try {
        const Http::Response response =
            http.SendRequest(L"HEAD", EncodeUrlPath(path), Http::accept_any, nullptr, nullptr, 0, false);
        const std::vector<std::wstring> versions = Http::GetHeaders(response.GetHandle(), L"MicrosoftSharePointTeamServices");
        if (versions.empty()) {
            TRACE_RETURN(false);
        }
        TRACE_FORMAT(LogLevel::information, L"Server version response: {}", versions.front());
        const bool is_compatible = ReadGeneration(versions.front()) >= oldest_compatible_generation;
        TRACE_LEAVE(L"{}", is_compatible);
        return is_compatible;
    } catch (...) { // a server that can't be asked is none that can be used
        return false;
    }
}

std::shared_ptr<SharePoint::Folder> Web::AsFolder() { return shared_from_this(); }

std::shared_ptr<SharePoint::Web> Web::AsWeb() { return shared_from_this(); }

bool Web::CanEdit() {
    TRACE_ENTER();
    TRACE_RETURN(false);
}

std::shared_ptr<SharePoint::Web> Web::GetWeb() { return shared_from_this(); }

const SharePoint::Information& Web::UpdateInformation() {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"Current path '{}'", Masked(m_information.m_path));
    const std::wstring path = m_information.m_path; // the record that holds it is replaced meanwhile
    Enumerate(path, false, &m_information);
    TRACE_LEAVE();
    return m_information;
}

void Web::Rename(const std::wstring& new_url) {
    TRACE_ENTER(L"{}", Masked(new_url));
    THROW_LOGGED(Exception(L"Root folder does not support renaming"));
}

void Web::Delete() {
    TRACE_ENTER();
    THROW_LOGGED(Exception(L"Root folder does not support deleting"));
}

std::vector<std::shared_ptr<SharePoint::Object>> Web::GetChildren() {
    TRACE_ENTER();
    auto children = Enumerate(m_information.m_path, true, nullptr);
    TRACE_LEAVE(L"{}", children.size());
    return children;
}

std::wstring Web::GetCurrentUser() {
    TRACE_ENTER();
    std::wstring login = GetCurrentUserSoap2010();
    if (login.empty()) {
        login = FrontPage::GetCurrentUser(*m_http, m_information.m_path.c_str());
    }
    TRACE_LEAVE(L"{}", login);
    return login;
}

std::wstring Web::GetCurrentUserSoap2010() {
    TRACE_ENTER();
    pugi::xml_document document;
    pugi::xml_node result;
    try {
        result = SharePoint2010::Utility::SoapCall(*m_http, document, EncodeUrlPath(m_information.m_path), L"UserGroup",
                                                   L"GetCurrentUserInfo", L"", L"directory/");
    } catch (...) { // the other protocol is asked next
        TRACE_FORMAT(LogLevel::error, L"Failed to get UserGroup.asmx/GetCurrentUserInfo");
        return {};
    }
    std::wstring login = result.child(L"GetUserInfo").child(L"User").attribute(L"LoginName").value();
    if (login.empty()) {
        TRACE_FORMAT(LogLevel::error, L"Current user is empty or not found in UserGroup.asmx/GetCurrentUserInfo XML:\n{}",
                     Utility::PrintXml(document));
    } else {
        TRACE_FORMAT(LogLevel::information, L"got current user '{}'", login);
    }
    TRACE_LEAVE(L"{}", login);
    return login;
}

std::wstring Web::GetUserDisplayName(const std::wstring& login) {
    TRACE_ENTER();
    std::wstring name;
    try {
        pugi::xml_document document;
        const pugi::xml_node result =
            SharePoint2010::Utility::SoapCall(*m_http, document, EncodeUrlPath(m_information.m_path), L"UserGroup",
                                              L"GetUserInfo", L"<userLoginName>" + login + L"</userLoginName>", L"directory/");
        name = DisplayName(result.child(L"GetUserInfo").child(L"User"));
    } catch (...) { // the login itself names the user
        TRACE_FORMAT(LogLevel::error, L"Failed to get UserGroup.asmx/GetUserInfo");
    }
    if (name.empty()) {
        TRACE_FORMAT(LogLevel::information, L"Got empty user display name, constructing from login");
        name = Utility::WithoutClaims(login);
    } else {
        TRACE_FORMAT(LogLevel::information, L"Got user display name");
    }
    TRACE_LEAVE();
    return name;
}

} // namespace SharePoint2013
