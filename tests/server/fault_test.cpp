#include "server/http_client.h"
#include "server/trial/faults.h"
#include "support/trial_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

using testing::HasSubstr;
using testing::Throws;

TEST(Faults, EachBreaksTheAnswerInItsWay) {
    struct Row {
        const char* fault;
        int status;
        bool is_complete;
        std::string body;
        int recorded;
    };
    const std::string content(100'000, 'x');
    const Row rows[] = {
        {"GET /lib/a.txt status=503", 503, true, "a fault\n", 503},
        {"* * status=207", 207, true, "a fault\n", 207},
        {"GET /LIB/* delay=1", 200, true, content, 200},
        {"GET *.txt reset", 0, false, "", 0},
        {"GET /lib/?.txt truncate", 200, false, content.substr(0, 50'000), 200},
        {"GET * close-after-headers", 200, false, "", 200},
        {"GET * redirect=http://127.0.0.1:1/", 302, true, "elsewhere\n", 302},
        {"PUT * status=503", 200, true, content, 200},
        {"GET /other/* reset", 200, true, content, 200},
    };
    for (const Row& row : rows) {
        TrialServer server;
        server.Put("lib/a.txt", content);
        server.Once(row.fault);
        const Answer answer = Send({"GET", server.Url("lib/a.txt")});
        EXPECT_EQ(answer.status, row.status) << row.fault;
        EXPECT_EQ(answer.is_complete, row.is_complete) << row.fault;
        EXPECT_TRUE(answer.body == row.body) << row.fault << ": " << answer.body.size();
        EXPECT_EQ(server.Journal().back().status, row.recorded) << row.fault;
        server.ClearFaults();
        EXPECT_EQ(Send({"GET", server.Url("lib/a.txt")}).body, content) << row.fault;
    }
}

TEST(Faults, AreCountedAndKeepWhatWasDone) {
    TrialServer server;
    server.Times(2, "PUT /a.txt status=503");
    server.Once("PUT /a.txt truncate");
    for (const int status : {503, 503, 201, 204}) {
        EXPECT_EQ(server.Exists("a.txt"), status == 204);
        EXPECT_EQ(Send({"PUT", server.Url("a.txt"), {}, "x"}).status, status);
    }
    EXPECT_EQ(server.Count("PUT"), 4u);
    EXPECT_EQ(server.Count("GET"), 0u);
    server.Always("* * page");
    EXPECT_THAT(Send({"PROPFIND", server.Url("a.txt")}).Header("Content-Type"), HasSubstr("text/html"));
    EXPECT_THAT(Send({"GET", server.Url("a.txt")}).body, HasSubstr("<html>"));
    server.ClearFaults();
    server.Once("PROPFIND * garbage");
    const Answer noise = Send({"PROPFIND", server.Url()});
    EXPECT_EQ(noise.status, 207);
    EXPECT_TRUE(noise.is_complete);
    EXPECT_THAT(noise.body, HasSubstr("<garbage & \xFF"));
}

TEST(Faults, ASpecThatCannotBeReadIsRefused) {
    for (const char* spec : {"", "GET", "GET * 1", "GET * 0 reset", "GET * x reset", "GET * 1 status=", "GET * 1 status=99",
                             "GET * 1 delay=x", "GET * 1 redirect=", "GET * 1 explode", "GET 1 reset", "* 1 reset extra"})
        EXPECT_THROW(trial::ParseFault(spec), std::invalid_argument) << spec;
    const trial::Fault fault = trial::ParseFault("PUT /Shared Documents/*.pdf * status=423");
    EXPECT_EQ(fault.pattern, "/Shared Documents/*.pdf");
    EXPECT_EQ(fault.count, trial::Fault::unlimited);
    EXPECT_EQ(fault.number, 423u);
}
