// What changes the server's tree, over a real socket.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frame/diagnostics/exceptions.h"
#include "frame/log_recorder.h"
#include "http/served_session.h"
#include "sharepoint/object_2013.h"
#include "sharepoint/served_web.h"

namespace {

using testing::ElementsAre;

TEST(Writes, MissingFoldersAreMadeFromTheTop) {
    TrialServer server;
    server.MakeFolder("a");
    const auto web = WebOn(server);
    EXPECT_TRUE(web->CreateFolderNoBind(server.WideUrl("a/b/c/d") + L"/"));
    EXPECT_THAT(Requests(server), ElementsAre("PROPFIND /a/b/c/d", "PROPFIND /a/b/c", "PROPFIND /a/b", "PROPFIND /a",
                                              "MKCOL /a/b", "MKCOL /a/b/c", "MKCOL /a/b/c/d"));
    server.ClearJournal();
    EXPECT_TRUE(web->CreateFolderNoBind(server.WideUrl("a/b")));
    EXPECT_THAT(Requests(server), ElementsAre("PROPFIND /a/b"));
    server.ClearJournal();
    EXPECT_TRUE(web->CreateFolderNoBind(server.WideUrl()));
    EXPECT_TRUE(server.Journal().empty());
}

TEST(Writes, TopLevelFolderThatIsMissingIsNotMade) {
    TrialServer server;
    const auto web = WebOn(server);
    LogRecorder log(LogLevel::error);
    EXPECT_FALSE(web->CreateFolderNoBind(server.WideUrl("none")));
    EXPECT_THAT(Requests(server), ElementsAre("PROPFIND /none"));
    EXPECT_THAT(
        NarrowMessages(log, 1).back(),
        testing::ContainsRegex("^Failed to get parent path for 'xxxx' during creation of folder 'http://111.1.1.1:1+/xxxx'$"));
}

TEST(Writes, NewFileIsEmptyAndBound) {
    TrialServer server;
    server.MakeFolder("Docs");
    const auto web = WebOn(server);
    const auto object = web->CreateFile(server.WideUrl("Docs/new/\u00E9 1.pdf"));
    ASSERT_NE(object, nullptr);
    EXPECT_NE(object->AsFile(), nullptr);
    EXPECT_EQ(server.Read("Docs/new/\u00E9 1.pdf"), "");
    server.ClearJournal();
    EXPECT_EQ(web->CreateFile(server.WideUrl()), nullptr);
    EXPECT_EQ(web->CreateFile(L"http://another/Docs/a"), nullptr);
    EXPECT_EQ(web->CreateFolder(server.WideUrl()), nullptr);
    EXPECT_TRUE(server.Journal().empty());
}

TEST(Writes, DestinationGoesOutEscapedWhole) {
    TrialServer server;
    server.Put("Docs/a.pdf", "x");
    const auto web = WebOn(server);
    const auto object = web->BindObject(server.WideUrl("Docs/a.pdf"), Type::file);
    object->AsFile()->Copy(server.WideUrl("Docs/b c.pdf"));
    object->AsFile()->Move(server.WideUrl("Docs/d.pdf"));
    EXPECT_EQ(object->m_information.m_path, L"Docs/a.pdf");
    const auto seen = server.Journal();
    EXPECT_EQ(seen[1].method, "COPY");
    EXPECT_EQ(seen[1].Header("Destination"), "http%3A//127.0.0.1%3A" + std::to_string(server.Port()) + "/Docs/b%20c.pdf");
    EXPECT_EQ(seen[1].Header("Overwrite"), "T");
    EXPECT_EQ(seen[1].Header("Depth"), "");
    EXPECT_EQ(seen[2].method, "MOVE");
    EXPECT_TRUE(server.Exists("Docs/b c.pdf"));
    EXPECT_FALSE(server.Exists("Docs/a.pdf"));
}

TEST(Writes, DestinationOffTheServerIsRefused) {
    TrialServer server;
    server.Put("Docs/a.pdf", "x");
    const auto web = WebOn(server);
    const auto object = web->BindObject(server.WideUrl("Docs/a.pdf"), Type::file);
    server.ClearJournal();
    for (const std::wstring& url :
         {std::wstring(L"http://another/a"), server.WideUrl() + L"/Docs/../../a", server.WideUrl() + L"/./a",
          server.WideUrl() + L"/a\r\nX-Smuggled: 1", std::wstring(L"https") + server.WideUrl("a").substr(4), std::wstring()}) {
        try {
            object->AsFile()->Move(url);
            FAIL() << "a destination was taken";
        } catch (const HResultException& exception) {
            EXPECT_EQ(exception.hr, E_INVALIDARG);
        }
    }
    EXPECT_TRUE(server.Journal().empty());
}

TEST(Writes, RefusedWriteKeepsItsStatus) {
    TrialServer server;
    server.Put("Docs/a.pdf", "x");
    const auto web = WebOn(server);
    const auto object = web->BindObject(server.WideUrl("Docs/a.pdf"), Type::file);
    server.Once("DELETE * status=423");
    try {
        object->Delete();
        FAIL() << "the refusal did not come out";
    } catch (const HttpException& exception) {
        EXPECT_EQ(exception.status, 423);
    }
    EXPECT_TRUE(server.Exists("Docs/a.pdf"));
    object->Delete();
    EXPECT_FALSE(server.Exists("Docs/a.pdf"));
}

TEST(Writes, SuccessThatNamesAFailedEntryIsAFailure) {
    TrialServer server({.auth = TrialAuth::basic, .users = {{"ann", "secret"}, {"bob", "secret"}}});
    server.Put("Docs/old/free.pdf", "x");
    server.Put("Docs/old/held.pdf", "x");
    server.SetHolder("Docs/old/held.pdf", "bob");
    const auto web = WebOn(server, "", {L"ann", L"secret"});
    const auto folder = web->BindObject(server.WideUrl("Docs/old"), Type::folder);
    const auto expect_failure = [](const std::wstring& words, const auto& write) {
        try {
            write();
            ADD_FAILURE() << "the failed entry got lost";
        } catch (const HttpException& exception) {
            ADD_FAILURE() << "the whole was refused with " << exception.status;
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.message, words);
        }
    };
    expect_failure(L"DELETE of 'Docs/old' was not done for all objects", [&] { folder->Delete(); });
    EXPECT_EQ(server.Journal().back().status, 207);
    EXPECT_TRUE(server.Exists("Docs/old/held.pdf"));
    expect_failure(L"MOVE of 'Docs/old' was not done for all objects", [&] { folder->Rename(server.WideUrl("Docs/new")); });
}

TEST(Writes, ContentComesAndGoesAsAStream) {
    TrialServer server;
    server.Put("Docs/a b.pdf", "old");
    const auto web = WebOn(server);
    const auto file = web->BindObject(server.WideUrl("Docs/a b.pdf"), Type::file)->AsFile();
    EXPECT_EQ(ReadAll(file->Download()), "old");
    Http::Request upload = file->Upload(5);
    DWORD written = 0;
    upload.Write("newer", 5, written);
    upload.End();
    EXPECT_EQ(server.Read("Docs/a b.pdf"), "newer");
    EXPECT_EQ(server.Journal().back().target, "/Docs/a%20b.pdf");
}

} // namespace
