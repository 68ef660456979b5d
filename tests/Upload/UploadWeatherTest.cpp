// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "UploadFixture.h"

#include "TestSupport/RunTask.h"

namespace vantrell::testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What goes wrong on the way, one thing at a time: the capture arrives all the same, once, whole, and
/// without sending more than a partial chunk twice.
class UploadWeatherTest : public UploadFixture {
protected:
    struct Fault {
        std::string method;
        std::string path;
        nlohmann::json action;
        int times = 1;
    };

    void expectSurvived(const Fault &fault) {
        SCOPED_TRACE(fault.method + " " + fault.path + " " + fault.action.dump());
        service->clearLog();
        ends.clear();
        const auto capture = makeCapture("survivor " + std::to_string(++batchCount), 350'000);
        service->fault(fault.method, fault.path, fault.action, fault.times);
        enqueue(capture);
        runUploads();
        EXPECT_EQ(journalText(), "[]");
        expectInLibrary(*capture);
        EXPECT_TRUE(libraryCaptures(capture->name)[0].at("hasMeta"));
        EXPECT_LE(bytesSent(), 350'000 + 100'000 * fault.times);
        expectHeadsAfterUncertainPatches();
        EXPECT_EQ(authFailures, 0);
        const nlohmann::json rules = service->call("GET", "/test/faults");
        EXPECT_NE(rules.dump().find("\"hits\":" + std::to_string(fault.times)), std::string::npos)
            << "the fault did not happen: " << rules.dump();
        service->clearFaults();
    }

    /// Over all tests: the library is theirs together.
    static int batchCount;
};

int UploadWeatherTest::batchCount = 0;

TEST_F(UploadWeatherTest, survivesWhatHappensToAChunk) {
    const std::vector<nlohmann::json> actions = {
        {{"status", 409}},
        {{"status", 423}},
        {{"status", 429}},
        {{"status", 500}},
        {{"status", 503}},
        {{"status", 400}},
        {{"status", 404}},
        {{"resetAfterBytes", 40'000}},
        {{"closeAfterBytes", 99'999}},
        "reset",
        "swallowAnswer",
        {{"cutAnswerAfterBytes", 10}},
        {{"wrongOffset", -50'000}},
        {{"wrongOffset", 50'000}},
        "missingOffset",
        {{"stallAfterBytes", 30'000}, {"stallMs", 300}},
        {{"status", 200}, {"rawBody", "<html>Welcome to the hotel</html>"}},
        {{"status", 302}, {"headers", {{"Location", "http://127.0.0.1:9/portal"}}}},
    };
    for (const nlohmann::json &action : actions)
        expectSurvived({"PATCH", "/storage/tus", action});
    expectSurvived({"PATCH", "/storage/tus", {{"resetAfterBytes", 10'000}}, 5});
}

TEST_F(UploadWeatherTest, survivesWhatHappensToEveryOtherCall) {
    const std::vector<nlohmann::json> actions = {
        {{"status", 503}},
        {{"status", 429}},
        "reset",
        "swallowAnswer",
        {{"cutAnswerAfterBytes", 10}},
        {{"status", 200},
         {"rawBody", "<!DOCTYPE html><title>Log in</title>"},
         {"headers", {{"content-type", "text/html; charset=utf-8"}}}},
    };
    for (const nlohmann::json &action : actions) {
        expectSurvived({"POST", "/v1/capture/sign", action});
        expectSurvived({"POST", "/storage/tus", action});
        expectSurvived({"PUT", "/meta", action});
        expectSurvived({"POST", "/confirm", action});
    }
    expectSurvived({"POST", "/v1/capture/sign", {{"status", 200}, {"rawBody", "{\"assetId\":7}"}}});
    expectSurvived({"POST", "/storage/tus", {{"answerHeaders", {{"Location", nullptr}}}}});
}

TEST_F(UploadWeatherTest, waitsForAServiceThatIsDown) {
    const auto capture = makeCapture("patient", 250'000);
    service->fault("PATCH", "/storage/tus", {{"stallAfterBytes", 50'000}});
    const QUuid id = enqueue(capture);
    ASSERT_TRUE(eventually([] { return service->methods("/storage/tus").ends_with("PATCH"); }));
    service->stop();
    // The broken chunk, then refused connections: the upload waits and asks again.
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(clock.advanceToNextSleeper());
    EXPECT_FALSE(manager->isIdle());
    service->restart();
    runUploads();
    EXPECT_EQ(statusText(id), "In your library");
    expectInLibrary(*capture);
}

TEST_F(UploadWeatherTest, registersAnewWhenTheServiceHasForgotten) {
    // The confirmation finds nothing: everything is sent again, under a new registration.
    const auto capture = makeCapture("forgotten", 120'000);
    service->fault("POST", "/confirm", {{"status", 404}, {"body", {{"error", "Capture not found"}}}});
    enqueue(capture);
    EXPECT_THAT(runUploads(), ElementsAre(2));
    EXPECT_EQ(service->requests("/v1/capture/sign").size(), 2u);
    EXPECT_THAT(service->requests("/refresh"), IsEmpty());
    expectInLibrary(*capture);

    // Asked anew about a registration that is gone.
    const auto other = makeCapture("forgotten too", 120'000);
    service->clearLog();
    service->fault("PATCH", "/storage/tus", {{"status", 400}});
    service->fault("POST", "/refresh", {{"status", 404}, {"body", {{"error", "Capture not found"}}}});
    enqueue(other);
    EXPECT_THAT(runUploads(), ElementsAre(2));
    EXPECT_EQ(service->methods("/v1/capture"), "POST POST POST POST"); // sign, refresh, sign, confirm
    expectInLibrary(*other);
}

} // namespace
} // namespace vantrell::testing
