#include "server/services/soap.h"
#include "server/wire/http_text.h"

namespace trial {
namespace {

std::string UserXml(const User& user) {
    return "<GetUserInfo><User ID=\"1\" Sid=\"\" Name=\"" + EscapeXml(user.display_name) + "\" LoginName=\"" +
           EscapeXml(user.login) + "\" Email=\"" + EscapeXml(user.email) + "\" Notes=\"\" IsSiteAdmin=\"False\" /></GetUserInfo>";
}

std::string GetCurrentUserInfo(const Call& call, const XmlElement&) { return UserXml(call.user); }

std::string GetUserInfo(const Call& call, const XmlElement& arguments) {
    const User* user = call.accounts.FindByLogin(SoapArgument(arguments, "userLoginName"));
    if (!user)
        throw SoapFault("the user isn't known");
    return UserXml(*user);
}

constexpr SoapMethod methods[] = {{"GetCurrentUserInfo", GetCurrentUserInfo}, {"GetUserInfo", GetUserInfo}};

} // namespace

const SoapService user_group_service{"UserGroup", "directory/", methods};

} // namespace trial
