// Which service answers a request, and whether its user may ask for it.
#pragma once

#include "server/services/webs.h"
#include "server/store/store.h"
#include "server/trial/accounts.h"
#include "server/wire/message.h"

#include <string>
#include <vector>

namespace trial {

/// A request on its way through a service.
struct Call {
    const Request& request;
    Store& store;
    const Accounts& accounts;
    const Webs& webs;
    const User& user;
    std::string web_path = {}; ///< In front of "/_vti_bin/" or "/_api/", for the services that stand below a web.
};

class Router {
public:
    Router(Store& store, Accounts& accounts, const std::vector<std::string>& webs);
    /// Any thread. Throws Refusal.
    Response Handle(const Request& request, ConnectionSignIn& connection);

private:
    Store& m_store;
    Accounts& m_accounts;
    Webs m_webs;
};

} // namespace trial
