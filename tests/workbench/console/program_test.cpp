// Documents on their whole way: the real program, the built module, a real socket, real files.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/trial_server.h"
#include "workbench/console/console_runner.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* document = "Docs/a b.pdf";

class Program : public testing::Test {
protected:
    Program() : ann("ann", "violet-harbour-41"), ben("ben", "copper-meadow-17") { server.Put(document, "first version"); }

    std::string Url(const std::string& path = document) const { return server.Url(path); }
    void KeepCheckedOut(const ConsoleUser& user) const {
        ASSERT_EQ(user.Run({"prefs", "set", "on_after_save", "8"}).exit_code, 0);
        ASSERT_EQ(user.Run({"prefs", "set", "on_close_checked_out_need_check_in", "8"}).exit_code, 0);
    }

    TrialServer server{
        {.auth = TrialAuth::basic,
         .users = {{"ann", "violet-harbour-41"}, {"ben", "copper-meadow-17"}, {"eve", "silver-garden-5", TrialRights::read}}}};
    ConsoleUser ann;
    ConsoleUser ben;
};

} // namespace

TEST_F(Program, TakesADocumentFromCheckOutToCheckInBesideASecondUser) {
    KeepCheckedOut(ann);
    EXPECT_EQ(ann.Run({"checkout", Url()}).output, "{\"checked_out\":\"me\"}\n");
    EXPECT_EQ(server.Holder(document), "ann");

    ben.WriteFile("mine.pdf", "ben's version");
    const ConsoleResult refused = ben.Run({"put", ben.Path("mine.pdf").string(), Url()});
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_THAT(refused.output, HasSubstr("0x800700dc"));
    EXPECT_EQ(server.Read(document), "first version");

    ann.WriteFile("new.pdf", "second version");
    const ConsoleResult edited = ann.Run({"edit", Url(), "cp", ann.Path("new.pdf").string()});
    EXPECT_EQ(edited.exit_code, 0) << edited.output << edited.errors;
    EXPECT_EQ(edited.output, "{\"changed\":true,\"bytes\":14}\n");
    EXPECT_EQ(server.Holder(document), "ann");
    const ConsoleResult checked_in = ann.Run({"checkin", Url(), "--comment", "now <better> & done", "--type", "minor"});
    EXPECT_EQ(checked_in.exit_code, 0) << checked_in.output;
    EXPECT_EQ(server.CheckInComment(document), "now <better> & done");
    EXPECT_EQ(server.Holder(document), "");

    EXPECT_EQ(ben.Run({"get", Url(), ben.Path("read.pdf").string()}).output, "{\"bytes\":14}\n");
    EXPECT_EQ(ben.ReadFile("read.pdf"), "second version");
}

TEST_F(Program, LeavesADocumentAloneThatTheCommandDidNotChange) {
    const ConsoleResult result = ann.Run({"edit", Url(), "true"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.output, "{\"changed\":false,\"bytes\":13}\n");
    EXPECT_EQ(server.Count("PUT"), 0u);
}

TEST_F(Program, PutsANewDocumentAndAnEmptyOne) {
    ann.WriteFile("new.pdf", "fresh");
    ann.WriteFile("empty.pdf", "");
    EXPECT_EQ(ann.Run({"put", ann.Path("new.pdf").string(), Url("Docs/new.pdf")}).output, "{\"bytes\":5}\n");
    EXPECT_EQ(server.Read("Docs/new.pdf"), "fresh");
    EXPECT_EQ(ann.Run({"put", ann.Path("empty.pdf").string(), Url()}).output, "{\"bytes\":0}\n");
    EXPECT_EQ(server.Read(document), "");
}

TEST_F(Program, PutsNothingWhereTheServerDoesNotSayWhatIsThere) {
    ann.WriteFile("new.pdf", "fresh");
    server.Always("PROPFIND /Docs/a?b.pdf status=500");
    EXPECT_EQ(ann.Run({"put", ann.Path("new.pdf").string(), Url()}).exit_code, 1);
    EXPECT_EQ(ann.Run({"put", ann.Path("new.pdf").string(), Url("Nowhere/new.pdf")}).exit_code, 1);
    EXPECT_EQ(server.Count("PUT"), 0u);
    EXPECT_EQ(server.Read(document), "first version");
}

TEST_F(Program, MakesNoFileOutOfADamagedDownload) {
    server.Put("Docs/large.pdf", std::string(300'000, 'x'));
    for (const char* const fault :
         {"GET * truncate", "GET * reset", "GET * status=503", "GET * page", "GET * close-after-headers"}) {
        server.Always(fault);
        const ConsoleResult result = ann.Run({"get", Url("Docs/large.pdf"), ann.Path("out.pdf").string()});
        EXPECT_EQ(result.exit_code, 1) << fault << ": " << result.output;
        EXPECT_THAT(result.output, HasSubstr("\"error\"")) << fault;
        EXPECT_FALSE(std::filesystem::exists(ann.Path("out.pdf"))) << fault;
        server.ClearFaults();
    }
    EXPECT_EQ(ann.Run({"get", Url("Docs/large.pdf"), ann.Path("out.pdf").string()}).exit_code, 0);
    EXPECT_EQ(ann.ReadFile("out.pdf").size(), 300'000u);
}

TEST_F(Program, KeepsWhatARefusedSaveDidNotDeliverAndOffersItAgain) {
    ann.WriteFile("new.pdf", "the only copy");
    server.Always("PUT * status=503");
    EXPECT_EQ(ann.Run({"put", ann.Path("new.pdf").string(), Url()}).exit_code, 1);
    EXPECT_EQ(server.Read(document), "first version");
    server.ClearFaults();
    const ConsoleResult offered = ann.Run({"--answer", "0", "get", Url(), ann.Path("out.pdf").string()});
    EXPECT_EQ(offered.exit_code, 0) << offered.output << offered.errors;
    EXPECT_THAT(offered.output, HasSubstr("kov.recover.save"));
    EXPECT_EQ(server.Read(document), "the only copy");
    EXPECT_THAT(ann.Run({"info", Url()}).output, Not(HasSubstr("kov.recover")));
}

TEST_F(Program, FindsItsWorkAgainAfterItWasKilledInTheMiddleOfASave) {
    TrialServer slow({.auth = TrialAuth::basic, .users = {{"ann", "violet-harbour-41"}}, .bytes_per_second = 100'000});
    slow.Put(document, "first version");
    const std::string bytes(200'000, 'y');
    ann.WriteFile("new.pdf", bytes);
    const pid_t child = ann.Start({"put", ann.Path("new.pdf").string(), slow.Url(document)});
    // All is in the local copy, and the upload takes two seconds.
    while (!ann.StateHolds(bytes) && waitpid(child, nullptr, WNOHANG) == 0) {
        usleep(1000);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(slow.Read(document), "first version");
    const ConsoleResult offered = ann.Run({"--answer", "0", "get", slow.Url(document), ann.Path("out.pdf").string()});
    EXPECT_THAT(offered.output, HasSubstr("kov.recover.save"));
    EXPECT_EQ(offered.exit_code, 0) << offered.output;
    EXPECT_EQ(slow.Read(document), bytes);
}

TEST_F(Program, AsksBeforeItReplacesANewerVersion) {
    // The command is the other user: it changes the server's document while ann has it open.
    ann.WriteFile("change", "#!/bin/sh\ncurl -sf -u ben:copper-meadow-17 -T '" + ann.Path("other").string() + "' '" + Url() +
                                "' && echo ann >> \"$1\"\n");
    ann.WriteFile("other", "ben was first");
    std::filesystem::permissions(ann.Path("change"), std::filesystem::perms::owner_all);
    const ConsoleResult canceled = ann.Run({"--answer", "1", "edit", Url(), ann.Path("change").string()});
    EXPECT_EQ(canceled.exit_code, 3) << canceled.output;
    EXPECT_THAT(canceled.output, HasSubstr("sp.btn.cancelSaving"));
    EXPECT_EQ(server.Read(document), "ben was first");
}

TEST_F(Program, SendsARefusedPasswordOnceAndNeverAgain) {
    const ConsoleUser wrong("ann", "not-her-password");
    const ConsoleResult result = wrong.Run({"ls", Url("Docs")});
    EXPECT_EQ(result.exit_code, 3) << result.output;
    std::size_t tries = 0;
    for (const SeenRequest& request : server.Journal()) {
        tries += request.Header("Authorization").empty() ? 0 : 1;
    }
    EXPECT_EQ(tries, 1u);
}

TEST_F(Program, StoresNoSecretInClearText) {
    ASSERT_EQ(ann.Run({"prefs", "set", "log_level", "4"}).exit_code, 0);
    ASSERT_EQ(ann.Run({"accounts", "add", server.Url()}).exit_code, 0);
    EXPECT_THAT(ann.Run({"accounts", "list"}).output, HasSubstr("\"user\":\"ann\""));
    EXPECT_FALSE(ann.StateHolds("violet-harbour-41"));
    // The saved place signs in by itself.
    EXPECT_EQ(ann.Run({"ls", Url("Docs")}).exit_code, 0);
    EXPECT_EQ(ann.Run({"accounts", "remove", server.Url()}).exit_code, 0);
    EXPECT_EQ(ann.Run({"accounts", "list"}).output, "");
}

TEST_F(Program, KeepsNamesWithAnyCharacterThroughAllOperations) {
    for (const char* const name :
         {"100% sure.pdf", "a+b [1].pdf", "ü & ñ.pdf", "#1.pdf", "it's.pdf", "semi;colon=.pdf", "%41.pdf"}) {
        const std::string path = std::string("Docs/") + name;
        ann.WriteFile("new.pdf", name);
        const ConsoleResult put = ann.Run({"put", ann.Path("new.pdf").string(), Url(path)});
        EXPECT_EQ(put.exit_code, 0) << name << put.output;
        EXPECT_EQ(server.Read(path), name);
        EXPECT_EQ(ann.Run({"rename", Url(path), Url("Docs/renamed.pdf")}).exit_code, 0) << name;
        EXPECT_EQ(ann.Run({"mv", Url("Docs/renamed.pdf"), Url(path)}).exit_code, 0) << name;
        EXPECT_TRUE(server.Exists(path)) << name;
        EXPECT_EQ(ann.Run({"rm", Url(path)}).exit_code, 0) << name;
        EXPECT_FALSE(server.Exists(path)) << name;
    }
}

TEST_F(Program, DrivesADocumentStepByStepInAScript) {
    ann.WriteFile("new.pdf", "third version");
    const ConsoleResult result = ann.RunScript("# one document\n"
                                               "bind " +
                                               server.Url("Docs") +
                                               "\n"
                                               "open d \"a b.pdf\" read+write+check-out\n"
                                               "read d 0 5\n"
                                               "clone d e\n"
                                               "nonsense\n"
                                               "setsize d 0\n"
                                               "write d 0 @" +
                                               ann.Path("new.pdf").string() +
                                               "\n"
                                               "flush d\n"
                                               "getprop d CheckedOut\n"
                                               "answer \"0,radio=0,edit=by script\"\n"
                                               "exec d CheckInWithUi\n"
                                               "close e none\n"
                                               "close d ask\n"
                                               "info missing.pdf\n"
                                               "ls .\n");
    EXPECT_THAT(result.output, HasSubstr("{\"hex\":\"6669727374\"}"));
    EXPECT_THAT(result.output, HasSubstr("{\"property\":\"CheckedOut\",\"value\":true}"));
    EXPECT_THAT(result.output, HasSubstr("\"title\":\"a b.pdf\""));
    EXPECT_THAT(result.output, HasSubstr("sp.btn.checkIn"));
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(server.Read(document), "third version");
    EXPECT_EQ(server.CheckInComment(document), "by script");
}

TEST_F(Program, AnswersRightsQuestionsAndWrongUsageByItsExitCodes) {
    const ConsoleUser eve("eve", "silver-garden-5");
    eve.WriteFile("new.pdf", "eve's");
    const ConsoleResult refused = eve.Run({"put", eve.Path("new.pdf").string(), Url()});
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_THAT(refused.output, HasSubstr("0x80071779"));
    EXPECT_EQ(ann.Run({"probe", server.Url()}).exit_code, 0);
    EXPECT_EQ(ann.Run({"probe", "not a place"}).exit_code, 1);
    const std::vector<std::string> wrong[] = {{"frob"},
                                              {"ls"},
                                              {"ls", "not-a-url"},
                                              {"--frob", "log"},
                                              {"--answer", "x", "log"},
                                              {"--timeout", "nan", "log"},
                                              {"--timeout", "1e300", "log"},
                                              {"--timeout", "0", "log"},
                                              {"script", "/"},
                                              {}};
    for (const std::vector<std::string>& words : wrong) {
        const ConsoleResult result = ann.Run(words);
        EXPECT_EQ(result.exit_code, 2) << testing::PrintToString(words);
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
}

TEST_F(Program, EndsWhenACommandTakesLongerThanItMay) {
    server.Always("* * delay=60000");
    EXPECT_EQ(ann.Run({"--timeout", "0.5", "ls", Url("Docs")}).exit_code, 4);
}

TEST_F(Program, LeavesNoPartOfADownloadWhenItEndsInItsMiddle) {
    TrialServer slow({.bytes_per_second = 100'000});
    slow.Put("large.pdf", std::string(1'000'000, 'x'));
    EXPECT_EQ(ann.Run({"--timeout", "1", "get", slow.Url("large.pdf"), "out.pdf"}).exit_code, 4);
    EXPECT_TRUE(std::filesystem::is_empty(ann.Path("work")));
}

TEST_F(Program, EndsAScriptAtCtrlCWithoutRunningTheRest) {
    ann.WriteFile("script", "bind " + server.Url("Docs") + "\nls .\nsleep 600000\nrm \"a b.pdf\"\n");
    const pid_t child = ann.Start({"script", ann.Path("script").string()});
    while (ann.ReadFile("output").find("a b.pdf") == std::string::npos) {
        usleep(1000);
    }
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(server.Read(document), "first version");
}

TEST_F(Program, CancelsTheNextLineAloneAlsoWhenThatIsFasterThanTheDelay) {
    const ConsoleResult result = ann.RunScript("bind " + server.Url("Docs") + "\ncancel-after 0\nls .\ninfo \"a b.pdf\"\n");
    EXPECT_THAT(result.output, HasSubstr("\"title\":\"a b.pdf\",\"url\":\"" + Url()));
    EXPECT_THAT(result.output, testing::EndsWith("\"}\n"));
    EXPECT_EQ(result.output.find("\"error\""), result.output.rfind("\"error\""));
}

TEST_F(Program, TellsThatASaveWasAnsweredWithoutBeingMadeAndKeepsWhatWasEdited) {
    server.Always("PUT * page");
    const ConsoleResult result = ann.Run({"edit", Url(), "sh", "-c", "echo more >> \"$0\""});
    EXPECT_EQ(result.exit_code, 1) << result.output;
    EXPECT_EQ(server.Read(document), "first version");
    const std::string kept = ann.KeptCopy(result);
    EXPECT_EQ(kept, "first versionmore\n") << result.errors;
}

TEST_F(Program, KeepsWhatWasEditedWhenTheEditorFails) {
    const ConsoleResult result = ann.Run({"edit", Url(), "sh", "-c", "echo more >> \"$0\"; exit 1"});
    EXPECT_EQ(result.exit_code, 1);
    EXPECT_EQ(ann.KeptCopy(result), "first versionmore\n") << result.errors;
    EXPECT_EQ(ann.Run({"edit", Url(), "false"}).errors, "");
}

TEST_F(Program, SaysInItsOwnWayThatItsModuleOrItsOutputIsBroken) {
    std::filesystem::copy_file(KOV_BIN_DIR "/SharePoint.kvp", ann.Path("cut.kvp"));
    std::filesystem::resize_file(ann.Path("cut.kvp"), 100'000);
    const ConsoleResult cut = ann.Run({"--module", ann.Path("cut.kvp").string(), "log"});
    EXPECT_EQ(cut.exit_code, 1) << cut.errors;
    EXPECT_THAT(cut.output, HasSubstr("{\"error\":{\"hresult\":\"0x800700c1\""));

    const std::string program = KOV_BIN_DIR "/kov-console --state " + ann.Path("state").string() + " prefs list ";
    for (const char* const redirection : {">/dev/full 2>&-", ">&- 2>&-"}) {
        const int status = std::system((program + redirection).c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << redirection << ": " << status;
    }
}

TEST_F(Program, TellsWhoHoldsADocumentWithoutAQuestionAndWithoutAChange) {
    ConsoleUser eve("eve", "silver-garden-5");
    ASSERT_EQ(eve.Run({"prefs", "set", "on_open_without_write_permissions", "1"}).exit_code, 0) << "asks wherever it may";
    struct Row {
        const char* holder;
        const ConsoleUser& user;
        const char* output;
    };
    const Row rows[] = {
        {"", ann, "{\"checked_out\":\"none\",\"user\":null,\"can_edit\":true}\n"},
        {"ann", ann, "{\"checked_out\":\"me\",\"user\":null,\"can_edit\":true}\n"},
        {"ann", ben, "{\"checked_out\":\"other_user\",\"user\":\"Ann <ann@example.com>\",\"can_edit\":true}\n"},
        {"", eve, "{\"checked_out\":\"none\",\"user\":null,\"can_edit\":false}\n"},
        {"ann", eve, "{\"checked_out\":\"unknown\",\"user\":null,\"can_edit\":false}\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.output);
        server.SetHolder(document, row.holder);
        const ConsoleResult result = row.user.Run({"state", Url()});
        EXPECT_EQ(result.output, row.output) << result.errors;
        EXPECT_EQ(server.Holder(document), row.holder);
    }
    const ConsoleResult folder = ann.Run({"state", Url("Docs")});
    EXPECT_EQ(folder.exit_code, 1);
}
