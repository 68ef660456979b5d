// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "API/StoragePut.h"

#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/TemporaryFolder.h"
#include "TestSupport/TestFile.h"

#include <gtest/gtest.h>

namespace vantrell::testing {

namespace {

class StoragePutTest : public ::testing::Test {
protected:
    TemporaryFolder folder;
    const std::filesystem::path file = folder / "film.mov";
    std::shared_ptr<RequestLog> log = std::make_shared<RequestLog>();
    HttpClient http;
    StoragePut storage{http};
};

TEST_F(StoragePutTest, sendsAFileOrABufferInOnePiece) {
    ScriptedHttpServer server(
        answering(log, [](ScriptedConnection &c, const ReceivedRequest &) { c.answer(201); }));
    writeTestFile(file, 3'000'000);
    ASSERT_TRUE(runTask(storage.putFile(file, server.url("/a?signature=x"), "video/quicktime", {})));
    ASSERT_TRUE(runTask(storage.putData("{}", server.url("/b"), "application/json", {})));
    ASSERT_TRUE(runTask(storage.putData("", server.url("/c"), "image/jpeg", {})));
    const auto requests = log->all();
    ASSERT_EQ(log->methods(), "PUT PUT PUT");
    EXPECT_EQ(requests[0].target, "/a?signature=x");
    EXPECT_EQ(requests[0].body, fileContents(file));
    EXPECT_EQ(requests[0].header("content-type"), "video/quicktime");
    EXPECT_EQ(requests[0].header("cache-control"), "max-age=31536000");
    EXPECT_EQ(requests[0].header("expect"), "100-continue");
    EXPECT_EQ(requests[1].body, "{}");
    EXPECT_EQ(requests[1].header("expect"), "");
    EXPECT_EQ(requests[2].header("content-length"), "0");
}

TEST_F(StoragePutTest, sendsNoLargeBodyToAServerThatRefusesIt) {
    ScriptedHttpServer server([this](ScriptedConnection &c) {
        while (const auto head = c.receiveHead()) {
            log->note(*head);
            c.answer(403, "Connection: close\r\n", "expired");
            return;
        }
    });
    writeTestFile(file, 50'000'000);
    const auto result = runTask(storage.putFile(file, server.url(), "video/quicktime", {}));
    ASSERT_FALSE(result);
    EXPECT_EQ(std::get<APIError>(result.error()), APIError::http(403, "Storage rejected the upload"));
    EXPECT_EQ(log->count(), 1);
}

TEST_F(StoragePutTest, sendsAgainWithoutExpectToAServerThatDoesNotKnowIt) {
    ScriptedHttpServer server([this](ScriptedConnection &c) {
        while (auto head = c.receiveHead()) {
            const bool expects = !head->header("expect").empty();
            if (!expects)
                head->body = c.receiveBody(head->contentLength());
            log->note(*head);
            c.answer(expects ? 417 : 200);
        }
    });
    writeTestFile(file, 2'000'000);
    const auto result = runTask(storage.putFile(file, server.url(), "video/quicktime", {}));
    ASSERT_TRUE(result) << logText(result.error());
    EXPECT_EQ(log->count(), 2);
    EXPECT_EQ(log->all().back().body, fileContents(file));
}

TEST_F(StoragePutTest, failsOnUnusableAddressesAndFiles) {
    writeTestFile(file, 10);
    EXPECT_TRUE(
        std::holds_alternative<APIError>(runTask(storage.putFile(file, "nonsense", "a/b", {})).error()));
    const auto missing = runTask(storage.putFile(folder / "none", "http://127.0.0.1:1/", "a/b", {}));
    EXPECT_EQ(std::get<PlatformError>(missing.error()).code, ENOENT);

    // The file changes while it is on its way.
    ScriptedHttpServer server(answering(log, [this](ScriptedConnection &c, const ReceivedRequest &) {
        writeTestFile(file, 11);
        c.answer(200);
    }));
    EXPECT_TRUE(std::holds_alternative<ContentMismatch>(
        runTask(storage.putFile(file, server.url(), "a/b", {})).error()));
}

} // namespace
} // namespace vantrell::testing
