// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/VantrellAPI.h"

#include "API/ClientVersion.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/Network/LocalService.h"
#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/RunTask.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

/// The client against a server whose next answer the test sets.
class VantrellAPITest : public ::testing::Test {
protected:
    APIError failure() {
        const auto result = runTask(api.limits({}));
        EXPECT_FALSE(result);
        return result ? APIError::http(0) : result.error();
    }

    void answerWith(int status, std::string body) {
        std::scoped_lock lock(mutex);
        nextStatus = status;
        nextBody = std::move(body);
    }

    std::mutex mutex;
    int nextStatus = 200;
    std::string nextBody = "{}";
    std::shared_ptr<RequestLog> log = std::make_shared<RequestLog>();
    ScriptedHttpServer server{answering(log, [this](ScriptedConnection &c, const ReceivedRequest &) {
        std::scoped_lock lock(mutex);
        c.answer(nextStatus, {}, nextBody);
    })};
    std::optional<std::string> key = "vk_secret";
    int authFailures = 0;
    HttpClient http;
    VantrellAPI api{http, *ServiceURL::parse(server.url("/base/")), [this] { return key; },
                    [this] { ++authFailures; }};
};

TEST_F(VantrellAPITest, sendsEachOperationAsTheServiceExpectsIt) {
    answerWith(
        299,
        R"({"projects":[{"id":"2","name":"b"},{"id":"1","name":"a"}],"plan":"p","maxVideoDurationMs":5})");
    const auto projects = runTask(api.listProjects({}));
    ASSERT_TRUE(projects);
    EXPECT_EQ(*projects, (std::vector<TargetProject>{{"2", "b"}, {"1", "a"}}));
    EXPECT_TRUE(runTask(api.limits({})));
    EXPECT_TRUE(runTask(api.confirm("asset/../x", {})));
    EXPECT_TRUE(runTask(api.postEvents(R"([{"id":"e"}])", {})));
    EXPECT_FALSE(runTask(api.sign({"p", "video", "video/quicktime", 1, {}, {}, {}, false, "c"}, {})));
    EXPECT_FALSE(runTask(api.refresh("a1", {})));

    const auto requests = log->all();
    ASSERT_EQ(requests.size(), 6u);
    std::string lines;
    for (const ReceivedRequest &request : requests) {
        lines += request.method + " " + request.target + "\n";
        EXPECT_EQ(request.header("authorization"), "Bearer vk_secret");
        EXPECT_EQ(request.header("x-vantrell-capture-version"), clientVersion());
        EXPECT_EQ(request.header("content-type"), request.body.empty() ? "" : "application/json")
            << request.target;
    }
    EXPECT_EQ(lines, "GET /base/v1/capture/projects\nGET /base/v1/capture/limits\n"
                     "POST /base/v1/capture/asset/../x/confirm\nPOST /base/v1/capture/events\n"
                     "POST /base/v1/capture/sign\nPOST /base/v1/capture/a1/refresh\n");
    EXPECT_EQ(requests[3].body, R"({"events":[{"id":"e"}]})");
}

TEST_F(VantrellAPITest, sendsNothingWithoutAKey) {
    key.reset();
    EXPECT_EQ(failure(), APIError(APIError::NotPaired{}));
    EXPECT_EQ(server.connectionCount(), 0);
    EXPECT_EQ(authFailures, 0);
}

TEST_F(VantrellAPITest, disconnectsOnlyWhenTheServiceSaysThatTheKeyIsInvalid) {
    answerWith(401, R"({"error":"Session expired"})");
    EXPECT_EQ(failure(), APIError::http(401, "Session expired"));
    answerWith(401, "");
    EXPECT_EQ(failure(), APIError::http(401));
    answerWith(401, "<html>Please log in to this hotel</html>");
    EXPECT_EQ(failure(), APIError::http(401));
    answerWith(403, R"({"error":"Invalid or revoked API key"})");
    EXPECT_EQ(failure(), APIError::http(403, "Invalid or revoked API key"));
    EXPECT_EQ(authFailures, 0);
    answerWith(401, R"({"error":"Invalid or revoked API key"})");
    EXPECT_EQ(failure(), APIError(APIError::NotPaired{}));
    EXPECT_EQ(authFailures, 1);
    // Whatever else stands beside it.
    answerWith(401, R"({"error":"Invalid or revoked API key","assetId":7,"more":[null]})");
    EXPECT_EQ(failure(), APIError(APIError::NotPaired{}));
    EXPECT_EQ(authFailures, 2);
}

TEST_F(VantrellAPITest, turnsStatusesIntoErrors) {
    answerWith(409, R"({"error":"There already","assetId":"a7"})");
    EXPECT_EQ(failure(), APIError(APIError::AlreadyUploaded{"a7"}));
    answerWith(409, R"({"error":"Busy"})");
    EXPECT_EQ(failure(), APIError::http(409, "Busy"));
    answerWith(404, R"({"error":"Project not found","assetId":"a7"})");
    EXPECT_EQ(failure(), APIError::http(404, "Project not found"));
    answerWith(500, "oops");
    EXPECT_EQ(failure(), APIError::http(500));
    for (const char *odd : {R"({"error":7})", R"({"error":"x","n":1e999})"}) {
        answerWith(500, odd);
        EXPECT_EQ(failure(), APIError::http(500)) << odd;
    }
    answerWith(300, R"({"plan":"p","maxVideoDurationMs":5})");
    EXPECT_EQ(failure(), APIError::http(300));
}

TEST_F(VantrellAPITest, logsWhyAnAnswerCouldNotBeDecodedButNotItsContents) {
    const LogCapture lines;
    answerWith(200, R"({"maxVideoDurationMs":5})");
    EXPECT_EQ(failure(), APIError(APIError::MalformedResponse{}));
    EXPECT_TRUE(lines.contains("upload: decode failure: plan is missing"));
    for (const char *body :
         {"<html>hotel secret</html>", R"({"plan":"secret","maxVideoDurationMs":1e999})"}) {
        answerWith(200, body);
        EXPECT_EQ(failure(), APIError(APIError::MalformedResponse{})) << body;
    }
    EXPECT_EQ(lines.count("decode failure: not JSON"), 2);
    EXPECT_FALSE(lines.contains("secret"));
}

TEST_F(VantrellAPITest, takesAnAnswerThatIsNoHttpForMalformed) {
    ScriptedHttpServer garbage([](ScriptedConnection &c) {
        c.receive();
        c.send("220 mail.example ESMTP\r\n");
    });
    const VantrellAPI toGarbage(http, *ServiceURL::parse(garbage.url()), [] { return "k"; }, {});
    EXPECT_EQ(runTask(toGarbage.limits({})).error(), APIError(APIError::MalformedResponse{}));
}

TEST(VantrellAPIWithTheService, trustsAndIsRefusedOverTls) {
    LocalService service({.arguments = {"--transfer", "tus"}, .tls = true});
    std::string key = service.createKey();
    const auto provider = [&key] { return std::optional(key); };
    int authFailures = 0;
    const auto url = ServiceURL::parse(service.url());
    ASSERT_TRUE(url);

    HttpClient stranger;
    const auto untrusted = runTask(VantrellAPI(stranger, *url, provider, {}).limits({}));
    ASSERT_FALSE(untrusted);
    EXPECT_EQ(untrusted.error().description(), "Network error");
    EXPECT_TRUE(service.requests("/v1").empty());

    HttpClient http({.authorities = service.authority()});
    const VantrellAPI api(http, *url, provider, [&authFailures] { ++authFailures; });
    EXPECT_TRUE(runTask(api.limits({})));
    const std::string project = service.createProject("Films");
    const auto projects = runTask(api.listProjects({}));
    ASSERT_TRUE(projects);
    EXPECT_TRUE(std::ranges::find(*projects, TargetProject{project, "Films"}) != projects->end());

    CaptureRegistration registration{"gone", "video", "video/quicktime",
                                     10,     900,     "A film",
                                     5,      true,    "2f1e0d6c-0000-4000-8000-00000000000a"};
    EXPECT_EQ(runTask(api.sign(registration, {})).error(), APIError::http(404, "Project not found"));
    service.revokeKey(key);
    EXPECT_EQ(runTask(api.limits({})).error(), APIError(APIError::NotPaired{}));
    EXPECT_EQ(authFailures, 1);
}

} // namespace
} // namespace vantrell::testing
