#pragma once

// A web on the server under test.

#include <memory>
#include <string>

#include "frame/log_recorder.h"
#include "http/session.h"
#include "sharepoint/sharepoint.h"
#include "sharepoint/web_2013.h"
#include "support/trial_server.h"

inline std::shared_ptr<SharePoint2013::Web> WebOn(TrialServer& server, const std::string& path = {},
                                                  Http::Session::Credentials account = {}) {
    const auto http = Http::Session::Create(L"http://", L"127.0.0.1", server.Port(), std::move(account), {});
    auto web = SharePoint2013::Web::Create(http, server.WideUrl(path).c_str());
    server.ClearJournal();
    return web;
}

/// "METHOD target" of all requests, in order.
inline std::vector<std::string> Requests(const TrialServer& server) {
    std::vector<std::string> requests;
    for (const SeenRequest& request : server.Journal()) {
        requests.push_back(request.method + " " + request.target);
    }
    return requests;
}

/// The messages of one level, as bytes.
inline std::vector<std::string> NarrowMessages(const LogRecorder& log, unsigned level) {
    std::vector<std::string> messages;
    for (const std::wstring& message : log.Messages(level)) {
        messages.emplace_back(message.begin(), message.end());
    }
    return messages;
}

using Type = SharePoint::Web::BindObjectType;
