#include "sharepoint/object_2013.h"

#include <utility>

#include "frame/diagnostics/diagnostics.h"
#include "http/accept_types.h"
#include "sharepoint/front_page.h"
#include "sharepoint/multi_status_check.h"
#include "sharepoint/soap.h"
#include "url/percent.h"

namespace SharePoint2013 {

Object::Object(std::shared_ptr<Web> web, SharePoint::Information&& information) : m_web(std::move(web)) {
    m_path = information.m_path;
    m_information = std::move(information);
}

bool Object::CanEdit() {
    TRACE_ENTER();
    const bool can_edit = FrontPage::CanEdit(*m_web->m_http, m_web->m_information.m_path.c_str(), m_information.m_path.c_str());
    TRACE_LEAVE(L"{}", can_edit);
    return can_edit;
}

std::shared_ptr<SharePoint::Web> Object::GetWeb() { return m_web; }

const SharePoint::Information& Object::UpdateInformation() {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"updating information for '{}'", Masked(m_information.m_path));
    const std::wstring path = m_information.m_path; // the record that holds it is replaced meanwhile
    m_web->Enumerate(path, false, &m_information);
    TRACE_LEAVE();
    return m_information;
}

void Object::Rename(const std::wstring& new_url) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"renaming '{}' to '{}'", Masked(m_information.m_path), Masked(new_url));
    m_web->SendWebDavTransfer(L"MOVE", m_information.m_path, new_url);
    TRACE_LEAVE();
}

void Object::Delete() {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"deleting '{}'", Masked(m_information.m_path));
    const Http::Response response =
        m_web->m_http->SendRequest(L"DELETE", EncodeUrlPath(m_information.m_path), Http::accept_any, nullptr, nullptr, 0, true);
    Utility::ThrowOnFailedEntry(response, m_information.m_path, L"DELETE");
    TRACE_LEAVE();
}

std::shared_ptr<SharePoint::Folder> Folder::AsFolder() { return shared_from_this(); }

std::vector<std::shared_ptr<SharePoint::Object>> Folder::GetChildren() {
    TRACE_ENTER();
    auto children = m_web->Enumerate(m_information.m_path, true, nullptr);
    TRACE_LEAVE(L"{}", children.size());
    return children;
}

std::shared_ptr<SharePoint::File> File::AsFile() { return shared_from_this(); }

SharePoint::File::CheckOutState File::GetCheckOutState(std::wstring* out_user) {
    TRACE_ENTER();
    TRACE_FORMAT(LogLevel::information, L"Updating information to get current checkout user");
    const std::wstring holder = UpdateInformation().m_checkout_user;
    if (holder.empty()) {
        TRACE_LEAVE(L"none");
        return CheckOutState::none;
    }
    if (out_user != nullptr) {
        *out_user = m_web->GetUserDisplayName(holder);
    }
    const std::wstring user = m_web->GetCurrentUser();
    if (user.empty()) {
        TRACE_FORMAT(LogLevel::error, L"Failed to get current user");
        return CheckOutState::unknown;
    }
    const CheckOutState state = holder == user ? CheckOutState::me : CheckOutState::other_user;
    TRACE_LEAVE(L"{}", static_cast<unsigned>(state));
    return state;
}

bool File::CallLists(const wchar_t* method, const std::wstring& body_tail) {
    const std::wstring page_url = m_web->m_http->GetUri() + L"/" + EncodeUrlPath(m_information.m_path);
    pugi::xml_document document;
    const pugi::xml_node result =
        SharePoint2010::Utility::SoapCall(*m_web->m_http, document, EncodeUrlPath(m_web->m_information.m_path), L"Lists", method,
                                          L"<pageUrl>" + page_url + L"</pageUrl>" + body_tail, L"");
    return result.text().as_bool();
}

bool File::CheckOut() {
    TRACE_ENTER();
    const bool is_done = CallLists(L"CheckOutFile", L"<checkoutToLocal>false</checkoutToLocal>");
    TRACE_LEAVE(L"{}", is_done);
    return is_done;
}

bool File::DiscardCheckOut() {
    TRACE_ENTER();
    const bool is_done = CallLists(L"UndoCheckOut", L"");
    TRACE_LEAVE(L"{}", is_done);
    return is_done;
}

bool File::CheckIn(const wchar_t* comment, SharePoint::CheckInType type) {
    TRACE_ENTER();
    const bool is_done = CallLists(L"CheckInFile", std::wstring(L"<comment>") + comment + L"</comment><CheckinType>" +
                                                       std::to_wstring(static_cast<std::int32_t>(type)) + L"</CheckinType>");
    TRACE_LEAVE(L"{}", is_done);
    return is_done;
}

void File::Copy(const std::wstring& new_url) {
    TRACE_ENTER();
    m_web->SendWebDavTransfer(L"COPY", m_information.m_path, new_url);
    TRACE_LEAVE();
}

void File::Move(const std::wstring& new_url) {
    TRACE_ENTER();
    m_web->SendWebDavTransfer(L"MOVE", m_information.m_path, new_url);
    TRACE_LEAVE();
}

Http::Response File::Download() {
    TRACE_ENTER();
    Http::Response response =
        m_web->m_http->SendRequest(L"GET", EncodeUrlPath(m_information.m_path), Http::accept_file, nullptr, nullptr, 0, true);
    TRACE_LEAVE();
    return response;
}

Http::Request File::Upload(std::uint64_t size) {
    TRACE_ENTER();
    Http::Request request = m_web->m_http->CreateRequest(EncodeUrlPath(m_information.m_path), Http::accept_any, size);
    TRACE_LEAVE();
    return request;
}

} // namespace SharePoint2013
