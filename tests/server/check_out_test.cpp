#include "server/http_client.h"
#include "server/soap_client.h"
#include "support/trial_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;

namespace {

TrialOptions TwoUsers() {
    return {.auth = TrialAuth::basic, .users = {{"ann", "a"}, {"bob", "b"}, {"eve", "e", TrialRights::read}}};
}

std::string Stamp(const TrialServer& server, const std::string& path) {
    return Send({.method = "HEAD", .url = server.Url(path), .user = "ann:a"}).Header("Last-Modified");
}

int PutAs(const TrialServer& server, const std::string& path, const std::string& body, const std::string& user) {
    return Send({.method = "PUT", .url = server.Url(path), .body = body, .user = user}).status;
}

} // namespace

TEST(CheckOut, OnlyTheHolderMayWrite) {
    TrialServer server(TwoUsers());
    server.Put("a.txt", "1");
    const std::string before = Stamp(server, "a.txt");
    EXPECT_EQ(CallLists(server, "CheckOutFile", "a.txt", "ann:a"), "true");
    EXPECT_EQ(Stamp(server, "a.txt"), before);
    EXPECT_EQ(server.Holder("a.txt"), "ann");
    EXPECT_EQ(CallLists(server, "CheckOutFile", "a.txt", "bob:b"), "false");
    EXPECT_EQ(CallLists(server, "CheckInFile", "a.txt", "bob:b"), "false");
    EXPECT_EQ(CallLists(server, "UndoCheckOut", "a.txt", "bob:b"), "false");
    EXPECT_EQ(PutAs(server, "a.txt", "2", "bob:b"), 423);
    EXPECT_EQ(PutAs(server, "a.txt", "2", "ann:a"), 204);
    EXPECT_EQ(server.Read("a.txt"), "2");
}

TEST(CheckOut, UndoBringsContentAndTimeBack) {
    TrialServer server(TwoUsers());
    server.Put("a.txt", "first");
    const std::string before = Stamp(server, "a.txt");
    CallLists(server, "CheckOutFile", "a.txt", "ann:a");
    PutAs(server, "a.txt", "second", "ann:a");
    const std::string changed = Stamp(server, "a.txt");
    PutAs(server, "a.txt", "third", "ann:a");
    EXPECT_EQ(CallLists(server, "UndoCheckOut", "a.txt", "ann:a"), "true");
    EXPECT_EQ(server.Read("a.txt"), "first");
    EXPECT_EQ(Stamp(server, "a.txt"), before);
    EXPECT_EQ(server.Holder("a.txt"), "");
    // A time that stood for other content never comes again.
    PutAs(server, "a.txt", "fourth", "ann:a");
    EXPECT_NE(Stamp(server, "a.txt"), changed);
}

TEST(CheckOut, CheckInKeepsACommentAndFreesTheFile) {
    TrialServer server(TwoUsers());
    server.Put("a.txt", "first");
    for (const char* comment : {"one", "two"}) {
        CallLists(server, "CheckOutFile", "a.txt", "ann:a");
        PutAs(server, "a.txt", comment, "ann:a");
        EXPECT_EQ(CallLists(server, "CheckInFile", "a.txt", "ann:a", comment), "true");
        EXPECT_EQ(server.CheckInComment("a.txt"), comment);
    }
    EXPECT_EQ(server.Versions("a.txt"), 3u);
    EXPECT_EQ(CallLists(server, "CheckInFile", "a.txt", "ann:a"), "false");
    EXPECT_EQ(CallLists(server, "UndoCheckOut", "a.txt", "ann:a"), "false");
    EXPECT_EQ(server.Read("a.txt"), "two");
    CallLists(server, "CheckOutFile", "a.txt", "bob:b");
    PutAs(server, "a.txt", "three", "bob:b");
    CallLists(server, "CheckInFile", "a.txt", "bob:b", "instead", "2");
    EXPECT_EQ(server.Versions("a.txt"), 3u);
    EXPECT_EQ(server.CheckInComment("a.txt"), "instead");
}

TEST(CheckOut, IsRefusedToReadersAndFaultsForWhatIsNotThere) {
    TrialServer server(TwoUsers());
    server.Put("a.txt", "1");
    EXPECT_EQ(CallLists(server, "CheckOutFile", "a.txt", "eve:e"), "false");
    EXPECT_EQ(CallLists(server, "CheckOutFile", "none.txt", "ann:a"), "500");
    EXPECT_EQ(CallLists(server, "CheckInFile", "a.txt", "ann:a", "a < b & c"), "500");
    EXPECT_EQ(CallLists(server, "CheckInFile", "a.txt", "ann:a", "x", "7"), "500");
}

TEST(CheckOut, MayBeNeededBeforeAFileIsWritten) {
    TrialOptions options = TwoUsers();
    options.require_check_out = true;
    TrialServer server(options);
    server.Put("a.txt", "1");
    EXPECT_EQ(PutAs(server, "a.txt", "2", "ann:a"), 423);
    CallLists(server, "CheckOutFile", "a.txt", "ann:a");
    EXPECT_EQ(PutAs(server, "a.txt", "2", "ann:a"), 204);
    // A new file is held by its maker, and has no earlier content to go back to.
    EXPECT_EQ(PutAs(server, "new.txt", "draft", "bob:b"), 201);
    EXPECT_EQ(server.Holder("new.txt"), "bob");
    EXPECT_EQ(CallLists(server, "UndoCheckOut", "new.txt", "bob:b"), "false");
    EXPECT_EQ(server.Read("new.txt"), "draft");
    EXPECT_EQ(CallLists(server, "CheckInFile", "new.txt", "bob:b"), "true");
}

TEST(CheckOut, OutlivesARestart) {
    TrialServer server(TwoUsers());
    server.Put("Lib/a.txt", "first");
    const std::string before = Stamp(server, "Lib/a.txt");
    CallLists(server, "CheckOutFile", "Lib/a.txt", "ann:a");
    PutAs(server, "Lib/a.txt", "second", "ann:a");
    const std::string changed = Stamp(server, "Lib/a.txt");
    server.Restart();
    EXPECT_EQ(server.Holder("Lib/a.txt"), "ann");
    EXPECT_EQ(Stamp(server, "Lib/a.txt"), changed);
    EXPECT_EQ(CallLists(server, "UndoCheckOut", "Lib/a.txt", "ann:a"), "true");
    EXPECT_EQ(server.Read("Lib/a.txt"), "first");
    EXPECT_EQ(Stamp(server, "Lib/a.txt"), before);
}
