// What the console reads from its user: locations, words of a script, prepared answers.

#include <gtest/gtest.h>

#include "platform/text.h"
#include "workbench/console/answer.h"
#include "workbench/console/command_call.h"
#include "workbench/core/location.h"
#include "workbench/console/output.h"
#include "workbench/console/script_words.h"
#include "workbench/console/usage_error.h"

namespace {

struct LocationRow {
    const char* typed;
    const wchar_t* url;
    const wchar_t* user;
    const wchar_t* password;
};

} // namespace

TEST(Location, IsDecodedOnceAndLosesItsAccount) {
    const LocationRow rows[] = {
        {"http://h/My%20Site/a.pdf", L"http://h/My Site/a.pdf", L"", L""},
        {"http://h/My Site/a.pdf", L"http://h/My Site/a.pdf", L"", L""},
        {"http://h/100%25", L"http://h/100%", L"", L""},
        {"http://h/%2525", L"http://h/%25", L"", L""},
        {"http://h/%C3%BC", L"http://h/ü", L"", L""},
        {"HTTPS://h:8443/a?x=%20", L"HTTPS://h:8443/a?x=%20", L"", L""},
        {"http://ann:pa%40ss@h/a", L"http://h/a", L"ann", L"pa@ss"},
        {"http://ann@h", L"http://h", L"ann", L""},
        {"http://h/a@b:c", L"http://h/a@b:c", L"", L""},
        {"https://h/:w:/r/sites/x%20y/d.docx", L"https://h/:w:/r/sites/x%20y/d.docx", L"", L""},
        {"https://h/a%20b?share=abc", L"https://h/a%20b?share=abc", L"", L""},
        {"http://[::1]:80/a", L"http://[::1]:80/a", L"", L""},
    };
    for (const LocationRow& row : rows) {
        const Location location = ParseLocation(row.typed);
        EXPECT_EQ(location.url, row.url) << row.typed;
        EXPECT_EQ(location.user, row.user) << row.typed;
        EXPECT_EQ(location.password, row.password) << row.typed;
    }
}

TEST(Location, IsRefusedWithOneLine) {
    for (const char* const typed : {"",
                                    "h/a",
                                    "ftp://h/a",
                                    "http://",
                                    "http:///a",
                                    "http://h/%zz",
                                    "http://h/%4",
                                    "http://h/%FF",
                                    "http://h/%0D%0AX:",
                                    "http://h/a%00",
                                    "http://user@/a",
                                    "http://h/a/..",
                                    "http://h/a/%2E%2e/b",
                                    "http://h/./a",
                                    "http://h:/a",
                                    "http://h:0",
                                    "http://h:65536",
                                    "http://h:80x",
                                    "http://[::1/a",
                                    "http://[::1]:x"}) {
        try {
            ParseLocation(typed);
            ADD_FAILURE() << "'" << typed << "' was taken";
        } catch (const UsageError& error) {
            EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << typed;
        }
    }
}

TEST(Location, ComesBackFromItsOwnOutput) {
    for (const wchar_t* const url :
         {L"http://h/a b/ü#1.pdf", L"http://h/100%/%41.pdf", L"https://h:8443/a+b/[1].pdf", L"http://h"}) {
        EXPECT_EQ(ParseLocation(EncodeLocation(url)).url, url) << EncodeLocation(url);
    }
}

TEST(ScriptWords, AreSeparatedByBlanksAndKeptByQuotes) {
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"", {}},
        {"   ", {}},
        {"# open x", {}},
        {"open a b", {"open", "a", "b"}},
        {"  ls   \"a b\"  ", {"ls", "a b"}},
        {R"(write d 0 "say \"hi\" \\ \n")", {"write", "d", "0", R"(say "hi" \ \n)"}},
        {"write d 0 \"\"", {"write", "d", "0", ""}},
        {R"(mv a\b c)", {"mv", R"(a\b)", "c"}},
    };
    for (const auto& [line, words] : rows) {
        EXPECT_EQ(ScriptWords(line), words) << line;
    }
    EXPECT_THROW(ScriptWords("ls \"a"), UsageError);
}

TEST(Output, KeepsControlsOfAServersTextFromTheTerminal) {
    EXPECT_EQ(Printable(L"a\x1B]0;x\a\u009Bü\n"), "a\uFFFD]0;x\uFFFD\uFFFDü\uFFFD");
    EXPECT_EQ(Printable(L"one\ntwo\r", L"\n"), "one\ntwo\uFFFD");
}

TEST(Answer, IsReadWithAllItsParts) {
    const Answer answer = ParseAnswer("2,check,radio=1,edit=one, two");
    EXPECT_EQ(answer.button, 2u);
    EXPECT_TRUE(answer.check);
    EXPECT_EQ(answer.radio, 1u);
    EXPECT_EQ(answer.edit, "one, two");
    for (const char* const spec : {"", "x", "-1", "1,", "1,chec", "1,radio=", "1,radio=x", "1 "}) {
        EXPECT_THROW(ParseAnswer(spec), UsageError) << spec;
    }
}

TEST(Command, IsReadFromWordsOrRefused) {
    const CommandCall checkin = ParseCommand(CommandSet::script, {"checkin", "a.pdf", "--comment", "-x y", "--keep"});
    EXPECT_EQ(checkin.words, std::vector<std::string>{"a.pdf"});
    EXPECT_EQ(checkin.comment, "-x y");
    EXPECT_TRUE(checkin.keep);
    const CommandCall edit = ParseCommand(CommandSet::script, {"edit", "a.pdf", "sed", "-i", "--x"});
    EXPECT_EQ(edit.words, (std::vector<std::string>{"a.pdf", "sed", "-i", "--x"}));
    const std::vector<std::string> refused[] = {
        {"nothing"}, {"ls"}, {"ls", "a", "b"}, {"mv", "a"}, {"checkin", "a", "--type", "huge"}};
    for (const std::vector<std::string>& words : refused) {
        EXPECT_THROW(ParseCommand(CommandSet::script, words), UsageError) << words[0];
    }
}
