// Webs, objects and listings, over a real socket.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/diagnostics/exceptions.h"
#include "frame/log_recorder.h"
#include "sharepoint/served_web.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(WebBinding, VersionDecidesWhetherAServerFits) {
    const std::pair<const char*, bool> rows[] = {
        {"14.0.0.7015", false}, {"15.0.0.0", true}, {"16.0.0.4327", true}, {"", false}, {"x15", false},
    };
    for (const auto& [version, fits] : rows) {
        TrialServer server({.auth = TrialAuth::basic, .users = {{"ann", "secret"}}, .version_header = version});
        const auto http = Http::Session::Create(L"http://", L"127.0.0.1", server.Port(), {}, {});
        EXPECT_EQ(SharePoint2013::Web::IsCompatible(http, L"no such\u00E9"), fits) << version;
        EXPECT_THAT(Requests(server), ElementsAre("HEAD /no%20such%C3%A9"));
    }
    const auto nowhere = Http::Session::Create(L"http://", L"127.0.0.1", 1, {}, {});
    EXPECT_FALSE(SharePoint2013::Web::IsCompatible(nowhere, L""));
}

TEST(WebBinding, DeepestWebOfAUrlIsFound) {
    TrialServer server({.sites = {"sites/my web"}});
    server.Put("sites/my web/Docs/a.pdf", "x");
    const auto http = Http::Session::Create(L"http://", L"127.0.0.1", server.Port(), {}, {});
    const auto web = SharePoint2013::Web::Create(http, server.WideUrl("sites/my web/Docs/a.pdf").c_str());
    EXPECT_EQ(web->m_information.m_path, L"sites/my web");
    EXPECT_EQ(web->m_path, L"sites/my web");
    EXPECT_EQ(web->GetWeb(), web->AsWeb());
    EXPECT_NE(web->AsFolder(), nullptr);
    EXPECT_EQ(web->AsFile(), nullptr);
    EXPECT_THAT(Requests(server), ElementsAre("POST /_vti_bin/Webs.asmx", "PROPFIND /sites/my%20web"));
    const SeenRequest soap = server.Journal()[0];
    EXPECT_EQ(soap.Header("SOAPAction"), "\"http://schemas.microsoft.com/sharepoint/soap/WebUrlFromPageUrl\"");
    EXPECT_EQ(soap.Header("content-type"), "text/xml; charset=utf-8");
    EXPECT_THAT(soap.body, HasSubstr("<pageUrl>" + server.Origin() + "/sites/my%20web/Docs/a.pdf</pageUrl>"));
    const SeenRequest propfind = server.Journal()[1];
    EXPECT_EQ(propfind.Header("Depth"), "0");
    EXPECT_EQ(propfind.body, "<?xml version=\"1.0\" ?><D:propfind xmlns:D=\"DAV:\"><D:allprop/></D:propfind>");

    server.ClearJournal();
    EXPECT_FALSE(web->CanEdit());
    EXPECT_THROW(web->Delete(), Exception);
    EXPECT_THROW(web->Rename(L""), Exception);
    EXPECT_TRUE(server.Journal().empty());
}

TEST(WebBinding, WebThatNoServerNamesIsInvalid) {
    TrialServer server;
    const auto http = Http::Session::Create(L"http://", L"127.0.0.1", server.Port(), {}, {});
    const auto create = [&](const wchar_t* url) {
        try {
            SharePoint2013::Web::Create(http, url);
        } catch (const HResultException& exception) {
            return exception.hr;
        }
        return S_OK;
    };
    EXPECT_EQ(create(L"http://another/"), E_INVALIDARG);
    LogRecorder log(LogLevel::error);
    server.Once("POST * status=500");
    EXPECT_EQ(create(server.WideUrl("a b").c_str()), E_INVALIDARG);
    EXPECT_THAT(NarrowMessages(log, 1), testing::Contains(testing::ContainsRegex(
                                            "^Webs.asmx/WebUrlFromPageUrl\\('http://111.1.1.1:1+/x%11x'\\) returned 500$")));
}

TEST(WebBinding, UrlIsBoundToWhatItIs) {
    TrialServer server({.sites = {"sites/a"}});
    server.Put("sites/a/Docs/b%20 [1].pdf", "12345");
    const auto web = WebOn(server, "sites/a");
    struct Row {
        const char* path;
        Type type;
        bool is_bound;
        bool is_file;
    };
    const Row rows[] = {
        {"sites/a/Docs/b%20 [1].pdf", Type::any, true, true},
        {"sites/a/Docs/b%20 [1].pdf", Type::file, true, true},
        {"sites/a/Docs/b%20 [1].pdf", Type::folder, false, false},
        {"sites/a/Docs", Type::folder, true, false},
        {"sites/a/Docs/", Type::any, true, false},
        {"sites/a/Docs", Type::file, false, false},
        {"sites/a", Type::any, true, false},
        {"sites/a/?x=1", Type::folder, true, false},
        {"sites/a", Type::file, false, false},
        {"sites/a/none", Type::any, false, false},
        {"sites/other", Type::any, false, false},
    };
    for (const Row& row : rows) {
        const auto object =
            web->BindObject(server.WideUrl() + L"/" + std::wstring(row.path, row.path + strlen(row.path)), row.type);
        EXPECT_EQ(object != nullptr, row.is_bound) << row.path;
        EXPECT_EQ(object != nullptr && object->AsFile() != nullptr, row.is_file) << row.path;
        EXPECT_EQ(object != nullptr && object->AsFolder() != nullptr, row.is_bound && !row.is_file) << row.path;
    }
    EXPECT_EQ(web->BindObject(L"http://another/sites/a/x", Type::any), nullptr);
    const auto file = web->BindObject(server.WideUrl() + L"/sites/a/Docs/b%20 [1].pdf", Type::file);
    EXPECT_EQ(file->m_information.m_path, L"sites/a/Docs/b%20 [1].pdf");
    EXPECT_EQ(file->m_information.m_size, 5u);
    EXPECT_GT(file->m_information.m_modified_time, 0u);
}

TEST(WebBinding, AnythingButNotFoundIsAFailure) {
    TrialServer server;
    server.Put("a.pdf", "x");
    const auto web = WebOn(server);
    server.Once("PROPFIND /a.pdf status=500");
    EXPECT_THROW(web->BindObject(server.WideUrl("a.pdf"), Type::any), HttpException);
    for (const char* const fault : {"PROPFIND * garbage", "PROPFIND * page", "PROPFIND * truncate"}) {
        server.Times(2, fault);
        EXPECT_THROW(web->BindObject(server.WideUrl("a.pdf"), Type::any), Exception) << fault;
        EXPECT_THROW(web->Enumerate(L"", true, nullptr), Exception) << fault << ": a list that looks whole";
        server.ClearFaults();
    }
}

TEST(WebBinding, ListingIsOneRequestInTheServersOrder) {
    TrialServer server;
    server.Put("Docs/b.pdf", "12");
    server.MakeFolder("Docs/Sub");
    server.Put("Docs/a #1%.pdf", "1");
    const auto web = WebOn(server);
    SharePoint::Information folder;
    const auto objects = web->Enumerate(L"Docs", true, &folder);
    EXPECT_EQ(folder.m_path, L"Docs");
    std::vector<std::wstring> names;
    for (const auto& object : objects) {
        names.push_back(object->m_information.m_name);
        EXPECT_EQ(object->m_path, L"Docs/" + object->m_information.m_name);
        EXPECT_EQ(object->AsFolder() != nullptr, object->m_information.m_name == L"Sub");
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre(L"b.pdf", L"Sub", L"a #1%.pdf"));
    EXPECT_THAT(Requests(server), ElementsAre("PROPFIND /Docs"));
    EXPECT_EQ(server.Journal()[0].Header("Depth"), "1");
    EXPECT_THROW(web->Enumerate(L"none", true, nullptr), HttpException);
}

TEST(WebBinding, ObjectKeepsItsWebAlive) {
    TrialServer server;
    server.Put("a.pdf", "x");
    auto web = WebOn(server);
    const auto object = web->BindObject(server.WideUrl("a.pdf"), Type::file);
    web.reset();
    server.Put("a.pdf", "longer");
    EXPECT_EQ(object->m_information.m_size, 1u);
    EXPECT_EQ(object->UpdateInformation().m_size, 6u);
    EXPECT_NE(object->GetWeb(), nullptr);
}

TEST(WebBinding, SharingLinkIsResolvedByTheServer) {
    TrialServer server;
    server.Put("Docs/a.pdf", "12345");
    const auto web = WebOn(server);
    const std::wstring link = server.WideUrl("Docs/a.pdf") + L"?share=abc";
    const auto object = web->BindObject(link, Type::file);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->m_information.m_path, L"Docs/a.pdf");
    EXPECT_EQ(object->m_information.m_size, 5u);
    const std::string port = std::to_string(server.Port());
    EXPECT_THAT(
        Requests(server),
        ElementsAre("GET /_api/SP.RemoteWeb(@url)/web/GetFileByUrl(@url)?$select=ServerRelativeUrl,Name,Length,TimeCreated,"
                    "TimeLastModified,CheckedOutByUser/LoginName&$expand=CheckedOutByUser&@url='http%3A//127.0.0.1%3A" +
                    port + "/Docs/a.pdf%3Fshare%3Dabc'"));
    EXPECT_EQ(web->BindObject(link, Type::folder), nullptr);
    server.Once("GET * page");
    EXPECT_EQ(web->BindObject(link, Type::any), nullptr) << "a page in place of the record";
    server.Once("GET * garbage");
    EXPECT_THROW(web->BindObject(link, Type::any), Exception) << "bytes that are no text";
    server.Once("GET * status=403");
    EXPECT_THROW(web->BindObject(link, Type::any), HttpException);
}

} // namespace
