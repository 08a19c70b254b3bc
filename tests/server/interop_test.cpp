// Other people's clients list, put, get, move and delete on the server.
#include "server/program.h"
#include "support/trial_server.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

namespace {

TrialOptions OneUser() { return {.auth = TrialAuth::basic, .users = {{"ann", "secret"}}}; }

void FillLibrary(TrialServer& server) {
    server.Put("My Lib/a & b.txt", "first");
    server.Put("My Lib/Sub/\u00fcber 100%.txt", "second");
}

} // namespace

TEST(Interop, CadaverListsPutsGetsMovesAndDeletes) {
    if (!IsInstalled("cadaver"))
        GTEST_SKIP() << "cadaver isn't installed";
    TrialServer server(OneUser());
    FillLibrary(server);
    const TestFolder folder;
    folder.Write("new.txt", "from cadaver");
    folder.Write(".netrc", "machine 127.0.0.1 login ann password secret\n");
    std::filesystem::permissions(folder.Path(".netrc"), std::filesystem::perms::owner_read);
    const std::string script =
        "cd \"My Lib\"\nls\nput " + folder.Path("new.txt") + " new.txt\nget \"a & b.txt\" " + folder.Path("got.txt") +
        "\nmkcol Made\nmove new.txt Made/moved.txt\ncopy Made/moved.txt copy.txt\ndelete \"a & b.txt\"\nrmcol Sub\nquit\n";
    const RunResult result = RunProgram({"env", "HOME=" + folder.Path(), "cadaver", server.Origin() + "/"}, script);
    EXPECT_THAT(result.out, HasSubstr("a & b.txt")) << result.err;
    EXPECT_THAT(result.out, HasSubstr("Sub"));
    EXPECT_EQ(folder.Read("got.txt"), "first");
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("My Lib/", 0u), Pair("My Lib/Made/", 0u), Pair("My Lib/Made/moved.txt", 12u),
                                           Pair("My Lib/copy.txt", 12u)))
        << result.out;
}

TEST(Interop, RcloneListsPutsGetsMovesAndDeletes) {
    if (!IsInstalled("rclone"))
        GTEST_SKIP() << "rclone isn't installed";
    TrialServer server(OneUser());
    FillLibrary(server);
    const TestFolder folder;
    folder.Write("new.txt", "from rclone");
    const std::string hidden = RunProgram({"rclone", "obscure", "secret"}).out;
    folder.Write("rclone.conf",
                 "[trial]\ntype = webdav\nvendor = other\nurl = " + server.Origin() + "\nuser = ann\npass = " + hidden + "\n");
    const auto rclone = [&folder](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"rclone", "--config", folder.Path("rclone.conf"), "--retries", "1"});
        const RunResult result = RunProgram(arguments);
        EXPECT_EQ(result.exit_code, 0) << arguments[5] << ": " << result.err;
        return result.out;
    };
    EXPECT_EQ(rclone({"lsf", "-R", "--format", "ps", "trial:My Lib"}), "Sub/;-1\na & b.txt;5\nSub/\u00fcber 100%.txt;6\n");
    rclone({"copyto", folder.Path("new.txt"), "trial:My Lib/Made/new.txt"});
    rclone({"copyto", "trial:My Lib/a & b.txt", folder.Path("got.txt")});
    EXPECT_EQ(folder.Read("got.txt"), "first");
    rclone({"moveto", "trial:My Lib/Made/new.txt", "trial:My Lib/moved.txt"});
    rclone({"deletefile", "trial:My Lib/a & b.txt"});
    rclone({"purge", "trial:My Lib/Sub"});
    EXPECT_THAT(server.Tree(), ElementsAre(Pair("My Lib/", 0u), Pair("My Lib/Made/", 0u), Pair("My Lib/moved.txt", 11u)));
}

TEST(Interop, LitmusFindsNothingWrong) {
    if (!IsInstalled("litmus"))
        GTEST_SKIP() << "litmus isn't installed";
    TrialServer server(OneUser());
    const TestFolder folder;
    const RunResult result =
        RunProgram({"sh", "-c", "cd \"$0\" && exec litmus -k \"$1\" ann secret", folder.Path(), server.Origin() + "/"});
    EXPECT_EQ(result.exit_code, 0) << result.out;
    for (const char* suite : {"basic", "copymove", "props", "locks", "http"})
        EXPECT_THAT(result.out, HasSubstr(std::string("<- summary for `") + suite)) << result.out;
    EXPECT_THAT(result.out, Not(HasSubstr("WARNING")));
}
