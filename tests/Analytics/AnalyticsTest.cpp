// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 Vantrell Capture developers

#include "Analytics/Analytics.h"

#include "API/VantrellAPI.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/ManualClock.h"
#include "TestSupport/Network/ScriptedHttpServer.h"
#include "TestSupport/RunTask.h"
#include "TestSupport/ScopedEnvironment.h"
#include "TestSupport/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <mutex>
#include <semaphore>

using namespace std::chrono_literals;

namespace vantrell::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A service that takes batches of events.
class EventService {
public:
    /// What the next batches are answered with; 200 when nothing is said.
    void answerNext(const std::vector<int> &statuses) {
        std::scoped_lock lock(m_mutex);
        m_statuses.assign(statuses.begin(), statuses.end());
    }

    /// The names in each batch, in order.
    std::vector<std::vector<std::string>> batches() const {
        std::vector<std::vector<std::string>> all;
        for (const ReceivedRequest &request : m_log->all()) {
            EXPECT_EQ(request.target, "/v1/capture/events");
            auto &names = all.emplace_back();
            for (const auto &event : nlohmann::json::parse(request.body).at("events"))
                names.push_back(event.at("name"));
        }
        return all;
    }
    std::vector<std::size_t> batchSizes() const {
        std::vector<std::size_t> sizes;
        for (const auto &batch : batches())
            sizes.push_back(batch.size());
        return sizes;
    }
    std::string url() const { return m_server.url(""); }
    std::vector<ReceivedRequest> requests() const { return m_log->all(); }

    /// While taken, batches are received but not answered.
    std::binary_semaphore answers{1};

private:
    void answer(ScriptedConnection &connection) {
        answers.acquire();
        answers.release();
        std::unique_lock lock(m_mutex);
        int status = 200;
        if (!m_statuses.empty()) {
            status = m_statuses.front();
            m_statuses.erase(m_statuses.begin());
        }
        lock.unlock();
        connection.answer(status, {}, "{}");
    }

    std::mutex m_mutex;
    std::vector<int> m_statuses;
    const std::shared_ptr<RequestLog> m_log = std::make_shared<RequestLog>();
    ScriptedHttpServer m_server{
        answering(m_log, [this](ScriptedConnection &c, const ReceivedRequest &) { answer(c); })};
};

class AnalyticsTest : public ::testing::Test {
protected:
    AnalyticsTest() { open(); }

    void open() { queue = std::make_unique<Analytics>(file, clock); }
    void trackMany(int count) {
        for (int i = 0; i < count; ++i)
            queue->track("cap.event_" + std::to_string(next++));
    }
    nlohmann::json onDisk() const {
        std::ifstream stream(file);
        return nlohmann::json::parse(stream, nullptr, false);
    }
    bool eventuallyOnDisk(std::size_t events) {
        return eventually([&] { return onDisk().is_array() && onDisk().size() == events; });
    }
    bool eventuallyEmpty() {
        return eventually([&] { return queue->count() == 0; });
    }

    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "analytics-queue.json";
    const LogCapture log;
    ManualClock clock;
    EventService service;
    HttpClient http;
    std::optional<std::string> key = "key";
    VantrellAPI api{http, *ServiceURL::parse(service.url()), [this] { return key; }, {}};
    int next = 0;
    std::unique_ptr<Analytics> queue;
};

TEST_F(AnalyticsTest, takesOnlyWellFormedNames) {
    for (const char *name :
         {"cap.Launched", "cap.app-launched", "app_launched", "cap.", "xcap.a", "cap.a\n", "cap.a b"})
        queue->track(name);
    EXPECT_EQ(queue->count(), 0);
    EXPECT_EQ(log.count("dropping event with invalid name: "), 7);
    EXPECT_TRUE(
        log.contains("app.vantrell.capture.analytics: dropping event with invalid name: cap.app-launched"));
    queue->track("cap.app_launched2");
    EXPECT_EQ(queue->count(), 1);
}

TEST_F(AnalyticsTest, keepsTheNewest200OverARestart) {
    trackMany(201);
    EXPECT_EQ(queue->count(), 200);
    queue.reset();
    EXPECT_EQ(onDisk().size(), 200u);
    EXPECT_EQ(onDisk().front().at("name"), "cap.event_1");
    EXPECT_THAT(onDisk().front().at("id").get<std::string>(),
                ::testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"));
    open();
    EXPECT_EQ(queue->count(), 200);
}

TEST_F(AnalyticsTest, keepsTheKindOfEachProperty) {
    queue->track("cap.kinds", {{"flag", true},
                               {"whole", 3},
                               {"fraction", 3.5},
                               {"round", 2.0},
                               {"text", "3"},
                               {"wild", "\xff"},
                               {"endless", HUGE_VAL}});
    queue.reset();
    const auto props = onDisk().at(0).at("props");
    EXPECT_EQ(props.dump(),
              "{\"endless\":\"inf\",\"flag\":true,\"fraction\":3.5,\"round\":2.0,\"text\":\"3\","
              "\"whole\":3,\"wild\":\"\xef\xbf\xbd\"}");
    for (const auto &[json, value] : std::vector<std::pair<const char *, AnalyticsValue>>{
             {"true", true}, {"3", 3}, {"3.5", 3.5}, {"\"3\"", "3"}})
        EXPECT_EQ(AnalyticsValue::decode(nlohmann::json::parse(json), "p").value(), value) << json;
    EXPECT_FALSE(AnalyticsValue::decode(nullptr, "p"));
    open();
    EXPECT_EQ(queue->count(), 1);
}

TEST_F(AnalyticsTest, startsFreshAfterAnUnreadableFileAndOverwritesIt) {
    for (const char *text : {"[{\"id\":\"a\"}]", "{}", "garbage"}) {
        std::ofstream(file) << text;
        open();
        EXPECT_EQ(queue->count(), 0);
    }
    EXPECT_EQ(log.count("analytics queue unreadable, starting fresh: "), 3);
    queue->track("cap.fresh");
    EXPECT_TRUE(eventuallyOnDisk(1));
}

TEST_F(AnalyticsTest, goesOnInMemoryWhenTheDiskRefuses) {
    queue = std::make_unique<Analytics>(folder / "missing/queue.json", clock);
    trackMany(2);
    EXPECT_TRUE(eventually([&] { return log.contains("analytics queue write failed: "); }));
    EXPECT_EQ(queue->count(), 2);
}

TEST_F(AnalyticsTest, postsEvery30SecondsAndAtOnceWhenTenWait) {
    trackMany(9);
    queue->start(api);
    clock.advance(29s);
    EXPECT_THAT(service.batches(), IsEmpty());
    clock.advance(1s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_TRUE(eventuallyOnDisk(0));
    trackMany(9);
    settle();
    EXPECT_EQ(service.batches().size(), 1u);
    trackMany(1);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(9u, 10u));
    EXPECT_EQ(service.requests().front().header("authorization"), "Bearer key");
}

TEST_F(AnalyticsTest, postsALongQueueInBatchesOfTwentyFive) {
    trackMany(60);
    queue->start(api);
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(25u, 25u, 10u));
    EXPECT_EQ(service.batches()[0].front(), "cap.event_0");
    EXPECT_EQ(service.batches()[2].back(), "cap.event_59");
}

TEST_F(AnalyticsTest, dropsARefusedBatchAndGoesOn) {
    trackMany(30);
    service.answerNext({400});
    queue->start(api);
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(25u, 5u));
    EXPECT_TRUE(log.contains("server dropped analytics batch (400)"));
}

TEST_F(AnalyticsTest, keepsEverythingWhenTheServiceIsIllOrGarbled) {
    trackMany(30);
    service.answerNext({503});
    queue->start(api);
    clock.advance(30s);
    EXPECT_TRUE(eventually([&] { return log.contains("analytics flush deferred: Request failed (503)"); }));
    EXPECT_EQ(queue->count(), 30);
    EXPECT_EQ(service.batches().size(), 1u);
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
}

TEST_F(AnalyticsTest, waitsQuietlyWhileNotConnected) {
    key.reset();
    queue->start(api);
    trackMany(12);
    clock.advance(5min);
    EXPECT_EQ(queue->count(), 12);
    EXPECT_THAT(log.lines(), IsEmpty());
    key = "key";
    clock.advance(30s);
    EXPECT_TRUE(eventuallyEmpty());
}

TEST_F(AnalyticsTest, keepsWhatIsTrackedWhileABatchIsOnItsWay) {
    queue->start(api);
    service.answers.acquire();
    trackMany(10);
    ASSERT_TRUE(eventually([&] { return service.batches().size() == 1; }));
    trackMany(2); // makes it 12: a second flush beside the first must not start
    settle();
    EXPECT_EQ(service.batches().size(), 1u);
    service.answers.release();
    EXPECT_TRUE(eventuallyEmpty());
    EXPECT_THAT(service.batchSizes(), ElementsAre(10u, 2u));
}

TEST_F(AnalyticsTest, endsInTheMiddleOfAPostAndKeepsTheBatch) {
    queue->start(api);
    service.answers.acquire();
    trackMany(10);
    ASSERT_TRUE(eventually([&] { return service.batches().size() == 1; }));
    queue.reset();
    service.answers.release();
    EXPECT_EQ(onDisk().size(), 10u);
}

TEST_F(AnalyticsTest, recordsNothingWhenTheUserDoesNotWantIt) {
    trackMany(3);
    queue.reset();
    const ScopedEnvironment off("DO_NOT_TRACK", "1");
    open();
    queue->start(api);
    trackMany(20);
    clock.advance(1min);
    EXPECT_TRUE(queue->isOff());
    EXPECT_EQ(queue->count(), 0);
    queue.reset();
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THAT(service.batches(), IsEmpty());
}

} // namespace
} // namespace vantrell::testing
